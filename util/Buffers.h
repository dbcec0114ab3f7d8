#pragma once

#include <cstdint>

/// Makes sure that a buffer has room. One that grows is a new block, zeroed but for the contents that are kept; the old one
/// is freed. One that is large enough and whose contents are not kept is zeroed from start to end.
/// @param buffer a block of malloc(), or null with a size of 0; receives the new one, which the caller frees with free().
/// @param size in bytes, updated. @param wantedSize in bytes.
/// @return true, always. When memory is short nothing has changed; the size tells.
bool AdjustBufferSize(void** buffer, uint32_t* size, uint32_t wantedSize, bool keepContents);

/// Looks for the first place of a pattern in a buffer. @param length, patternLength in bytes; an empty pattern is found at
/// the start. @param offset receives the place; may be null.
/// @return false, with the offset left as it is, where there is none, and for nulls.
bool SearchBuffer(
    const void* buffer, uint64_t length, const void* pattern, uint32_t patternLength, uint64_t* offset);
