#include "HostTrash.h"

#if __APPLE__

bool HostPrepareTrash() { return true; }

#else

#include "HostPath.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Where the freedesktop Trash of the user lies: in the data folder, wherever the environment puts that.
std::string DataFolder()
{
    const char* const named = getenv("XDG_DATA_HOME");
    return named != nullptr && *named == '/' ? named : HostHomeFolder() + "/.local/share";
}

/// Makes a folder and those above it that are missing. What the Trash holds is its owner's business alone.
bool MakeFolders(const std::string& path, mode_t mode)
{
    if (mkdir(path.c_str(), mode) == 0 || errno == EEXIST)
        return true;
    const size_t slash = path.rfind('/');
    return errno == ENOENT && slash != 0 && slash != std::string::npos
        && MakeFolders(path.substr(0, slash), 0755) && mkdir(path.c_str(), mode) == 0;
}

bool TakesEntries(const std::string& folder)
{
    struct stat info { };
    return stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode)
        && access(folder.c_str(), W_OK | X_OK) == 0;
}

}

bool HostPrepareTrash()
{
    const std::string trash = DataFolder() + "/Trash";
    for (const std::string& folder : { trash, trash + "/files", trash + "/info" }) {
        if (!MakeFolders(folder, 0700) || !TakesEntries(folder))
            return false;
    }
    return true;
}

#endif
