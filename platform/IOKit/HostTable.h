#pragma once

#include <IOKit/HostBlockDevice.h>

#include <cstdint>
#include <string>
#include <vector>

namespace iokit {

/// What a partition table says of a partition; "" for what it does not say.
struct TableEntry {
    uint64_t number = 0;
    uint64_t start = 0; ///< in sectors of 512 bytes
    std::string type {}; ///< as udev has it
    std::string name {};
    std::string uuid {};
};

struct PartitionTable {
    std::string type {}; ///< as udev has it: "gpt", "dos", "mac"; "" for none that is known
    std::string uuid {};
    std::vector<TableEntry> entries {};

    /// @return the entry; one that says no more than the number when there is none that begins there.
    TableEntry at(uint64_t number, uint64_t start) const;
};

/// The partition table on a disk: as udev knows it; where udev does not know the disk, from the disk itself, when this user
/// may read it. Of the entries that is none of udev's, which keeps them with the partitions.
PartitionTable TableOf(const BlockDevice& disk);

}
