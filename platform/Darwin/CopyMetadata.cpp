#include "CopyItem.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <linux/limits.h>
#include <string_view>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

constexpr size_t kNamesSize = 1024; // enough for nearly every file

bool IsWanted(const CopyJob& job, std::string_view name)
{
    if (name.substr(0, 7) == "system.")
        return job.has(COPYFILE_ACL);
    return job.has(COPYFILE_XATTR) && (job.isRoot || name.substr(0, 5) == "user.");
}

int CopyAttribute(CopyJob& job, int from, int to, const char* name)
{
    job.buffer.resize(std::max<size_t>(job.buffer.size(), XATTR_SIZE_MAX));
    const ssize_t size = fgetxattr(from, name, job.buffer.data(), job.buffer.size());
    if (size < 0)
        return errno == ENODATA ? 0 : errno; // taken away since the names were listed
    if (fsetxattr(to, name, job.buffer.data(), static_cast<size_t>(size), 0) == 0 || errno == ENOTSUP)
        return 0;
    // Some attributes of the system may be set by the kernel alone.
    const bool isUsers = std::strncmp(name, "user.", 5) == 0;
    return errno == EPERM && !isUsers ? 0 : errno;
}

int CopyAttributes(CopyJob& job, int from, int to)
{
    job.names.resize(std::max(job.names.size(), kNamesSize));
    ssize_t size = flistxattr(from, job.names.data(), job.names.size());
    if (size < 0 && errno == ERANGE) {
        job.names.resize(XATTR_LIST_MAX);
        size = flistxattr(from, job.names.data(), job.names.size());
    }
    if (size < 0)
        return errno == ENOTSUP ? 0 : errno;
    for (const char* name = job.names.data(); name < job.names.data() + size; name += std::strlen(name) + 1) {
        const int error = IsWanted(job, name) ? CopyAttribute(job, from, to, name) : 0;
        if (error != 0)
            return error;
    }
    return 0;
}

bool HasSameOwner(const struct stat& one, const struct stat& other)
{
    return one.st_uid == other.st_uid && one.st_gid == other.st_gid;
}

/// @param kept true when the copy belongs to the same user and group as the original.
int CopyOwner(int to, const struct stat& source, bool& kept)
{
    kept = fchown(to, source.st_uid, source.st_gid) == 0;
    if (kept)
        return 0;
    // EINVAL: an id that this user namespace has no name for.
    if (errno != EPERM && errno != EINVAL)
        return errno;
    // The group alone, if the caller is its member; if not, it was asked in vain, which is no failure.
    (void)!fchown(to, static_cast<uid_t>(-1), source.st_gid);
    return 0;
}

int CopyMode(int to, const struct stat& source, bool ownerKept)
{
    return fchmod(to, source.st_mode & (ownerKept ? 07777 : 01777)) == 0 ? 0 : errno;
}

int CopyTimes(int to, const struct stat& source)
{
    const struct timespec times[] {
        source.st_atim, source.st_mtim
    };
    return futimens(to, times) == 0 ? 0 : errno;
}

} // namespace

int CopyMetadata(CopyJob& job, int from, int to, const struct stat& source, const struct stat& made)
{
    // The owner first, since changing it takes set-id bits and capabilities away; the mode after the
    // attributes, since a read-only file accepts none.
    bool ownerKept = HasSameOwner(source, made);
    const bool isModeKept = ownerKept && made.st_mode == source.st_mode && (source.st_mode & 07000) == 0;
    int error = 0;
    if (job.has(COPYFILE_STAT) && !ownerKept)
        error = CopyOwner(to, source, ownerKept);
    if (error == 0 && job.has(COPYFILE_XATTR | COPYFILE_ACL))
        error = CopyAttributes(job, from, to);
    if (error == 0 && job.has(COPYFILE_STAT) && !isModeKept)
        error = CopyMode(to, source, ownerKept);
    if (error == 0 && job.has(COPYFILE_STAT))
        error = CopyTimes(to, source);
    return error;
}
