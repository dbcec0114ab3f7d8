#include <sys/stdio.h>

#include <cerrno>

int renameatx_np(int fromfd, const char* from, int tofd, const char* to, unsigned int flags)
{
    unsigned int hostFlags = 0;
    switch (flags) {
    case 0:
        break;
    case RENAME_SWAP:
        hostFlags = RENAME_EXCHANGE;
        break;
    case RENAME_EXCL:
        hostFlags = RENAME_NOREPLACE;
        break;
    default:
        errno = EINVAL;
        return -1;
    }
    const int result = renameat2(fromfd, from, tofd, to, hostFlags);
    if (result != 0 && errno == ENOSYS)
        errno = ENOTSUP;
    return result;
}
