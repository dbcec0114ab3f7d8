#pragma once

#include <IOKit/HostBuses.h>

#include <string>
#include <vector>

namespace iokit {

/// A device for media, with what it tells of itself.
struct Drive {
    BlockDevice device;
    const Bus* bus; ///< never null
    /// The kernel's names of the disks and partitions that it is put together from: "sda2", "dm-0". None for a device.
    std::vector<std::string> parts;

    std::string name() const { return device.name(); }
    bool isImage() const { return bus->location == kInFile; } ///< a file takes its place
    bool isOptical() const { return name().starts_with("sr"); }
    bool isRemovable() const { return device.number("removable") == 1; }
    bool isComposed() const; ///< a volume of the device mapper or a RAID, even if its parts cannot be seen
    bool hasMedium() const;

    std::string vendor() const;
    std::string product() const;
    std::string revision() const; ///< of its firmware
    std::string serialNumber() const;
    /// "Solid State" or "Rotational"; "" where the kernel cannot know: where no disk tells that it does not rotate, it takes
    /// it to.
    std::string mediumType() const;
};

/// The host's drives, in the order of their places in the computer. Disks of the kernel's own memory, paths to a disk that
/// is shown once, and virtual ones that hold nothing, such as loop devices without a file, are left out.
std::vector<Drive> HostDrives(const HostTree& host);

}
