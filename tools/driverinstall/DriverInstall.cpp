#include "tools/driverinstall/DriverInstall.h"

#include "tools/driverinstall/BundleCheck.h"
#include "tools/driverinstall/BundleSwap.h"
#include "tools/driverinstall/BundleTree.h"
#include "tools/driverinstall/ExtensionsFolder.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Copies the bundle to its staging name and checks the copy, which nobody can change, unlike the source.
Outcome Stage(int folder, const std::string& name, int source, std::string& version)
{
    const std::string staged = HiddenName(name, stagingSuffix);
    if (mkdirat(folder, staged.c_str(), 0700) != 0)
        return Failure(ExitCode::diskError, "cannot create " + staged, errno);
    const FileDescriptor copy(openat(folder, staged.c_str(), folderFlags));
    if (!copy)
        return Failure(ExitCode::diskError, "cannot open " + staged, errno);
    Outcome outcome = CopyTree(source, name, copy.get());
    if (!outcome.ok())
        return outcome;
    outcome = CheckTree(copy.get(), staged);
    if (!outcome.ok())
        return { ExitCode::diskError, "the copy differs from what was copied: " + outcome.text };
    return CheckBundle(copy.get(), version);
}

}

Outcome InstallExtension(const std::string& extensions, const std::string& name, const std::string& source,
    std::chrono::milliseconds longestWait)
{
    // Locked before the source is looked at: a run that had seen an older source could otherwise come after,
    // and undo, one that saw a newer.
    ExtensionsFolder folder;
    Outcome outcome = folder.open(extensions, ExtensionsFolder::Missing::create, longestWait);
    if (!outcome.ok())
        return outcome;

    const std::string bundlePath = source + "/" + name;
    const FileDescriptor bundle(open(bundlePath.c_str(), folderFlags));
    if (!bundle)
        return Failure(ExitCode::badSource, "cannot open the bundle " + bundlePath, errno);
    outcome = CheckTree(bundle.get(), bundlePath);
    if (outcome.ok())
        outcome = ClearLeftovers(folder.descriptor());
    if (!outcome.ok())
        return outcome;

    std::string version;
    outcome = Stage(folder.descriptor(), name, bundle.get(), version);
    if (!outcome.ok()) {
        // At once, so that a disk which just ran full gets its space back.
        DropStaged(folder.descriptor(), name);
        return outcome;
    }
    outcome = PutStagedInPlace(folder.descriptor(), name);
    return outcome.ok() ? Outcome { ExitCode::ok, "installed " + name + " " + version } : outcome;
}

Outcome UninstallExtension(
    const std::string& extensions, const std::string& name, std::chrono::milliseconds longestWait)
{
    ExtensionsFolder folder;
    Outcome outcome = folder.open(extensions, ExtensionsFolder::Missing::accept, longestWait);
    const bool exists = outcome.ok() && folder.descriptor() >= 0;
    if (exists)
        outcome = ClearLeftovers(folder.descriptor());
    bool found = false;
    if (exists && outcome.ok())
        outcome = TakeAway(folder.descriptor(), name, found);
    if (!outcome.ok())
        return outcome;
    return { ExitCode::ok, found ? "removed " + name : "nothing to remove: " + name + " is not installed" };
}
