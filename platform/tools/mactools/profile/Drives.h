#pragma once

#include "profile/Item.h"

#include <IOKit/HostDrives.h>

#include <map>
#include <string>

namespace profile {

/// The names that the device registry gives a host's disks and partitions.
class BSDNames {
public:
    explicit BSDNames(const HostTree& tree);

    /// @param node the host's file, "/dev/sda". @return "disk0"; "" where the registry has no such medium.
    std::string of(const std::string& node) const;

private:
    std::map<std::string, std::string> fNames;
};

/// A drive with model, serial number, firmware and size.
Item DriveItem(const iokit::Drive& drive, const BSDNames& names);

} // namespace profile
