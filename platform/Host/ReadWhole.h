#pragma once

#include <string>

/// Reads from a descriptor to the end.
/// @param bytes on calling, room for the largest acceptable content and one byte more; then what was read.
/// @return 0 or an errno; EFBIG when it does not fit.
int ReadWhole(int descriptor, std::string& bytes);
