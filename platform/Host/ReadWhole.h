#pragma once

#include <cstddef>
#include <string>

/// Reads from a descriptor to the end.
/// @param limit the largest acceptable content in bytes. @param bytes receives what was read.
/// @return 0 or an errno; EFBIG for more than the limit.
int ReadWhole(int descriptor, size_t limit, std::string& bytes);
