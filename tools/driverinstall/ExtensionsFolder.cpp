#include "tools/driverinstall/ExtensionsFolder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

ExitCode CodeForOpenError(int error)
{
    return error == EACCES || error == EPERM || error == EROFS ? ExitCode::notPermitted
                                                               : ExitCode::destinationRefused;
}

/// Opens the folder, or makes it with mode 0755, less the process's mask, where `create` says so.
/// @return 0 or errno.
int OpenOrCreate(const std::string& path, bool create, FileDescriptor& folder)
{
    folder = FileDescriptor(open(path.c_str(), folderFlags));
    if (folder || errno != ENOENT || !create)
        return folder ? 0 : errno;
    if (mkdir(path.c_str(), 0755) != 0 && errno != EEXIST)
        return errno;
    folder = FileDescriptor(open(path.c_str(), folderFlags));
    return folder ? 0 : errno;
}

Outcome CheckTrust(int folder, const std::string& path)
{
    struct stat info { };
    if (fstat(folder, &info) != 0)
        return Failure(ExitCode::destinationRefused, "cannot examine " + path, errno);
    const uid_t user = geteuid();
    if (info.st_uid != user && user != 0)
        return { ExitCode::notPermitted, path + " does not belong to the user that runs this" };
    if (info.st_uid != user)
        return { ExitCode::destinationRefused, path + " does not belong to root" };
    // For an ordinary user's own trial volume the group is commonly one that has no other member.
    const gid_t trustedGroup = user == 0 ? 0 : getegid();
    const bool groupCanWrite = (info.st_mode & S_IWGRP) != 0 && info.st_gid != trustedGroup;
    if ((info.st_mode & S_IWOTH) != 0 || groupCanWrite)
        return { ExitCode::destinationRefused, path + " can be changed by other users" };
    return {};
}

/// Asks again and again, because no call waits for a lock for a limited time.
Outcome Lock(int folder, std::chrono::milliseconds longestWait)
{
    constexpr std::chrono::milliseconds pause(50);
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK)
            return Failure(ExitCode::diskError, "cannot lock the folder of extensions", errno);
        if (std::chrono::steady_clock::now() >= end)
            return { ExitCode::busy, "another run is still changing the folder of extensions" };
        std::this_thread::sleep_for(pause);
    }
    return {};
}

}

Outcome ExtensionsFolder::open(
    const std::string& path, Missing missing, std::chrono::milliseconds longestWait)
{
    const int error = OpenOrCreate(path, missing == Missing::create, fFolder);
    if (error == ENOENT && missing == Missing::accept)
        return {};
    if (error != 0)
        return Failure(CodeForOpenError(error), "cannot use " + path, error);
    Outcome trust = CheckTrust(fFolder.get(), path);
    return trust.ok() ? Lock(fFolder.get(), longestWait) : trust;
}
