#include "CopyItem.h"

#include <Host/Descriptor.h>

#include <array>
#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>

namespace {

/// Takes a file or link that is in the way out of it, unless it is the original itself.
int RemoveObstacle(const CopyPlace& to, const struct stat& source)
{
    struct stat obstacle = {};
    if (fstatat(to.folder, to.name, &obstacle, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    if (IsSameFile(obstacle, source))
        return EINVAL;
    return unlinkat(to.folder, to.name, 0) == 0 ? 0 : errno;
}

/// With owner and mode still to come, nobody but the copying user may open the copy; it stays writable until
/// its attributes are set.
mode_t CreationMode(const CopyJob& job, const struct stat& source)
{
    return job.has(COPYFILE_STAT) ? (source.st_mode & S_IRWXU) | S_IWUSR : source.st_mode & 0777;
}

/// Opens the copy for writing: a new file, or a file that exists where the flags allow it.
int OpenCopy(const CopyJob& job, const CopyPlace& to, const struct stat& source, Descriptor& copy)
{
    // O_NONBLOCK: a FIFO in the way must not make us wait for a reader.
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | (to.follow ? 0 : O_NOFOLLOW);
    const mode_t mode = CreationMode(job, source);
    copy = Descriptor(openat(to.folder, to.name, flags | O_EXCL, mode));
    if (copy)
        return 0;
    if (errno != EEXIST || job.has(COPYFILE_EXCL))
        return errno;
    const bool unlinks = job.has(COPYFILE_UNLINK);
    const int error = unlinks ? RemoveObstacle(to, source) : 0;
    if (error != 0)
        return error;
    copy = Descriptor(openat(to.folder, to.name, unlinks ? flags | O_EXCL : flags, mode));
    return copy ? 0 : errno;
}

int CopyFile(CopyJob& job, const CopyPlace& from, const CopyPlace& to)
{
    struct stat source = {};
    struct stat made = {};
    const Descriptor original(
        openat(from.folder, from.name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | (from.follow ? 0 : O_NOFOLLOW)));
    if (!original || fstat(original.get(), &source) != 0)
        return errno;
    if (!S_ISREG(source.st_mode))
        return ENOTSUP; // swapped since its type was learnt
    Descriptor copy;
    int error = OpenCopy(job, to, source, copy);
    if (error != 0)
        return error;
    if (fstat(copy.get(), &made) != 0)
        return errno;
    if (!S_ISREG(made.st_mode))
        return ENOTSUP;
    if (IsSameFile(source, made))
        return EINVAL;
    if (job.has(COPYFILE_DATA | COPYFILE_DATA_SPARSE)) {
        if (made.st_size > 0 && ftruncate(copy.get(), 0) != 0)
            return errno;
        error = CopyData(job, original.get(), copy.get(), source);
    }
    if (error == 0)
        error = CopyMetadata(job, original.get(), copy.get(), source, made);
    const int closeError = copy.close(); // where a network's file system tells that writing failed
    return error == 0 ? closeError : error;
}

/// A link's own owner and times; it has no mode, and the "user." attributes not either.
int CopyLinkStat(const CopyPlace& to, const struct stat& source)
{
    if (fchownat(to.folder, to.name, source.st_uid, source.st_gid, AT_SYMLINK_NOFOLLOW) != 0 && errno != EPERM
        && errno != EINVAL)
        return errno;
    const struct timespec times[] {
        source.st_atim, source.st_mtim
    };
    return utimensat(to.folder, to.name, times, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

int CopyLink(const CopyJob& job, const CopyPlace& from, const CopyPlace& to)
{
    struct stat source = {};
    std::array<char, PATH_MAX> text {};
    if (fstatat(from.folder, from.name, &source, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    const ssize_t length = readlinkat(from.folder, from.name, text.data(), text.size() - 1);
    if (length < 0)
        return errno == EINVAL ? ENOTSUP : errno; // EINVAL: no link any more
    int error = symlinkat(text.data(), to.folder, to.name) == 0 ? 0 : errno;
    if (error == EEXIST && !job.has(COPYFILE_EXCL)) {
        error = RemoveObstacle(to, source);
        if (error == 0 && symlinkat(text.data(), to.folder, to.name) != 0)
            error = errno;
    }
    return error == 0 && job.has(COPYFILE_STAT) ? CopyLinkStat(to, source) : error;
}

} // namespace

int CopyItem(CopyJob& job, const CopyPlace& from, const CopyPlace& to, unsigned char type)
{
    switch (type) {
    case DT_REG:
        return CopyFile(job, from, to);
    case DT_LNK:
        return CopyLink(job, from, to);
    default:
        return ENOTSUP;
    }
}
