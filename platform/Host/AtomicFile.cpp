#include "AtomicFile.h"

#include "Descriptor.h"
#include "WriteAll.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kNameTries = 100;

/// A folder to work in and the name of a file there. The folder stays the same one should its path be
/// renamed.
struct Place {
    int folder;
    std::string name;
};

/// @return a name that begins like `name`, is hidden, fits any file system, and was not given out before.
std::string TemporaryName(const std::string& name)
{
    static std::atomic<unsigned> serial { 0 };
    const std::string suffix = '.' + std::to_string(getpid()) + '-' + std::to_string(serial++);
    return '.' + name.substr(0, NAME_MAX - 1 - suffix.size()) + suffix;
}

/// Writes and flushes the new file, open for writing; leaves it open.
int Fill(int file, const Place& target, const char* bytes, size_t size)
{
    struct stat old = {};
    const bool replaces
        = fstatat(target.folder, target.name.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(old.st_mode);
    if (replaces && fchmod(file, old.st_mode & 0777) != 0)
        return errno;
    if (const int error = WriteAll(file, bytes, size); error != 0)
        return error;
    return fsync(file) == 0 ? 0 : errno;
}

int Replace(const Place& target, const char* bytes, size_t size)
{
    std::string temporary;
    Descriptor file;
    for (int i = 0; i < kNameTries && !file; ++i) {
        temporary = TemporaryName(target.name);
        file = Descriptor(openat(
            target.folder, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (!file && errno != EEXIST && errno != EINTR)
            break;
    }
    if (!file)
        return errno;
    int error = Fill(file.get(), target, bytes, size);
    const int closeError = file.close();
    if (error == 0)
        error = closeError;
    if (error == 0 && renameat(target.folder, temporary.c_str(), target.folder, target.name.c_str()) != 0)
        error = errno;
    if (error != 0)
        unlinkat(target.folder, temporary.c_str(), 0);
    return error;
}

} // namespace

int FlushFolder(int folder) { return fsync(folder) == 0 || errno == EINVAL ? 0 : errno; }

int WriteFileAtomically(const std::string& path, const void* bytes, size_t size)
{
    if (bytes == nullptr && size > 0)
        return EINVAL;
    if (path.find('\0') != std::string::npos)
        return EINVAL;
    const size_t slash = path.rfind('/');
    const std::string folderPath = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (name.empty() || name == "." || name == "..")
        return path.empty() ? ENOENT : EISDIR;
    if (name.size() > NAME_MAX)
        return ENAMETOOLONG;
    const Descriptor folder(open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return errno;
    const int error = Replace({ folder.get(), name }, static_cast<const char*>(bytes), size);
    return error == 0 ? FlushFolder(folder.get()) : error;
}
