#include "codesign/Digest.h"

#include <cerrno>
#include <cstdint>
#include <nettle/sha1.h>
#include <nettle/sha2.h>
#include <unistd.h>
#include <vector>

namespace codesign {

namespace {

constexpr size_t kPieceSize = 65536;

template <class Update> int ReadPieces(int file, Update update)
{
    std::vector<uint8_t> piece(kPieceSize);
    for (;;) {
        const ssize_t count = read(file, piece.data(), piece.size());
        if (count == 0)
            return 0;
        if (count < 0 && errno != EINTR)
            return errno;
        if (count > 0)
            update(static_cast<size_t>(count), piece.data());
    }
}

uint8_t* Room(std::string& digest, size_t size)
{
    digest.resize(size);
    return reinterpret_cast<uint8_t*>(digest.data());
}

}

int HashFile(int file, size_t size, std::string& digest)
{
    static_assert(kSha1Size == SHA1_DIGEST_SIZE && kSha256Size == SHA256_DIGEST_SIZE);
    if (size == kSha1Size) {
        sha1_ctx context;
        sha1_init(&context);
        const int error
            = ReadPieces(file, [&](size_t count, auto* bytes) { sha1_update(&context, count, bytes); });
        sha1_digest(&context, size, Room(digest, size));
        return error;
    }
    sha256_ctx context;
    sha256_init(&context);
    const int error
        = ReadPieces(file, [&](size_t count, auto* bytes) { sha256_update(&context, count, bytes); });
    sha256_digest(&context, size, Room(digest, size));
    return error;
}

}
