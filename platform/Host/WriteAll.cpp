#include "WriteAll.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <unistd.h>

int WriteAll(int descriptor, const char* bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(descriptor, bytes, std::min<size_t>(size, SSIZE_MAX));
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return errno;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return 0;
}
