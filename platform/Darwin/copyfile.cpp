#include "copyfile.h"

#include "CopyItem.h"

#include <Host/Descriptor.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <new>
#include <string_view>

struct _copyfile_state {
    off_t copied = 0;
    bool wasCloned = false;
};

namespace {

constexpr copyfile_flags_t kCloneFlags = COPYFILE_CLONE | COPYFILE_CLONE_FORCE;
constexpr copyfile_flags_t kKnownFlags = COPYFILE_ALL | COPYFILE_RECURSIVE | COPYFILE_EXCL | COPYFILE_NOFOLLOW
    | COPYFILE_MOVE | COPYFILE_UNLINK | kCloneFlags | COPYFILE_DATA_SPARSE;

bool IsFolder(const std::string& path, bool follow)
{
    struct stat info = {};
    return fstatat(AT_FDCWD, path.c_str(), &info, follow ? 0 : AT_SYMLINK_NOFOLLOW) == 0
        && S_ISDIR(info.st_mode);
}

/// The last name of a path, or "" where the path means what is in a folder: "/", "folder/", ".", "..".
std::string_view LastName(std::string_view path)
{
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return name == "." || name == ".." ? std::string_view() : name;
}

/// The path the copy gets: `to`, or inside it where it is a folder that a recursive copy may go into.
std::string TargetPath(const CopyJob& job, std::string_view from, const std::string& to)
{
    const std::string_view name = LastName(from);
    const bool goesInside = job.has(COPYFILE_RECURSIVE) && !job.has(COPYFILE_EXCL) && !name.empty()
        && IsFolder(to, !job.has(COPYFILE_NOFOLLOW_DST));
    return goesInside ? to + '/' + std::string(name) : to;
}

std::string ParentPath(std::string path)
{
    path.erase(path.find_last_not_of('/') + 1);
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

/// Looks for the original among the folders that the copy lies in, before anything is written.
/// @return EINVAL when it is one of them.
int CheckIsOutside(const struct stat& source, const CopyPlace& to)
{
    constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    Descriptor folder(open(to.name, flags | (to.follow ? 0 : O_NOFOLLOW)));
    if (!folder)
        folder = Descriptor(open(ParentPath(to.name).c_str(), flags));
    struct stat previous = {};
    // A folder that may not be looked into ends the search; the copying itself notices then.
    while (folder) {
        struct stat info = {};
        if (fstat(folder.get(), &info) != 0)
            return errno;
        if (IsSameFile(info, source))
            return EINVAL;
        if (IsSameFile(info, previous))
            return 0; // the root's parent is itself
        previous = info;
        folder = Descriptor(openat(folder.get(), "..", flags));
    }
    return 0;
}

int Copy(CopyJob& job, const char* from, const char* to)
{
    const CopyPlace original { AT_FDCWD, from, !job.has(COPYFILE_NOFOLLOW_SRC) };
    struct stat source = {};
    if (fstatat(AT_FDCWD, from, &source, original.follow ? 0 : AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    const std::string target = TargetPath(job, from, to);
    const CopyPlace copy { AT_FDCWD, target.c_str(), !job.has(COPYFILE_NOFOLLOW_DST) };
    if (!S_ISDIR(source.st_mode))
        return CopyItem(job, original, copy, static_cast<unsigned char>(IFTODT(source.st_mode)));
    if (job.has(COPYFILE_CLONE_FORCE))
        return ENOTSUP;
    const int error = job.has(COPYFILE_RECURSIVE) ? CheckIsOutside(source, copy) : 0;
    return error == 0 ? CopyFolder(job, original, copy) : error;
}

copyfile_flags_t WithImplied(copyfile_flags_t flags)
{
    const bool clones = (flags & kCloneFlags) != 0;
    return clones ? flags | COPYFILE_EXCL | COPYFILE_ALL | COPYFILE_NOFOLLOW_SRC : flags;
}

int CopyAndTell(const char* from, const char* to, copyfile_state_t state, copyfile_flags_t flags)
{
    if (from == nullptr || to == nullptr || (flags & ~kKnownFlags) != 0)
        return EINVAL;
    CopyJob job { .flags = WithImplied(flags), .isRoot = geteuid() == 0 };
    const int error = Copy(job, from, to);
    if (state != nullptr)
        *state = { job.copied, job.has(kCloneFlags) && job.cloned == job.copied };
    if (error == 0 && job.has(COPYFILE_MOVE))
        (void)!std::remove(from);
    return error;
}

} // namespace

int copyfile(const char* from, const char* to, copyfile_state_t state, copyfile_flags_t flags)
{
    int error = ENOMEM;
    try {
        error = CopyAndTell(from, to, state, flags);
    } catch (const std::bad_alloc&) { // said already
    }
    if (error == 0)
        return 0;
    errno = error;
    return -1;
}

copyfile_state_t copyfile_state_alloc() { return new (std::nothrow) _copyfile_state; }

int copyfile_state_free(copyfile_state_t state)
{
    delete state;
    return 0;
}

int copyfile_state_get(copyfile_state_t state, uint32_t flag, void* dst)
{
    const bool isKnown = flag == COPYFILE_STATE_COPIED || flag == COPYFILE_STATE_WAS_CLONED;
    if (state == nullptr || dst == nullptr || !isKnown) {
        errno = EINVAL;
        return -1;
    }
    if (flag == COPYFILE_STATE_COPIED)
        std::memcpy(dst, &state->copied, sizeof(state->copied));
    else
        std::memcpy(dst, &state->wasCloned, sizeof(state->wasCloned));
    return 0;
}
