#include "UserBus.h"

#include "MessageBus.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool IsOwnFolder(const std::string& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

/// Whether the environment is of a session of the user's. Programs like runuser leave another user's in place.
bool IsOwnSession()
{
    const char* const folder = secure_getenv("XDG_RUNTIME_DIR");
    return folder == nullptr || access(folder, F_OK) != 0 || IsOwnFolder(folder);
}

/// The folder that a user's runtime folder usually is; "" where there is none of this user's.
std::string UsualRuntimeFolder()
{
    const std::string usual = "/run/user/" + std::to_string(geteuid());
    return IsOwnFolder(usual) ? usual : "";
}

}

std::string UserBusAddress()
{
    const bool isOwn = IsOwnSession();
    if (const char* const given = secure_getenv("DBUS_SESSION_BUS_ADDRESS"); given != nullptr && isOwn)
        return given;
    const char* const named = secure_getenv("XDG_RUNTIME_DIR");
    const std::string folder = named != nullptr && isOwn ? named : UsualRuntimeFolder();
    return folder.empty() ? "" : BusAddress(folder + "/bus");
}
