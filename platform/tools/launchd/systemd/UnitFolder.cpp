#include "UnitFolder.h"

#include <Host/AtomicFile.h>
#include <Host/Folders.h>
#include <Host/HostPath.h>
#include <Host/ReadWhole.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace launchd {

namespace fs = std::filesystem;

namespace {
constexpr std::string_view suffix = ".service";
constexpr const char* linkFolders[] = { "graphical-session.target.wants", "default.target.wants" };

struct FoundUnit {
    OwnUnit unit;
    timespec written;
};

/// @return our unit in the file, or nothing where it is none of ours.
std::optional<FoundUnit> ReadUnitFile(const fs::path& path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status { };
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    std::string text;
    if (ReadWhole(file.get(), maxUnitBytes, text) != 0)
        return std::nullopt;
    std::optional<UnitNotes> notes = ReadUnit(text);
    if (!notes)
        return std::nullopt;
    OwnUnit unit { .label = path.stem(), .notes = std::move(*notes), .text = std::move(text) };
    return FoundUnit { std::move(unit), status.st_mtim };
}

bool IsOlder(const FoundUnit& left, const FoundUnit& right)
{
    const auto key = [](const FoundUnit& found) {
        return std::tie(found.written.tv_sec, found.written.tv_nsec, found.unit.label);
    };
    return key(left) < key(right);
}
}

std::string UnitFolder::path()
{
    constexpr const char* below = "/systemd/user";
    const std::string home = HostHomeFolder();
    // Who has a home fixed for a Mac's programs has the folders in it too.
    const char* const given = secure_getenv("CFFIXED_USER_HOME") ? nullptr : secure_getenv("XDG_CONFIG_HOME");
    if (given && *given == '/')
        return std::string(given) + below;
    return home.empty() ? "" : home + "/.config" + below;
}

std::vector<OwnUnit> UnitFolder::units(const std::string& folder)
{
    std::vector<FoundUnit> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (!entry->path().filename().string().ends_with(suffix))
            continue;
        if (std::optional<FoundUnit> unit = ReadUnitFile(entry->path()))
            found.push_back(std::move(*unit));
    }
    std::sort(found.begin(), found.end(), IsOlder);
    std::vector<OwnUnit> units;
    units.reserve(found.size());
    for (FoundUnit& each : found)
        units.push_back(std::move(each.unit));
    return units;
}

std::optional<UnitFolder> UnitFolder::make(const std::string& folder, std::string& problem)
{
    const int error = MakeFolders(folder, 0755, 0755);
    Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor)
        return UnitFolder(std::move(descriptor), folder);
    problem = folder + ": " + std::strerror(error != 0 && error != EEXIST ? error : errno);
    return std::nullopt;
}

bool UnitFolder::has(const std::string& label) const
{
    struct stat status { };
    return fstatat(fFolder.get(), UnitName(label).c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0
        || errno != ENOENT;
}

bool UnitFolder::hasLostLink(const std::string& label) const
{
    return !has(label) && std::any_of(std::begin(linkFolders), std::end(linkFolders), [&](const char* links) {
        std::error_code error;
        return fs::read_symlink(fPath + '/' + links + '/' + UnitName(label), error) == pathOf(label);
    });
}

int UnitFolder::write(const std::string& label, const std::string& text) const
{
    return WriteFileAtomically(pathOf(label), text.data(), text.size());
}

int UnitFolder::remove(const std::string& label) const
{
    return unlinkat(fFolder.get(), UnitName(label).c_str(), 0) == 0 || errno == ENOENT ? 0 : errno;
}

void UnitFolder::removeLinks(const std::string& label) const
{
    for (const char* links : linkFolders) {
        const std::string folder = fPath + '/' + links;
        unlink((folder + '/' + UnitName(label)).c_str());
        rmdir(folder.c_str());
    }
}

void UnitFolder::removeIfEmpty() const
{
    fs::path folder = fPath;
    // "user", "systemd" and the configuration folder; the first that has other things in it ends this.
    for (int level = 0; level < 3 && rmdir(folder.c_str()) == 0; ++level)
        folder = folder.parent_path();
}

} // namespace launchd
