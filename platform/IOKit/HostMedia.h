#pragma once

#include <IOKit/HostDrives.h>
#include <IOKit/Registry.h>

#include <string>

namespace iokit {

/// What a medium and its partitions have from their drive.
struct MediaTraits {
    std::string name; ///< of the whole
    unsigned unit; ///< the number in the BSD name
    bool isRemovable;
    bool isEjectable;
};

/// Of the driver of a block storage device: what it has read and written since the host started. Times are in ns.
cf::Owned<CFDictionaryRef> DriverProperties(const BlockDevice& disk);

/// Adds the medium of a drive, its partition table, where it has one, and the partitions in the order of their numbers.
void AddMedia(Registry& registry, Entry& driver, const BlockDevice& disk, const MediaTraits& traits);

}
