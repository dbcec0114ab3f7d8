#pragma once

#include <Host/HostTree.h>
#include <IOKit/Registry.h>

#include <string>

namespace iokit {

/// What tells of PCI devices in other places than theirs.
class PciSurroundings {
public:
    /// @param host has to outlive this.
    explicit PciSurroundings(const HostTree& host);

    const HostTree& host() const { return *fHost; }
    /// @param address "0000:03:00.0". @return the slot's name, "Slot-1"; "" for a device that is in none.
    std::string slot(const std::string& address) const;
    bool hasThunderbolt() const { return fHasThunderbolt; }

private:
    const HostTree* fHost;
    TextPairs fSlots; ///< names by addresses without the function
    bool fHasThunderbolt;
};

/// Adds a PCI device. What is plugged in outside the computer, through a port that carries PCI, is marked "IOPCITunnelled";
/// with Thunderbolt, it also has the path of that port.
/// @param folder among the kernel's devices. @return the entry; the parent when the device tells nothing, as one that goes.
Entry& AddPciDevice(
    Registry& registry, Entry& parent, const std::string& folder, const PciSurroundings& surroundings);

}
