#pragma once

#include <Host/HostTree.h>
#include <IOKit/Registry.h>

namespace iokit {

/// The registry of a computer, as it is now: the root, the computer itself, below it each disk with a driver, its medium and
/// the partitions. It never fails: what cannot be found out, or has gone by then, is not in it.
Registry ReadHostRegistry(const HostTree& host = HostTree());

}
