#pragma once

#include "profile/Item.h"
#include <Host/HostTree.h>

#include <span>

namespace profile {

/// A fact that the host keeps in a file of its own.
struct Fact {
    const char* key; ///< of the report. Of several rows with the same one, the first that tells counts
    const char* file; ///< below the folder that the facts are about
    const char* before = ""; ///< goes in front of the content
    const char* behind = ""; ///< goes after it
};

/// Adds what is Told().
/// @param folder name in the tree with a slash at its end.
void AddFacts(Item& item, const HostTree& tree, const std::string& folder, std::span<const Fact> facts);

/// Sizes of disks and volumes, in powers of ten: "500.28 GB", "209.7 MB", "4 KB".
std::string DecimalSize(int64_t bytes);
/// Sizes of memory, in powers of two: "16 GB", "1.5 MB".
std::string BinarySize(int64_t bytes);
/// @return the memory installed, in bytes, in the best words that the host has for it.
std::optional<int64_t> PhysicalMemory(const HostTree& tree);

/// @param address of a PCI device, "0000:00:1f.2". @return its name, "pci8086,1c03" where nobody knows one.
std::string PciName(const HostTree& tree, const std::string& address);
/// @param path resolved, of anything. @return the PCI address of the device that it hangs on; "" when there is none.
std::string PciAddressIn(const HostTree& tree, const std::string& path);

} // namespace profile
