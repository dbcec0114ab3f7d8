#include "util/Buffers.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

bool AdjustBufferSize(void** buffer, uint32_t* size, uint32_t wantedSize, bool keepContents)
{
    if (buffer == nullptr || size == nullptr)
        return true;
    if (*size >= wantedSize) {
        if (!keepContents && *buffer != nullptr)
            std::memset(*buffer, 0, *size);
        return true;
    }
    void* const larger = std::calloc(wantedSize, 1);
    if (larger == nullptr)
        return true;
    if (keepContents && *buffer != nullptr)
        std::memcpy(larger, *buffer, *size);
    std::free(*buffer);
    *buffer = larger;
    *size = wantedSize;
    return true;
}

bool SearchBuffer(
    const void* buffer, uint64_t length, const void* pattern, uint32_t patternLength, uint64_t* offset)
{
    if (buffer == nullptr || pattern == nullptr || patternLength > length)
        return false;
    const auto* const start = static_cast<const char*>(buffer);
    const auto* const wanted = static_cast<const char*>(pattern);
    const auto* const found = std::search(start, start + length, wanted, wanted + patternLength);
    if (found == start + length && patternLength > 0)
        return false;
    if (offset != nullptr)
        *offset = static_cast<uint64_t>(found - start);
    return true;
}
