#pragma once

#include <IOKit/HostDevices.h>

namespace iokit {

/// Adds the Ethernet interfaces that are devices, wireless ones among them: each with a controller of its own, which has the
/// hardware's address, below the device that it belongs to. Where there are none, as in a container, the first one that leads
/// out of the system takes their place, directly below the computer; other interfaces that the kernel makes up, such as
/// bridges and tunnels, are no hardware.
///
/// One is the primary interface, whether connected or not: the first that is built in, has a wire and is nothing special to
/// the kernel; else the first wireless one that is built in; else the first of all. They count in the order in which the
/// kernel found them.
void AddHostNetwork(Registry& registry, Entry& computer, HostDevices& devices, const HostTree& host);

}
