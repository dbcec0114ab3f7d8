#include "ReadWhole.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

int ReadWhole(int descriptor, std::string& bytes)
{
    size_t used = 0;
    while (used < bytes.size()) {
        const ssize_t count = read(descriptor, bytes.data() + used, bytes.size() - used);
        if (count < 0 && errno != EINTR)
            return errno;
        if (count == 0) {
            bytes.resize(used);
            return 0;
        }
        used += static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
    return EFBIG;
}
