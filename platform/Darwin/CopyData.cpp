#include "CopyItem.h"

#include <Host/WriteAll.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr size_t kBufferSize = 256UL * 1024;
constexpr off_t kRangeSize = 1 << 30; // below what one call may carry, and a multiple of any block
constexpr off_t kUntilEnd = std::numeric_limits<off_t>::max();

/// The ways in which kernels and file systems say "not here" or "not between these two".
bool MeansUnsupported(int error)
{
    switch (error) {
    case EBADF:
    case EINVAL:
    case ENOSYS:
    case ENOTTY:
    case EOPNOTSUPP:
    case EPERM:
    case ETXTBSY:
    case EXDEV:
        return true;
    default:
        return false;
    }
}

int ReadAndWrite(CopyJob& job, int from, int to, off_t size)
{
    job.buffer.resize(kBufferSize);
    while (size > 0) {
        const auto wanted = static_cast<size_t>(std::min<off_t>(size, kBufferSize));
        const ssize_t got = read(from, job.buffer.data(), wanted);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return got == 0 ? 0 : errno;
        if (const int error = WriteAll(to, job.buffer.data(), static_cast<size_t>(got)); error != 0)
            return error;
        job.copied += got;
        size -= got;
    }
    return 0;
}

/// Copies up to `size` bytes from where the descriptors are, fewer where the file ends before.
int CopyRange(CopyJob& job, int from, int to, off_t size)
{
    while (job.canCopyRange && size > 0) {
        const auto wanted = static_cast<size_t>(std::min(size, kRangeSize));
        const ssize_t got = copy_file_range(from, nullptr, to, nullptr, wanted, 0);
        if (got < 0 && errno == EINTR)
            continue;
        if (got == 0)
            break; // the end, or a file system that only pretends to have the call: reading tells
        if (got < 0 && !MeansUnsupported(errno))
            return errno;
        if (got < 0) {
            job.canCopyRange = false;
            break;
        }
        job.copied += got;
        size -= got;
    }
    return ReadAndWrite(job, from, to, size);
}

int CopyExtents(CopyJob& job, int from, int to, off_t size)
{
    off_t position = 0;
    while (position < size) {
        const off_t start = lseek(from, position, SEEK_DATA);
        if (start < 0 && errno == ENXIO)
            break; // nothing but a hole remains
        const off_t end = start < 0 ? -1 : lseek(from, start, SEEK_HOLE);
        if (end < 0 || lseek(from, start, SEEK_SET) < 0 || lseek(to, start, SEEK_SET) < 0)
            return errno;
        if (const int error = CopyRange(job, from, to, end - start); error != 0)
            return error;
        position = end;
    }
    return ftruncate(to, size) == 0 ? 0 : errno;
}

} // namespace

int CopyData(CopyJob& job, int from, int to, const struct stat& source)
{
    if (job.has(COPYFILE_CLONE | COPYFILE_CLONE_FORCE) && job.canClone) {
        if (ioctl(to, FICLONE, from) == 0) {
            job.copied += source.st_size;
            job.cloned += source.st_size;
            return 0;
        }
        if (!MeansUnsupported(errno))
            return errno;
        if (job.has(COPYFILE_CLONE_FORCE))
            return ENOTSUP;
        job.canClone = false;
    }
    // Files that a kernel makes up as they are read give 0 as their size.
    if (source.st_size == 0)
        return ReadAndWrite(job, from, to, kUntilEnd);
    const bool hasHoles = source.st_blocks * 512 < source.st_size;
    return hasHoles ? CopyExtents(job, from, to, source.st_size) : CopyRange(job, from, to, source.st_size);
}
