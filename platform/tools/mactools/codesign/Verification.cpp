#include "codesign/Verification.h"

#include "codesign/Digest.h"
#include "codesign/OpenBeneath.h"
#include "codesign/Seal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>

namespace codesign {

namespace {

constexpr const char* kBadResource = "a sealed resource is missing or invalid";
constexpr const char* kBadLink = "invalid destination for symbolic link in bundle";
constexpr const char* kUnsealedRoot = "unsealed contents present in the bundle root";
constexpr int kDeepest = 200; ///< folders in each other, all of which are held open at a time

/// In the contents folder, and written when all the rest is sealed already.
constexpr std::array<std::string_view, 3> kSigningFiles { "_CodeSignature", "CodeResources", "_MASReceipt" };
/// What is harmless beside the contents folder: the file manager's.
constexpr std::array<std::string_view, 3> kRootFiles { "Contents", ".DS_Store", "Icon\r" };

/// Where in the bundle: an open folder, a name there, and the path below the contents folder.
struct Place {
    int folder;
    std::string name;
    std::string path;
};

/// Whether a link leads out of its bundle, by what it says. @param link its path below the bundle's root.
bool LeadsOut(const std::string& link, const std::string& target)
{
    const std::filesystem::path end = (std::filesystem::path(link).parent_path() / target).lexically_normal();
    if (end.is_absolute())
        return !end.string().starts_with("/System/") && !end.string().starts_with("/Library/");
    return *end.begin() == "..";
}

class Verification {
public:
    /// @param depth how many folders lie above this bundle's.
    Verification(const Bundle& bundle, bool strict, int depth)
        : fBundle(bundle)
        , fStrict(strict)
        , fDepth(depth)
    {
    }
    Finding run();

private:
    void checkRoot();
    void checkFolder(int folder, const std::string& prefix);
    void check(const Place& place);
    void checkSubfolder(const Place& place);
    void checkNested(const Place& place, Descriptor folder);
    void checkUnsealed(const Place& place, mode_t mode);
    bool isAsSealed(const Place& place, mode_t mode, const SealedItem& item);
    bool isFileAsSealed(const Place& place, const std::string& digest);
    bool isLinkAsSealed(const Place& place, const std::string& target);
    /// @return what the rules say; omitted, with a problem noted, where they cannot be followed.
    SealRules::Answer askRules(const std::string& path);
    void note(const char* problem, const std::string& subcomponent = {});
    void noteItem(const char* what, const std::string& path);
    void noteUnreadable(const std::string& path, int error);

