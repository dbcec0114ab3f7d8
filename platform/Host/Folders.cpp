#include "Folders.h"

#include "HostPath.h"

#include <cerrno>
#include <sys/stat.h>

int MakeFolders(const std::string& path, mode_t mode, mode_t modeAbove)
{
    if (mkdir(path.c_str(), mode) == 0)
        return 0;
    const size_t slash = path.rfind('/');
    if (errno != ENOENT || slash == std::string::npos)
        return errno;
    const std::string above = path.substr(0, slash);
    if (above.empty() || above == HostStartupVolume())
        return ENOENT;
    if (const int error = MakeFolders(above, modeAbove, modeAbove); error != 0 && error != EEXIST)
        return error;
    return mkdir(path.c_str(), mode) == 0 ? 0 : errno;
}
