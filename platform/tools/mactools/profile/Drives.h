#pragma once

#include "profile/Item.h"

#include <IOKit/HostDrives.h>

namespace profile {

/// A drive with model, serial number, firmware and size. Its "bsd_name" is the host's name, "sda".
Item DriveItem(const iokit::Drive& drive);

} // namespace profile