    const Bundle& fBundle;
    const bool fStrict;
    int fDepth;
    Seal fSeal; ///< items that were met are taken out
    Finding fFinding;
};

Finding Verification::run()
{
    const std::string problem = ReadSeal(fBundle, fSeal);
    if (!problem.empty())
        return { problem, {}, {} };
    checkFolder(fBundle.contents.get(), "");
    for (const auto& [path, item] : fSeal.items) {
        if (!item.isOptional)
            noteItem("file missing", path);
    }
    if (fStrict && fBundle.contentsName == "Contents")
        checkRoot();
    return std::move(fFinding);
}

void Verification::checkRoot()
{
    std::vector<std::string> names;
    if (const int error = ListFolder(fBundle.root.get(), names); error != 0)
        noteUnreadable("", error);
    const bool isClean = std::all_of(names.begin(), names.end(), [](const std::string& name) {
        return std::find(kRootFiles.begin(), kRootFiles.end(), name) != kRootFiles.end();
    });
    if (!isClean)
        note(kUnsealedRoot);
}

void Verification::checkFolder(int folder, const std::string& prefix)
{
    std::vector<std::string> names;
    const int error = fDepth < kDeepest ? ListFolder(folder, names) : EMFILE;
    if (error != 0)
        noteUnreadable(prefix, error);
    ++fDepth;
    for (const std::string& name : names)
        check({ folder, name, prefix + name });
    --fDepth;
}

void Verification::check(const Place& place)
{
    struct stat info = {};
    if (fstatat(place.folder, place.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return; // gone meanwhile; what was sealed counts as missing
    const auto sealed = fSeal.items.find(place.path);
    const bool isSealed = sealed != fSeal.items.end();
    const bool isSigningFile
        = std::find(kSigningFiles.begin(), kSigningFiles.end(), place.path) != kSigningFiles.end();
    if (!isSealed && (isSigningFile || place.path == fBundle.executable))
        return;
    if (S_ISDIR(info.st_mode))
        return checkSubfolder(place);
    if (!isSealed)
        return checkUnsealed(place, info.st_mode);
    if (!isAsSealed(place, info.st_mode, sealed->second))
        noteItem("file modified", place.path);
    fSeal.items.erase(sealed);
}

void Verification::checkUnsealed(const Place& place, mode_t mode)
{
    const bool isUnknownKind = S_ISLNK(mode) && fSeal.version == 1;
    if (!isUnknownKind && askRules(place.path) != SealRules::Answer::omitted)
        noteItem("file added", place.path);
}

void Verification::checkSubfolder(const Place& place)
{
    const auto sealed = fSeal.items.extract(place.path);
    if (!sealed.empty() && sealed.mapped().kind != SealedItem::Kind::code)
        return noteItem("file modified", place.path);
    // In a place for code a folder with an extension is a bundle, and any other one sorts bundles.
    const bool hasExtension = place.name.find('.') != std::string::npos;
    if (sealed.empty() && hasExtension && askRules(place.path) == SealRules::Answer::nestedCode)
        return noteItem("file added", place.path);
    Descriptor folder = OpenBeneath(place.folder, place.name, O_RDONLY | O_DIRECTORY);
    if (!folder)
        noteUnreadable(place.path, errno);
    else if (sealed.empty())
        checkFolder(folder.get(), place.path + '/');
    else
        checkNested(place, std::move(folder));
}

void Verification::checkNested(const Place& place, Descriptor folder)
{
    Bundle nested;
    const std::string path = fBundle.pathOf(place.path);
    if (const int error = OpenBundle(std::move(folder), path, nested); error != 0)
        return noteUnreadable(place.path, error);
    Finding finding = Verification(nested, fStrict, fDepth + 1).run();
    if (!finding.problem.empty())
        note(finding.problem.c_str(), finding.subcomponent.empty() ? path : finding.subcomponent);
    fFinding.details.insert(fFinding.details.end(), finding.details.begin(), finding.details.end());
}

bool Verification::isAsSealed(const Place& place, mode_t mode, const SealedItem& item)
{
    switch (item.kind) {
    case SealedItem::Kind::link:
        return S_ISLNK(mode) && isLinkAsSealed(place, item.value);
    case SealedItem::Kind::file:
        return S_ISREG(mode) && isFileAsSealed(place, item.value);
    case SealedItem::Kind::code:
        return S_ISREG(mode); // its seal would be in itself
    }
    return false;
}

bool Verification::isLinkAsSealed(const Place& place, const std::string& target)
{
    const std::string found = LinkTarget(place.folder, place.name);
    const std::string path
        = fBundle.contentsName.empty() ? place.path : fBundle.contentsName + '/' + place.path;
    if (fStrict && LeadsOut(path, found))
        note(kBadLink);
    return found == target;
}

bool Verification::isFileAsSealed(const Place& place, const std::string& digest)
{
    // What was a file a moment ago may be a pipe by now, which opening or reading would wait for.
    const Descriptor file = OpenBeneath(place.folder, place.name, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    std::string found;
    const int error = file ? HashFile(file.get(), digest.size(), found) : errno;
    if (error == 0)
        return found == digest;
    noteUnreadable(place.path, error);
    return true;
}

SealRules::Answer Verification::askRules(const std::string& path)
{
    const std::optional<SealRules::Answer> answer = fSeal.rules.answer(path);
    if (!answer)
        note(kDamagedSeal);
    return answer.value_or(SealRules::Answer::omitted);
}

void Verification::note(const char* problem, const std::string& subcomponent)
{
    if (!fFinding.problem.empty())
        return;
    fFinding.problem = problem;
    fFinding.subcomponent = subcomponent;
}

void Verification::noteItem(const char* what, const std::string& path)
{
    note(kBadResource);
    fFinding.details.push_back(what + (": " + fBundle.pathOf(path)));
}

void Verification::noteUnreadable(const std::string& path, int error)
{
    note(kBadResource);
    fFinding.details.push_back("file unreadable: " + fBundle.pathOf(path) + ": " + std::strerror(error));
}

}

Finding Verify(const Bundle& bundle, bool strict) { return Verification(bundle, strict, 0).run(); }

}
