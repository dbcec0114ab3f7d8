#pragma once

#include "profile/Item.h"
#include <Host/HostTree.h>

namespace profile {

// What a system profile says of each kind of things, under the keys that a Mac's has. Nothing is invented: what the host
// does not tell is left out, and where it has nothing of the kind the list is empty.

// Hardware.cpp
Item::List HardwareItems(const HostTree& tree);
Item::List MemoryItems(const HostTree& tree);
// Power.cpp
Item::List PowerItems(const HostTree& tree);
// Displays.cpp: graphics cards, each with its displays
Item::List DisplayItems(const HostTree& tree);
// Buses.cpp
Item::List PciItems(const HostTree& tree);
Item::List ThunderboltItems(const HostTree& tree);
Item::List FireWireItems(const HostTree& tree);
Item::List FibreChannelItems(const HostTree& tree);
// Drives.cpp: controllers, each with its drives
Item::List NvmeItems(const HostTree& tree);
Item::List ParallelScsiItems(const HostTree& tree);
Item::List SasItems(const HostTree& tree);
Item::List SataItems(const HostTree& tree);
// Usb.cpp: buses, each with the tree of its devices
Item::List UsbItems(const HostTree& tree);
// Software.cpp
Item::List StorageItems(const HostTree& tree);
Item::List SoftwareItems(const HostTree& tree);
// Bundles.cpp, which looks at the start-up volume and the home folder
Item::List ExtensionItems(const HostTree& tree);
Item::List ApplicationItems(const HostTree& tree);
// Logs.cpp
Item::List LogItems(const HostTree& tree);
Item::List DiagnosticItems(const HostTree& tree);

} // namespace profile
