#pragma once

#include <IOKit/HostDrives.h>
#include <IOKit/HostPci.h>
#include <IOKit/Registry.h>

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

namespace iokit {

/// The devices between the computer and its drives and network interfaces: controllers, hubs and the like, each once, however
/// many of those are below it.
class HostDevices {
public:
    /// @param host, as the registry and the computer's entry, has to outlive this.
    HostDevices(Registry& registry, Entry& computer, const HostTree& host);

    /// The entries that a drive lies below, which are made if they are not there yet. Never empty; several when the drive
    /// has several controllers.
    std::vector<Entry*> above(const Drive& drive);
    /// The entry that what belongs to a device lies below: the device's own where it has one.
    /// @param folder of the device. @param bus that it is on.
    Entry& at(const std::string& folder, const Bus& bus);

private:
    struct Level;
    static const std::array<Level, 5> kLevels;

    Entry& add(Entry& parent, const std::string& folder, const Bus& bus);
    Entry& imageController();

    Entry& addPci(Entry& parent, const std::string& folder, const Bus& bus);
    Entry& addUsb(Entry& parent, const std::string& folder, const Bus& bus);
    Entry& addAhciPort(Entry& parent, const std::string& folder, const Bus& bus);
    Entry& addNvmeController(Entry& parent, const std::string& folder, const Bus& bus);
    Entry& addFireWire(Entry& parent, const std::string& folder, const Bus& bus);

    Registry& fRegistry;
    Entry& fComputer;
    const HostTree& fHost;
    PciSurroundings fPci;
    std::unordered_map<std::string, Entry*> fEntries; ///< by folders: the entry there, or else the one above
};

/// Whether a device is inside the computer. @param above an entry that it lies below.
/// @return "Internal", "External" or, of what is no device, the medium's place; "" where nobody can tell.
std::string LocationOf(const Bus& bus, const Entry& above);

}
