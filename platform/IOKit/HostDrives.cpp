#include <IOKit/HostDrives.h>

#include <Host/TextReading.h>

#include <algorithm>
#include <array>
#include <fnmatch.h>

namespace iokit {

namespace {

/// Where a fact of the device is found: the first that has it counts.
struct Fact {
    const char*
        property; ///< of udev's, which has names whole; the kernel cuts those of SCSI disks, SATA's among them
    std::array<const char*, 3> files {};
};

constexpr Fact kVendor { "ID_VENDOR_ENC", { "device/vendor" } };
constexpr Fact kProduct { "ID_MODEL_ENC", { "device/model", "device/name" } };
constexpr uint64_t kSizeWithoutDisc = 0x1fffff; // what the kernel supposes of a drive that cannot tell

constexpr Fact kRevision { "ID_REVISION", { "device/rev", "device/firmware_rev", "device/fwrev" } };

std::string FactOf(const BlockDevice& device, const Fact& fact)
{
    std::string text = device.udev(fact.property);
    for (const char* file : fact.files) {
        if (text.empty() && file != nullptr)
            text = device.text(file);
    }
    return text;
}

/// @param name in the kernel's list of block devices. @return the place; "" for one that is left out or has gone.
std::string PlaceOf(const HostTree& host, const std::string& name)
{
    if (fnmatch("ram+([0-9])", name.c_str(), FNM_EXTMATCH) == 0)
        return "";
    const std::string place = host.resolved("sys/block/" + name);
    return host.number(place + "/hidden") == 1 ? "" : place;
}

bool IsIdle(const BlockDevice& disk)
{
    return disk.folder().starts_with("sys/devices/virtual/block/") && disk.sectors().value_or(0) == 0;
}

}

bool Drive::isComposed() const
{
    return !parts.empty() || fnmatch("@(dm-|md)+([0-9])", name().c_str(), FNM_EXTMATCH) == 0;
}

bool Drive::hasMedium() const
{
    const uint64_t size = device.sectors().value_or(0);
    if (isOptical() && device.isKnownToUdev())
        return device.udev("ID_CDROM_MEDIA") == "1";
    return size > 0 && !(isOptical() && size == kSizeWithoutDisc);
}

/// In its place the kernel has a number for virtual disks, and the word "ATA" for what speaks that.
std::string Drive::vendor() const
{
    std::string name = FactOf(device, kVendor);
    return name.starts_with("0x") || name == "ATA" ? "" : name;
}

std::string Drive::product() const { return FactOf(device, kProduct); }

std::string Drive::revision() const { return FactOf(device, kRevision); }

std::string Drive::serialNumber() const
{
    const std::string page = device.bytes("device/vpd_pg80"); // a header of four bytes, then the text
    std::string number = page.size() > 4 ? CleanLine(std::string_view(page).substr(4)) : "";
    for (const char* file : { "device/serial", "serial" })
        number = number.empty() ? device.text(file) : number;
    return number.empty() ? device.udev("ID_SERIAL_SHORT") : number; // which is another number for some
}

std::string Drive::mediumType() const
{
    const auto rotates = device.number("queue/rotational");
    if (!rotates || isOptical() || bus->interconnect == "Virtual Interface")
        return "";
    const bool isTold = bus->interconnect == "SATA" || bus->interconnect == "SAS";
    if (*rotates == 0)
        return "Solid State";
    return isTold ? "Rotational" : "";
}

std::vector<Drive> HostDrives(const HostTree& host)
{
    std::vector<std::string> places;
    for (const std::string& name : host.names("sys/block"))
        places.push_back(PlaceOf(host, name));
    std::erase(places, "");
    std::sort(places.begin(), places.end(), ComesBefore);
    std::vector<Drive> drives;
    for (const std::string& place : places) {
        BlockDevice device(host, place);
        if (IsIdle(device))
            continue;
        const Bus* const bus = BusOf(device);
        drives.push_back({ std::move(device), bus, host.names(place + "/slaves") });
    }
    return drives;
}

}
