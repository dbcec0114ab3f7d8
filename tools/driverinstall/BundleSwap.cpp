#include "tools/driverinstall/BundleSwap.h"

#include "tools/driverinstall/Arguments.h"
#include "tools/driverinstall/BundleTree.h"
#include "tools/driverinstall/Report.h"
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/stdio.h>
#include <sys/time.h>
#include <syslog.h>
#include <unistd.h>
#include <vector>

namespace {

/// NAME where `entry` is ".NAME" followed by the suffix, else "".
std::string NameBehind(const std::string& entry, std::string_view suffix)
{
    if (!entry.starts_with('.') || !entry.ends_with(suffix) || entry.size() <= suffix.size() + 1)
        return "";
    const std::string name = entry.substr(1, entry.size() - 1 - suffix.size());
    return IsExtensionName(name) ? name : "";
}

void DeleteHidden(int folder, const std::string& name, std::string_view suffix)
{
    const std::string hidden = HiddenName(name, suffix);
    const int error = RemoveTree(folder, hidden);
    if (error != 0)
        Report(LOG_WARNING, Failure(ExitCode::diskError, "cannot delete all of " + hidden, error).text);
}

/// An old copy loses its name before it is deleted, so that what is called ".NAME.old" is whole at all times.
void DeleteOld(int folder, const std::string& name)
{
    DeleteHidden(folder, name, removedSuffix);
    const std::string old = HiddenName(name, oldSuffix);
    if (renameat(folder, old.c_str(), folder, HiddenName(name, removedSuffix).c_str()) == 0)
        DeleteHidden(folder, name, removedSuffix);
    else if (errno != ENOENT)
        Report(LOG_WARNING, Failure(ExitCode::diskError, "cannot delete " + old, errno).text);
}

Outcome RecoverOld(int folder, const std::string& name)
{
    struct stat info { };
    if (fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0) {
        DeleteOld(folder, name);
        return {};
    }
    const bool putBack = errno == ENOENT
        && renameat(folder, HiddenName(name, oldSuffix).c_str(), folder, name.c_str()) == 0
        && fsync(folder) == 0;
    if (!putBack)
        return Failure(ExitCode::diskError, "cannot put the old " + name + " back", errno);
    Report(LOG_NOTICE, "put the old " + name + " back, which an interrupted run had moved aside");
    return {};
}

/// Flushes a change of the folder's entries and makes it known: the system rebuilds its caches of kernel
/// extensions at the next start when the modification time of the folder is newer than theirs.
Outcome Settle(int folder, const std::string& name)
{
    if (futimes(folder, nullptr) != 0 || fsync(folder) != 0)
        return Failure(ExitCode::diskError, "changed " + name + " but could not flush the change", errno);
    return {};
}

/// For file systems that cannot swap. After a kill between the renames the next run puts the old copy back.
Outcome PutInPlaceInTwoSteps(int folder, const std::string& name, const std::string& staged)
{
    const std::string old = HiddenName(name, oldSuffix);
    const bool movedAside = renameat(folder, name.c_str(), folder, old.c_str()) == 0;
    if (!movedAside && errno != ENOENT)
        return Failure(ExitCode::diskError, "cannot move the old " + name + " aside", errno);
    if (renameat(folder, staged.c_str(), folder, name.c_str()) == 0) {
        Outcome outcome = Settle(folder, name);
        if (outcome.ok())
            DeleteOld(folder, name);
        return outcome;
    }
    Outcome outcome = Failure(ExitCode::diskError, "cannot put " + name + " in place", errno);
    if (movedAside && renameat(folder, old.c_str(), folder, name.c_str()) != 0)
        outcome.text += "; the next run will put the old one back";
    DropStaged(folder, name);
    return outcome;
}

}

std::string HiddenName(std::string_view name, std::string_view suffix)
{
    return std::string(".").append(name).append(suffix);
}

Outcome ClearLeftovers(int folder)
{
    // An interrupted run may not have come to flush its change, and deleting is only safe after that.
    if (fsync(folder) != 0)
        return Failure(ExitCode::diskError, "cannot flush the folder of extensions", errno);
    std::vector<std::string> entries;
    const int error = ReadNames(folder, std::numeric_limits<size_t>::max(), entries);
    if (error != 0)
        return Failure(ExitCode::diskError, "cannot list the folder of extensions", error);
    for (const std::string& entry : entries) {
        for (const std::string_view suffix : { stagingSuffix, removedSuffix }) {
            const std::string name = NameBehind(entry, suffix);
            if (!name.empty())
                DeleteHidden(folder, name, suffix);
        }
        const std::string name = NameBehind(entry, oldSuffix);
        Outcome outcome = name.empty() ? Outcome {} : RecoverOld(folder, name);
        if (!outcome.ok())
            return outcome;
    }
    return {};
}

Outcome PutStagedInPlace(int folder, const std::string& name)
{
    const std::string staged = HiddenName(name, stagingSuffix);
    int result = renameatx_np(folder, staged.c_str(), folder, name.c_str(), RENAME_SWAP);
    if (result != 0 && errno == ENOENT)
        result = renameatx_np(folder, staged.c_str(), folder, name.c_str(), RENAME_EXCL);
    if (result != 0 && (errno == ENOTSUP || errno == EINVAL))
        return PutInPlaceInTwoSteps(folder, name, staged);
    if (result != 0) {
        Outcome outcome = Failure(ExitCode::diskError, "cannot put " + name + " in place", errno);
        DropStaged(folder, name);
        return outcome;
    }
    // The staging name now has the old copy, which a power failure may bring back until the swap is flushed.
    Outcome outcome = Settle(folder, name);
    if (outcome.ok())
        DropStaged(folder, name);
    return outcome;
}

void DropStaged(int folder, const std::string& name) { DeleteHidden(folder, name, stagingSuffix); }

Outcome TakeAway(int folder, const std::string& name, bool& found)
{
    found = renameat(folder, name.c_str(), folder, HiddenName(name, removedSuffix).c_str()) == 0;
    if (!found)
        return errno == ENOENT ? Outcome {}
                               : Failure(ExitCode::diskError, "cannot take " + name + " away", errno);
    Outcome outcome = Settle(folder, name);
    if (outcome.ok())
        DeleteHidden(folder, name, removedSuffix);
    return outcome;
}
