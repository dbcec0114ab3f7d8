#pragma once

#include <array>
#include <cstdint>

using HfsUUID = std::array<uint8_t, 8>;

enum class HfsResult { Done, NotHFS, Failed };

/// Gives an HFS or HFS+ volume another UUID, in its header and in the header's copy at the end; an HFS+ volume in an HFS one
/// is the one that counts. A volume with only one of the two headers is damaged and left as it is.
/// @param file a device or an image, open for reading and writing. @return Failed with errno.
HfsResult SetHfsUUID(int file, const HfsUUID& uuid);
