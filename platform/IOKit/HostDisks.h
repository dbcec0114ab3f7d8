#pragma once

#include <IOKit/HostDevices.h>

namespace iokit {

/// Adds the HostDrives() with the devices that they hang on, and their media with the host's files for them. The BSD names
/// are the kernel's numbers of the disks, which go to no other disk while the computer runs; kernels before Linux 5.15 have
/// none, and there the media count in the order of the drives, for as long as no drive comes or goes.
void AddHostDisks(Registry& registry, Entry& computer, HostDevices& devices, const HostTree& host);

}
