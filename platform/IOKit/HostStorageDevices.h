#pragma once

#include <IOKit/HostDrives.h>
#include <IOKit/Registry.h>

#include <cstdint>
#include <optional>
#include <string>

namespace iokit {

/// What a drive tells of itself, read once.
struct DriveFacts {
    std::string vendor;
    std::string product;
    std::string revision;
    std::string serialNumber;
    std::optional<uint64_t> blockSize; ///< in bytes
    std::string location; ///< "Internal" and so on; "" where nobody can tell

    std::string mediaName() const; ///< "Heron Pocket Media"
};

/// @param above an entry that the drive lies below.
DriveFacts FactsOf(const Drive& drive, const Entry& above);

/// Adds what stands for the drive on its bus, and below that its block storage device.
/// @return the latter, for a driver.
Entry& AddStorageDevice(Registry& registry, Entry& above, const Drive& drive, const DriveFacts& facts);

}
