#pragma once

#include <Host/HostTree.h>
#include <IOKit/Registry.h>

namespace iokit {

/// The registry of a computer, as it is now, in both planes: the root, the computer itself, below it the controllers that
/// have drives, each drive with a driver, its medium and the partitions, what is put together from those, and the network
/// interfaces. It never fails: what cannot be found out, or has gone by then, is not in it.
/// @param firstID of its entries.
Registry ReadHostRegistry(const HostTree& host = HostTree(), uint64_t firstID = Registry::kFirstID);

}
