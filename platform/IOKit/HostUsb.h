#pragma once

#include <Host/HostTree.h>
#include <IOKit/Registry.h>

#include <string>

namespace iokit {

/// Adds a USB device, which may be a hub.
/// @param folder among the kernel's devices. @return the entry; the parent when the device tells nothing, as one that goes.
Entry& AddUsbDevice(Registry& registry, Entry& parent, const HostTree& host, const std::string& folder);

}
