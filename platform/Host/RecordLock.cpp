#include "RecordLock.h"

#include "Folders.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

int LockRecord(const std::string& path, Descriptor& lock)
{
    if (const int error = MakeFolders(path.substr(0, path.rfind('/')), 0755, 0755);
        error != 0 && error != EEXIST)
        return error;
    // A file of its own, which nobody else can open: the record is replaced, and its folder is open to all.
    const std::string file = path + ".lock";
    lock = Descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    return lock && flock(lock.get(), LOCK_EX) == 0 ? 0 : errno;
}
