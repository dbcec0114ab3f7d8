#pragma once

#include <Host/HostTree.h>
#include <IOKit/Registry.h>

namespace iokit {

/// Adds the HostDrives(), and numbers their media in that order: "disk0", "disk1", …
void AddHostDisks(Registry& registry, Entry& parent, const HostTree& host);

}
