#include "HostTrash.h"

#if __APPLE__

bool HostPrepareTrash() { return true; }

#else

#include "Folders.h"
#include "HostPath.h"

#include <cerrno>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Makes a folder of the Trash where it is missing. What it holds is its owner's business alone.
/// @return whether it can take items.
bool Prepare(const std::string& folder)
{
    const int error = MakeFolders(folder, 0700, 0755);
    struct stat info { };
    return (error == 0 || error == EEXIST) && stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode)
        && access(folder.c_str(), W_OK | X_OK) == 0;
}

}

bool HostPrepareTrash()
{
    const std::string trash = HostDataFolder() + "/Trash";
    return Prepare(trash) && Prepare(trash + "/files") && Prepare(trash + "/info");
}

#endif
