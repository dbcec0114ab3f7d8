#include <sys/xattr.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <linux/limits.h>

namespace {

constexpr const char kUsersNames[] = "user.";

int Fail(int error)
{
    errno = error;
    return -1;
}

}

int setxattr(
    const char* path, const char* name, const void* value, size_t size, uint32_t position, int options)
{
    if (path == nullptr || name == nullptr)
        return Fail(EFAULT);
    if (position != 0 || (options & ~XATTR_NOFOLLOW) != 0)
        return Fail(EINVAL);
    char hostName[XATTR_NAME_MAX + 1] = "user.";
    const size_t length = std::strlen(name);
    if (length > XATTR_NAME_MAX - (sizeof kUsersNames - 1))
        return Fail(ENAMETOOLONG);
    std::memcpy(hostName + sizeof kUsersNames - 1, name, length + 1);
    return (options & XATTR_NOFOLLOW) != 0 ? ::lsetxattr(path, hostName, value, size, 0)
                                           : ::setxattr(path, hostName, value, size, 0);
}
