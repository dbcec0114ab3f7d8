#include <IOKit/HostDrives.h>

#include <Host/TextReading.h>

#include <algorithm>
#include <array>
#include <fnmatch.h>

namespace iokit {

namespace {

constexpr const char* kDiskNames = "@(sd+([a-z])|vd+([a-z])|xvd+([a-z])|nvme+([0-9])n+([0-9])|mmcblk+([0-9])"
                                   "|sr+([0-9])|loop+([0-9]))";

constexpr std::string_view kInFile = "File";

/// The first row that fits counts.
constexpr std::array kBuses {
    Bus { "*/usb[0-9]*", "USB", "External", "IOBlockStorageServices" },
    Bus { "*/nvme*", "PCI-Express", "Internal", "IONVMeBlockStorageDevice" },
    Bus { "*/end_device-*", "SAS", "", "IOBlockStorageServices" },
    Bus { "*/ata[0-9]*", "SATA", "Internal", "IOAHCIBlockStorageDevice" },
    Bus { "*/mmc_host/*", "Secure Digital", "Internal", "AppleSDXCBlockStorageDevice" },
    Bus { "*/fw[0-9]*", "FireWire", "External", "IOBlockStorageServices" },
    Bus { "*/virtio[0-9]*", "Virtual Interface", "Internal", "IOBlockStorageDevice" },
    Bus { "*/virtual/block/loop*", "Virtual Interface", kInFile, "IODiskImageBlockStorageDeviceOutKernel" },
    Bus { "*", "SCSI", "", "IOBlockStorageServices" },
};

/// Where a fact of the device is found: the first that has it counts.
struct Fact {
    const char*
        property; ///< of udev's, which has names whole; the kernel cuts those of SCSI disks, SATA's among them
    std::array<const char*, 3> files {};
};

constexpr Fact kVendor { "ID_VENDOR_ENC", { "device/vendor" } };
constexpr Fact kProduct { "ID_MODEL_ENC", { "device/model", "device/name" } };
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
    if (fnmatch(kDiskNames, name.c_str(), FNM_EXTMATCH) != 0)
        return "";
    const std::string place = host.resolved("sys/block/" + name);
    const bool isIdleLoop = name.starts_with("loop") && host.bytes(place + "/loop/backing_file").empty();
    return isIdleLoop || host.number(place + "/hidden") == 1 ? "" : place;
}

}

BlockDevice::BlockDevice(const HostTree& host, std::string folder)
    : fHost(&host)
    , fFolder(std::move(folder))
    , fUdev(host.udev('b' + text("dev")))
{
}

std::optional<uint64_t> BlockDevice::number(const std::string& file) const
{
    const std::optional<int64_t> number = fHost->number(fFolder + '/' + file);
    return number && *number >= 0 ? std::optional<uint64_t>(*number) : std::nullopt;
}

std::string Drive::name() const { return device.folder().substr(device.folder().rfind('/') + 1); }

bool Drive::isImage() const { return bus->location == kInFile; }

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
    if (!rotates || isOptical() || isImage())
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
        const auto* const bus = std::find_if(kBuses.begin(), kBuses.end(),
            [&place](const Bus& one) { return fnmatch(one.place, place.c_str(), 0) == 0; });
        drives.push_back({ BlockDevice(host, place), bus });
    }
    return drives;
}

}
