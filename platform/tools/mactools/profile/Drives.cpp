// Disks by the kind of their controller.

#include "profile/Drives.h"

#include "profile/Facts.h"
#include "profile/Reports.h"

#include <array>
#include <map>

namespace profile {

namespace {

constexpr int64_t kSector = 512; // the unit of sizes, whatever the disk's own is
const std::string kBlocks = "sys/class/block/";

/// What udev knows is whole; the kernel cuts the names of SCSI disks, for which it takes those of SATA, too.
constexpr std::array<Fact, 7> kDrive { {
    { "device_model", "device/model" },
    { "device_model", "device/name" },
    { "device_serial", "device/serial" },
    { "device_serial", "serial" },
    { "device_revision", "device/firmware_rev" },
    { "device_revision", "device/rev" },
    { "device_revision", "device/fwrev" },
} };

/// Disks that hang on the same PCI device come together.
Item::List ByController(const HostTree& tree, const std::vector<std::string>& disks)
{
    std::map<std::string, Item::List> controllers;
    for (const std::string& disk : disks)
        controllers[PciAddressIn(tree, tree.resolved(kBlocks + disk))].push_back(DriveItem(tree, disk));
    Item::List items;
    for (const auto& [address, drives] : controllers) {
        Item item(address.empty() ? "" : PciName(tree, address));
        items.push_back(item.set("_name", "Generic Controller").set("_items", drives));
    }
    return items;
}

}

std::vector<std::string> DisksOn(const HostTree& tree, const std::string& mark)
{
    std::vector<std::string> disks;
    for (const std::string& name : tree.names(kBlocks)) {
        const std::string folder = kBlocks + name;
        if (!tree.has(folder + "/partition") && tree.text(folder + "/hidden") != "1"
            && tree.resolved(folder).find(mark) != std::string::npos)
            disks.push_back(name);
    }
    return disks;
}

Item DriveItem(const HostTree& tree, const std::string& disk)
{
    const std::string folder = kBlocks + disk + "/";
    const TextPairs known = tree.udev("b" + tree.text(folder + "dev"));
    const std::string page
        = tree.bytes(folder + "device/vpd_pg80"); // of the serial number, behind four bytes
    Item item;
    item.set("device_model", Trimmed(Unescaped(ValueOf(known, "ID_MODEL_ENC"))));
    item.set("device_revision", ValueOf(known, "ID_REVISION"));
    item.set("device_serial", page.size() > 4 ? Trimmed(page.substr(4)) : "");
    AddFacts(item, tree, folder, kDrive);
    item.set("device_serial", ValueOf(known, "ID_SERIAL_SHORT")); // which is another number for some
    item.set("_name", item.text("device_model")).set("_name", disk).set("bsd_name", disk);
    if (const std::optional<int64_t> sectors = tree.number(folder + "size"))
        item.set("size", DecimalSize(*sectors * kSector)).set("size_in_bytes", *sectors * kSector);
    item.set("removable_media", tree.text(folder + "removable") == "1" ? "yes" : "no");
    const std::string rotational = tree.text(folder + "queue/rotational");
    if (!rotational.empty())
        item.set("spsata_medium_type", rotational == "1" ? "Rotational" : "Solid State");
    return item;
}

Item::List NvmeItems(const HostTree& tree) { return ByController(tree, DisksOn(tree, "/nvme")); }

Item::List SataItems(const HostTree& tree) { return ByController(tree, DisksOn(tree, "/ata")); }

Item::List SasItems(const HostTree& tree) { return ByController(tree, DisksOn(tree, "/end_device-")); }

Item::List ParallelScsiItems(const HostTree& tree)
{
    std::vector<std::string> disks = DisksOn(tree, "/target");
    // The kernel counts most of what stores as SCSI; only where the wires are is there this folder.
    std::erase_if(disks,
        [&tree](const std::string& disk) { return !tree.has(kBlocks + disk + "/device/../spi_transport"); });
    return ByController(tree, disks);
}

} // namespace profile
