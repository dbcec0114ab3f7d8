#include "HostTrash.h"

#if __APPLE__

bool HostPrepareTrash() { return true; }

#else

#include "Folders.h"
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
        // What the Trash holds is its owner's business alone.
        const int error = MakeFolders(folder, 0700, 0755);
        if ((error != 0 && error != EEXIST) || !TakesEntries(folder))
            return false;
    }
    return true;
}

#endif
