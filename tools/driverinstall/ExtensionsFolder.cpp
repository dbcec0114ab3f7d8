#include "tools/driverinstall/ExtensionsFolder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

constexpr const char* lockName = ".driverinstall.lock";

ExitCode CodeForError(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
        return ExitCode::notPermitted;
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
        return ExitCode::destinationRefused;
    default:
        return ExitCode::diskError;
    }
}

/// Opens the folder, or makes and flushes it, with mode 0755 less the process's mask, where `create` says so.
/// @return 0 or errno.
int OpenOrCreate(const std::string& path, bool create, FileDescriptor& folder)
{
    folder = FileDescriptor(open(path.c_str(), folderFlags));
    if (folder || errno != ENOENT || !create)
        return folder ? 0 : errno;
    if (mkdir(path.c_str(), 0755) != 0 && errno != EEXIST)
        return errno;
    folder = FileDescriptor(open(path.c_str(), folderFlags));
    if (!folder)
        return errno;
    const FileDescriptor parent(openat(folder.get(), "..", folderFlags));
    return parent && fsync(parent.get()) == 0 ? 0 : errno;
}

Outcome CheckTrust(int folder, const std::string& path)
{
    struct stat info { };
    if (fstat(folder, &info) != 0)
        return Failure(ExitCode::diskError, "cannot examine " + path, errno);
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

/// Whether the lock file still has its name; the run that held the lock before may have unlinked it.
bool IsLinked(int folder, int lock)
{
    struct stat opened { };
    struct stat named { };
    return fstat(lock, &opened) == 0 && fstatat(folder, lockName, &named, AT_SYMLINK_NOFOLLOW) == 0
        && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// Locks a file that only the owner can open, since anybody who can read the folder could lock that. Asks
/// again and again, because no call waits for a lock for a limited time.
Outcome Lock(int folder, std::chrono::milliseconds longestWait, FileDescriptor& lock)
{
    constexpr int lockFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC;
    constexpr std::chrono::milliseconds pause(50);
    const auto end = std::chrono::steady_clock::now() + longestWait;
    for (;;) {
        FileDescriptor file(openat(folder, lockName, lockFlags, 0600));
        if (!file)
            return Failure(CodeForError(errno), "cannot open the lock of the folder of extensions", errno);
        const bool locked = flock(file.get(), LOCK_EX | LOCK_NB) == 0;
        if (!locked && errno != EWOULDBLOCK)
            return Failure(ExitCode::diskError, "cannot lock the folder of extensions", errno);
        if (locked && IsLinked(folder, file.get())) {
            lock = std::move(file);
            return {};
        }
        if (std::chrono::steady_clock::now() >= end)
            return { ExitCode::busy, "another run is still changing the folder of extensions" };
        std::this_thread::sleep_for(pause);
    }
}

}

ExtensionsFolder::~ExtensionsFolder()
{
    // While it is locked. A lock file that cannot be unlinked serves the next run.
    if (fLock)
        (void)unlinkat(fFolder.get(), lockName, 0);
}

Outcome ExtensionsFolder::open(
    const std::string& path, Missing missing, std::chrono::milliseconds longestWait)
{
    const int error = OpenOrCreate(path, missing == Missing::create, fFolder);
    if (error == ENOENT && missing == Missing::accept)
        return {};
    if (error != 0)
        return Failure(CodeForError(error), "cannot use " + path, error);
    Outcome trust = CheckTrust(fFolder.get(), path);
    return trust.ok() ? Lock(fFolder.get(), longestWait, fLock) : trust;
}
