#pragma once

#include <IOKit/HostBlockDevice.h>
#include <IOKit/Registry.h>

namespace iokit {

/// Gives the driver of a disk its "Statistics": what was read and written since the host started, as it is whenever it is
/// asked for; of a disk that has gone, as it was first. Times are in ns. What the kernel does not count is not in it: errors,
/// retries and latencies.
void KeepStatistics(Entry& driver, const BlockDevice& disk);

}
