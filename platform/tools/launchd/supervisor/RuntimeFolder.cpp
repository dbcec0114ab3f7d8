#include "RuntimeFolder.h"

#include <Host/Folders.h>
#include <Host/HostPath.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>

namespace launchd {

namespace {
constexpr const char* socketName = "socket";
constexpr int backlog = 64;
constexpr time_t sendTimeOut = 10; // seconds

/// The socket by way of the open folder: a volume's own path is often too long for a socket's address.
sockaddr_un SocketAddress(int folder)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    const std::string path = "/proc/self/fd/" + std::to_string(folder) + "/" + socketName;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

/// @return 0 or an errno. A new volume has neither the folder nor those that it lies in.
int MakeRuntimeFolder(const std::string& path)
{
    // On a volume that is only a folder, every user's supervisor lives side by side in one for temporary files.
    const std::string temporary = path.substr(0, path.rfind('/'));
    const int error = MakeFolders(temporary, 0700, 0755);
    if (error != 0 && error != EEXIST)
        return error;
    if (error == 0 && chmod(temporary.c_str(), S_ISVTX | 0777) != 0)
        return errno;
    return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST ? 0 : errno;
}
}

std::string RuntimeFolder::path()
{
    // On the system's volume anybody could be there first with the name and keep the user from jobs altogether.
    if (HostStartupVolumeIsSystems())
        return HostHomeFolder() + "/.launchd";
    return HostStartupVolume() + "/private/tmp/launchd." + std::to_string(geteuid());
}

std::optional<RuntimeFolder> RuntimeFolder::open(std::string& problem)
{
    problem.clear();
    Descriptor folder(::open(path().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status { };
    if (!folder || fstat(folder.get(), &status) != 0) {
        if (errno != ENOENT)
            problem = path() + ": " + std::strerror(errno);
        return std::nullopt;
    }
    if (status.st_uid != geteuid() || (status.st_mode & 07777) != 0700) {
        problem = path() + ": Not a folder that only its user can enter";
        return std::nullopt;
    }
    return RuntimeFolder(std::move(folder));
}

std::optional<RuntimeFolder> RuntimeFolder::claim(std::string& problem)
{
    problem.clear();
    for (;;) {
        if (const int error = MakeRuntimeFolder(path()); error != 0) {
            problem = path() + ": " + std::strerror(error);
            return std::nullopt;
        }
        std::optional<RuntimeFolder> folder = open(problem);
        if (!folder && problem.empty())
            continue; // removed again by the supervisor that just ended
        if (!folder)
            return std::nullopt;
        if (flock(folder->fFolder.get(), LOCK_EX | LOCK_NB) != 0) {
            if (errno != EWOULDBLOCK)
                problem = path() + ": " + std::strerror(errno);
            return std::nullopt;
        }
        if (folder->isInPlace())
            return folder;
    }
}

Descriptor RuntimeFolder::connect() const
{
    Descriptor peer(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!peer)
        return peer;
    const timeval patience { .tv_sec = sendTimeOut, .tv_usec = 0 };
    const sockaddr_un address = SocketAddress(fFolder.get());
    if (setsockopt(peer.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience) == 0
        && ::connect(peer.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return peer;
    const int error = errno;
    peer.close();
    errno = error;
    return peer;
}

Descriptor RuntimeFolder::listen() const
{
    Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const sockaddr_un address = SocketAddress(fFolder.get());
    unlinkat(fFolder.get(), socketName, 0);
    if (listener && bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
        && ::listen(listener.get(), backlog) == 0)
        return listener;
    const int error = errno;
    listener.close();
    errno = error;
    return listener;
}

void RuntimeFolder::remove() const
{
    unlinkat(fFolder.get(), socketName, 0);
    rmdir(path().c_str());
}

bool RuntimeFolder::isInPlace() const
{
    struct stat here { };
    struct stat opened { };
    return lstat(path().c_str(), &here) == 0 && fstat(fFolder.get(), &opened) == 0
        && here.st_dev == opened.st_dev && here.st_ino == opened.st_ino;
}

} // namespace launchd
