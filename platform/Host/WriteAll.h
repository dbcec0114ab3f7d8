#pragma once

#include <cstddef>

/// Writes all the bytes to a descriptor that waits, however many calls that takes.
/// @param bytes not null unless `size` is 0. @param size in bytes. @return 0 or the errno.
int WriteAll(int descriptor, const char* bytes, size_t size);
