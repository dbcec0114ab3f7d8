#pragma once

#include "host/HostTree.h"
#include "profile/Item.h"

namespace profile {

/// The disks, without their partitions, that hang on something. @return names in sys/class/block.
/// @param mark what their place in sys/devices has in it, "/usb" for one.
std::vector<std::string> DisksOn(const HostTree& tree, const std::string& mark);

/// A disk with model, serial number, firmware and size. Its "bsd_name" is the host's name, "sda".
Item DriveItem(const HostTree& tree, const std::string& disk);

} // namespace profile
