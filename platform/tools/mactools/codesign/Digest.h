#pragma once

#include <cstddef>
#include <string>

namespace codesign {

constexpr size_t kSha1Size = 20; ///< bytes
constexpr size_t kSha256Size = 32;

/// Hashes a file from the place where it is read next to its end, in pieces.
/// @param size of the digest, which tells the algorithm. @param digest receives it. @return 0 or an errno.
int HashFile(int file, size_t size, std::string& digest);

}
