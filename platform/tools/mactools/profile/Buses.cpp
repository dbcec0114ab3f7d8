// PCI, Thunderbolt, FireWire and Fibre Channel.

#include "profile/Facts.h"
#include "profile/Reports.h"

#include <Host/Computer.h>

#include <array>

namespace profile {

namespace {

constexpr std::array<Fact, 7> kCard { {
    { "sppci_vendor-id", "vendor" },
    { "sppci_device-id", "device" },
    { "sppci_subsystem-vendor-id", "subsystem_vendor" },
    { "sppci_subsystem-id", "subsystem_device" },
    { "sppci_revision-id", "revision" },
    { "sppci_link-width", "current_link_width", "x" },
    { "sppci_link-speed", "current_link_speed" },
} };
constexpr std::array<Fact, 6> kThunderbolt { {
    { "device_name_key", "device_name" },
    { "vendor_name_key", "vendor_name" },
    { "device_id_key", "device" },
    { "vendor_id_key", "vendor" },
    { "switch_uid_key", "unique_id" },
    { "switch_version_key", "nvm_version" },
} };
constexpr std::array<Fact, 4> kFireWire { {
    { "device_manufacturer", "vendor_name" },
    { "device_model", "model_name" },
    { "device_guid", "guid" },
    { "device_specid", "specifier_id" },
} };
constexpr std::array<Fact, 5> kFibreChannel { {
    { "spfc_port_wwn", "port_name" },
    { "spfc_node_wwn", "node_name" },
    { "spfc_link_status", "port_state" },
    { "spfc_speed", "speed" },
    { "device_model", "symbolic_name" },
} };

/// @param folder of the devices, and @param name of one there. @param nameFile its file that holds people's name for it.
Item Device(const HostTree& tree, const std::string& folder, const std::string& name, const char* nameFile,
    std::span<const Fact> facts)
{
    const std::string device = folder + name + "/";
    Item item(Told(tree.text(device + nameFile)));
    item.set("_name", name);
    AddFacts(item, tree, device, facts);
    return item;
}

/// Switches are called "0-0", the one in the computer, "0-1", "0-301"; what they offer has a point or a colon in its name.
bool IsSwitch(const std::string& name)
{
    return name.find_first_not_of("0123456789abcdef-") == std::string::npos;
}

Item Card(const HostTree& tree, const std::string& address)
{
    const std::string folder = "sys/bus/pci/devices/" + address + "/";
    const TextPairs known = tree.udev("+pci:" + address);
    Item item(PciName(tree, address));
    item.set("_name", address).set("sppci_name", item.text("_name"));
    item.set("sppci_device_type", ValueOf(known, "ID_PCI_SUBCLASS_FROM_DATABASE"));
    item.set("sppci_vendor", ValueOf(known, "ID_VENDOR_FROM_DATABASE"));
    item.set("sppci_slot_name", address);
    item.set("sppci_driver_installed", tree.has(folder + "driver") ? "Yes" : "No");
    AddFacts(item, tree, folder, kCard);
    return item;
}

}

Item::List PciItems(const HostTree& tree)
{
    Item::List items;
    for (const std::string& address : tree.names("sys/bus/pci/devices")) {
        const bool isBridge = tree.text("sys/bus/pci/devices/" + address + "/class").starts_with("0x06");
        if (!isBridge)
            items.push_back(Card(tree, address));
    }
    return items;
}

Item::List ThunderboltItems(const HostTree& tree)
{
    const std::string folder = "sys/bus/thunderbolt/devices/";
    const std::vector<std::string> names = tree.names(folder);
    Item::List buses;
    for (const std::string& bus : names) {
        if (!IsSwitch(bus) || !bus.ends_with("-0"))
            continue;
        Item::List devices;
        for (const std::string& name : names) {
            if (IsSwitch(name) && name != bus && name.starts_with(bus.substr(0, bus.size() - 1)))
                devices.push_back(Device(tree, folder, name, "device_name", kThunderbolt));
        }
        buses.push_back(Device(tree, folder, bus, "device_name", kThunderbolt).set("_items", devices));
    }
    return buses;
}

Item::List FireWireItems(const HostTree& tree)
{
    const std::string folder = "sys/bus/firewire/devices/";
    Item::List items;
    for (const std::string& name : tree.names(folder)) {
        if (name.find('.') == std::string::npos) // a unit within a device
            items.push_back(Device(tree, folder, name, "model_name", kFireWire));
    }
    return items;
}

Item::List FibreChannelItems(const HostTree& tree)
{
    const std::string folder = "sys/class/fc_host/";
    Item::List items;
    for (const std::string& name : tree.names(folder))
        items.push_back(Device(tree, folder, name, "symbolic_name", kFibreChannel));
    return items;
}

} // namespace profile
