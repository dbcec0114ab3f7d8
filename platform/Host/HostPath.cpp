#include "HostPath.h"

#include "UserRecord.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// A variable of the environment that decides where files go. A program that runs with more rights than its
/// caller must not take that from the caller.
/// @return the value without trailing slashes, or "" when it is unset, relative or not to be trusted.
std::string FolderFromEnvironment(const char* variable)
{
#if __APPLE__
    const char* value = issetugid() ? nullptr : getenv(variable);
#else
    const char* value = secure_getenv(variable);
#endif
    if (value == nullptr || *value != '/')
        return {};
    std::string folder = value;
    folder.erase(std::max<size_t>(folder.find_last_not_of('/') + 1, 1));
    return folder;
}

/// The home folder of the real user in the user database, or "".
std::string HomeFromUserDatabase()
{
    const std::optional<UserRecord> user = RecordOfUser(getuid());
    if (!user || !user->home.starts_with('/'))
        return {};
    std::string home = user->home;
    home.erase(std::max<size_t>(home.find_last_not_of('/') + 1, 1));
    return home;
}

} // namespace

std::string HostHomeFolder()
{
    const std::string fixed = FolderFromEnvironment("CFFIXED_USER_HOME");
    return fixed.empty() ? HomeFromUserDatabase() : fixed;
}

std::string HostDataFolder()
{
    const char* const named = getenv("XDG_DATA_HOME");
    return named != nullptr && *named == '/' ? named : HostHomeFolder() + "/.local/share";
}

#if __APPLE__

std::string HostStartupVolume() { return {}; }
bool HostStartupVolumeIsSystems() { return true; }
std::string HostToolsFolder() { return {}; }
std::string HostPath(const std::string& macPath) { return macPath; }
void HostEnterHome() { }
void HostFindDevicesWith(std::string (*)(const std::string& bsdName)) { }
std::string HostRestartRequestPath() { return {}; }

#else

namespace {

bool Exists(const std::string& path)
{
    struct stat info = {};
    return lstat(path.c_str(), &info) == 0 || errno == EACCES;
}

bool IsFolder(const std::string& path)
{
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool IsInside(std::string_view path, std::string_view folder)
{
    return folder == "/"
        || (path.substr(0, folder.size()) == folder
            && (path.size() == folder.size() || path[folder.size()] == '/'));
}

/// The stand-in for a Mac's command-line tool, or "" when the path names none.
std::string StandInTool(const std::string& macPath)
{
    static constexpr std::array<std::string_view, 5> toolFolders { "/bin", "/sbin", "/usr/bin", "/usr/sbin",
        "/System/Library/Filesystems/hfs.fs/Contents/Resources" };
    const size_t slash = macPath.rfind('/');
    const std::string_view folder = std::string_view(macPath).substr(0, slash);
    if (std::find(toolFolders.begin(), toolFolders.end(), folder) == toolFolders.end())
        return {};
    std::string tool = HostToolsFolder() + macPath.substr(slash);
    struct stat info = {};
    return stat(tool.c_str(), &info) == 0 && S_ISREG(info.st_mode) ? tool : std::string();
}

std::string (*findDevice)(const std::string& bsdName) = nullptr;

/// The host's file for a device, or "" when the path names none.
std::string DeviceFile(const std::string& macPath)
{
    for (const std::string_view folder : { "/dev/r", "/dev/" }) {
        if (findDevice != nullptr && macPath.starts_with(std::string(folder) + "disk"))
            return findDevice(macPath.substr(folder.size()));
    }
    return {};
}

std::string FirstComponent(const std::string& path)
{
    const size_t start = std::min(path.find_first_not_of('/'), path.size());
    return path.substr(start, path.find('/', start) - start);
}

} // namespace

std::string HostStartupVolume()
{
    const std::string volume = FolderFromEnvironment("ZEK_STARTUP_VOLUME");
    return volume.empty() ? HOST_DEFAULT_STARTUP_VOLUME : volume;
}

bool HostStartupVolumeIsSystems()
{
    struct stat info = {};
    return HostStartupVolume() == HOST_DEFAULT_STARTUP_VOLUME && stat(HOST_DEFAULT_STARTUP_VOLUME, &info) == 0
        && S_ISDIR(info.st_mode) && info.st_uid == 0;
}

std::string HostToolsFolder()
{
    const std::string folder = FolderFromEnvironment("HOST_TOOLS_FOLDER");
    return folder.empty() ? HOST_DEFAULT_TOOLS_FOLDER : folder;
}

std::string HostPath(const std::string& macPath)
{
    const std::string volume = HostStartupVolume();
    if (macPath.empty() || macPath.front() != '/' || IsInside(macPath, volume))
        return macPath;
    std::string inVolume = volume + macPath;
    if (Exists(inVolume))
        return inVolume;
    std::string tool = StandInTool(macPath);
    if (!tool.empty())
        return tool;
    std::string device = DeviceFile(macPath);
    if (!device.empty())
        return device;
    // The first component must be named: every folder lies in the volume's root.
    const std::string first = FirstComponent(macPath);
    if (!first.empty() && !Exists(macPath) && IsFolder(volume + '/' + first))
        return inVolume;
    return macPath;
}

void HostFindDevicesWith(std::string (*find)(const std::string& bsdName)) { findDevice = find; }

std::string HostRestartRequestPath() { return HostStartupVolume() + "/private/var/db/RestartRequest.plist"; }

void HostEnterHome()
{
    const std::string home = HostHomeFolder();
    if (home.empty())
        return;
    setenv("HOME", home.c_str(), 1);
    if (!FolderFromEnvironment("CFFIXED_USER_HOME").empty())
        unsetenv("XDG_DATA_HOME"); // it would keep the Trash in the home folder that was left
}

#endif
