#pragma once

#include <cstddef>

/// How many times this program has allocated memory with new so far.
size_t AllocationCount();
