#pragma once

#include <IOKit/HostBlockDevice.h>
#include <IOKit/Registry.h>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace iokit {

/// What a medium and its partitions have from their drive.
struct MediaTraits {
    std::string name; ///< of the whole
    uint64_t unit; ///< the number in the BSD name
    std::optional<uint64_t> blockSize; ///< in bytes
    bool isRemovable;
    bool isEjectable;
};

/// The entries of media by the kernel's names, "sda2", for what is put together from them.
using MediaByName = std::unordered_map<std::string, Entry*>;

/// Adds the medium of a drive, its partition table, where it has one, and the partitions in the order of their numbers.
/// @param known receives them.
void AddMedia(
    Registry& registry, Entry& above, const BlockDevice& disk, const MediaTraits& traits, MediaByName& known);

}
