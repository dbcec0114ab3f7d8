// Disks by the kind of their controller.

#include "profile/Drives.h"

#include "profile/Facts.h"
#include "profile/Reports.h"

#include <IOKit/HostRegistry.h>

#include <map>

namespace profile {

namespace {

constexpr int64_t kSector = 512; // the unit of sizes, whatever the disk's own is

/// Drives of one kind; those that hang on the same PCI device come together.
Item::List ByController(
    const HostTree& tree, std::string_view interconnect, bool (*isKind)(const iokit::Drive&))
{
    const BSDNames names(tree);
    std::map<std::string, Item::List> controllers;
    for (const iokit::Drive& drive : iokit::HostDrives(tree)) {
        if (drive.bus->interconnect == interconnect && isKind(drive))
            controllers[PciAddressIn(tree, drive.device.folder())].push_back(DriveItem(drive, names));
    }
    Item::List items;
    for (const auto& [address, drives] : controllers) {
        Item item(address.empty() ? "" : PciName(tree, address));
        items.push_back(item.set("_name", "Generic Controller").set("_items", drives));
    }
    return items;
}

bool IsAny(const iokit::Drive&) { return true; }

/// The kernel counts most of what stores as SCSI; only where the wires are is there this folder.
bool IsOnScsiWires(const iokit::Drive& drive)
{
    return drive.device.host().has(drive.device.folder() + "/device/../spi_transport");
}

}

BSDNames::BSDNames(const HostTree& tree)
{
    const iokit::Registry registry = iokit::ReadHostRegistry(tree);
    for (const iokit::Entry& entry : registry.entries()) {
        const std::string name = entry.conformsTo("IOMedia") ? cf::TextOf(entry.property("BSD Name")) : "";
        if (!name.empty())
            fNames[registry.deviceFile(name)] = name;
    }
}

std::string BSDNames::of(const std::string& node) const
{
    const auto known = fNames.find(node);
    return known != fNames.end() ? known->second : "";
}

Item DriveItem(const iokit::Drive& drive, const BSDNames& names)
{
    Item item;
    item.set("device_model", drive.product());
    item.set("device_revision", drive.revision());
    item.set("device_serial", drive.serialNumber());
    item.set("_name", drive.product())
        .set("_name", drive.name())
        .set("bsd_name", names.of(drive.device.node()));
    if (const std::optional<uint64_t> sectors = drive.device.number("size")) {
        const auto bytes = static_cast<int64_t>(*sectors) * kSector;
        item.set("size", DecimalSize(bytes)).set("size_in_bytes", bytes);
    }
    item.set("removable_media", drive.isRemovable() ? "yes" : "no");
    return item.set("spsata_medium_type", drive.mediumType());
}

Item::List NvmeItems(const HostTree& tree) { return ByController(tree, "PCI-Express", IsAny); }

Item::List SataItems(const HostTree& tree) { return ByController(tree, "SATA", IsAny); }

Item::List SasItems(const HostTree& tree) { return ByController(tree, "SAS", IsAny); }

Item::List ParallelScsiItems(const HostTree& tree) { return ByController(tree, "SCSI", IsOnScsiWires); }

} // namespace profile
