#include <IOKit/HostDevices.h>

#include <IOKit/HostScsi.h>
#include <IOKit/HostUsb.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <fnmatch.h>
#include <optional>

namespace iokit {

namespace {

constexpr std::string_view kDevices = "sys/devices/";
constexpr const char* kControllerName = "nvme+([0-9])";

std::string NameOf(const std::string& folder) { return folder.substr(folder.rfind('/') + 1); }

bool IsController(const std::string& name)
{
    return fnmatch(kControllerName, name.c_str(), FNM_EXTMATCH) == 0;
}

/// @return the folder of the device that the disk belongs to. A disk with several controllers belongs to none of them: it
/// lies in a folder that has links to them, which are the answer then.
std::vector<std::string> OwnersOf(const BlockDevice& disk)
{
    const std::string owner = disk.ownerFolder();
    if (owner.find("/nvme-subsystem/") == std::string::npos)
        return { owner };
    std::vector<std::string> owners;
    for (const std::string& name : disk.host().names(owner)) {
        if (IsController(name))
            owners.push_back(disk.host().resolved(std::string(owner).append("/").append(name)));
    }
    return owners.empty() ? std::vector { owner } : owners;
}

}

/// A kind of device that a Mac shows, too, by the name of its folder.
struct HostDevices::Level {
    const char* name;
    Entry& (HostDevices::*add)(Entry& parent, const std::string& folder, const Bus& bus);
};

const std::array<HostDevices::Level, 5> HostDevices::kLevels {
    Level { "+([0-9a-f]):[0-9a-f][0-9a-f]:[0-9a-f][0-9a-f].[0-7]", &HostDevices::addPci },
    Level { "+([0-9])-+([0-9.])", &HostDevices::addUsb },
    Level { "ata+([0-9])", &HostDevices::addAhciPort },
    Level { kControllerName, &HostDevices::addNvmeController },
    Level { "fw+([0-9])", &HostDevices::addFireWire },
};

HostDevices::HostDevices(Registry& registry, Entry& computer, const HostTree& host)
    : fRegistry(registry)
    , fComputer(computer)
    , fHost(host)
    , fPci(host)
{
}

std::vector<Entry*> HostDevices::above(const Drive& drive)
{
    if (drive.bus->location == kInFile || drive.bus->location == kInMemory)
        return { &imageController() };
    std::vector<Entry*> entries;
    for (const std::string& owner : OwnersOf(drive.device))
        entries.push_back(&at(owner, *drive.bus));
    return entries;
}

Entry& HostDevices::at(const std::string& folder, const Bus& bus)
{
    Entry* entry = &fComputer;
    size_t end = kDevices.size();
    while (folder.starts_with(kDevices) && end < folder.size()) {
        end = std::min(folder.find('/', end + 1), folder.size());
        const std::string above = folder.substr(0, end);
        const auto [place, isNew] = fEntries.try_emplace(above, entry);
        if (isNew)
            place->second = &add(*entry, above, bus);
        entry = place->second;
    }
    return *entry;
}

Entry& HostDevices::add(Entry& parent, const std::string& folder, const Bus& bus)
{
    const std::string name = NameOf(folder);
    const auto* const level = std::find_if(kLevels.begin(), kLevels.end(),
        [&name](const Level& one) { return fnmatch(one.name, name.c_str(), FNM_EXTMATCH) == 0; });
    return level != kLevels.end() ? (this->*level->add)(parent, folder, bus) : parent;
}

Entry& HostDevices::imageController()
{
    Entry*& controller = fEntries["images"];
    if (controller == nullptr)
        controller = &fRegistry.add(fComputer, "IOHDIXController", "IOHDIXController", "", nullptr);
    return *controller;
}

Entry& HostDevices::addPci(Entry& parent, const std::string& folder, const Bus& /*bus*/)
{
    return AddPciDevice(fRegistry, parent, folder, fPci);
}

Entry& HostDevices::addUsb(Entry& parent, const std::string& folder, const Bus& /*bus*/)
{
    return AddUsbDevice(fRegistry, parent, fHost, folder);
}

/// The kernel counts the ports of all controllers in one, and beside it those of each from 1.
Entry& HostDevices::addAhciPort(Entry& parent, const std::string& folder, const Bus& bus)
{
    const auto port = fHost.number(folder + "/ata_port/" + NameOf(folder) + "/port_no");
    if (!port || *port < 1 || bus.interconnect != "SATA")
        return parent;
    const std::string number = std::to_string(*port - 1);
    Properties protocol;
    protocol.text("Physical Interconnect", bus.interconnect)
        .text("Physical Interconnect Location", LocationOf(bus, parent));
    return fRegistry.add(parent, "AppleAHCIPort", "PRT" + number, number,
        Properties().dictionary("Protocol Characteristics", protocol).take());
}

Entry& HostDevices::addNvmeController(Entry& parent, const std::string& folder, const Bus& bus)
{
    Properties properties;
    properties.text("Model Number", fHost.text(folder + "/model"))
        .text("Serial Number", fHost.text(folder + "/serial"))
        .text("Firmware Revision", fHost.text(folder + "/firmware_rev"))
        .text("Physical Interconnect", bus.interconnect)
        .text("Physical Interconnect Location", LocationOf(bus, parent));
    return fRegistry.add(parent, "IONVMeController", "IONVMeController", "", properties.take());
}

Entry& HostDevices::addFireWire(Entry& parent, const std::string& folder, const Bus& /*bus*/)
{
    const std::optional<uint64_t> guid = WorldWideNumber(fHost.text(folder + "/guid"));
    if (!guid)
        return parent;
    Properties properties;
    properties.number("GUID", guid)
        .text("FireWire Vendor Name", fHost.text(folder + "/vendor_name"))
        .text("FireWire Product Name", fHost.text(folder + "/model_name"));
    return fRegistry.add(parent, "IOFireWireDevice", "IOFireWireDevice", "", properties.take());
}

std::string LocationOf(const Bus& bus, const Entry& above)
{
    const Entry* usb = nullptr;
    for (const Entry* one = &above; one != nullptr; one = one->parent()) {
        if (IsTrue(one->property("IOPCITunnelled")))
            return "External";
        if (usb == nullptr && one->conformsTo("IOUSBHostDevice"))
            usb = one;
    }
    const bool isBuiltIn = usb != nullptr && usb->property("non-removable") != nullptr;
    return isBuiltIn ? "Internal" : std::string(bus.location);
}

}
