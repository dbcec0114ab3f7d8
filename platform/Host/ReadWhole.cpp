#include "ReadWhole.h"

#include <unistd.h>

#include <array>
#include <cerrno>

int ReadWhole(int descriptor, size_t limit, std::string& bytes)
{
    // Piece by piece: most of what is read is far shorter than it may be.
    std::array<char, 4096> piece;
    bytes.clear();
    for (;;) {
        const ssize_t count = read(descriptor, piece.data(), piece.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno;
        if (count == 0)
            return 0;
        bytes.append(piece.data(), static_cast<size_t>(count));
        if (bytes.size() > limit)
            return EFBIG;
    }
}
