#pragma once

#include <IOKit/HostAttributes.h>
#include <IOKit/HostRegistry.h>
#include <IOKit/Registry.h>
#include <IOKit/UdevRecord.h>

#include <string>

namespace iokit {

/// A disk or a partition, as the kernel and udev describe it.
struct BlockDevice {
    BlockDevice(const std::string& folder, const HostFolders& folders)
        : attributes(folder)
        , udev(folders.udev, attributes.text("dev"))
    {
    }

    Attributes attributes;
    UdevRecord udev;
};

/// Adds the host's disks, in the order of their places in the computer, which also numbers them: "disk0", "disk1", … Disks
/// in memory, those put together from others, and loop devices without a file are left out.
void AddHostDisks(Registry& registry, Entry& parent, const HostFolders& folders);

}
