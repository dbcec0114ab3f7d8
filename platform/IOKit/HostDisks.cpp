#include <IOKit/HostDisks.h>

#include <IOKit/HostMedia.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fnmatch.h>
#include <vector>

namespace iokit {

namespace {

constexpr const char* kDiskNames = "@(sd+([a-z])|vd+([a-z])|xvd+([a-z])|nvme+([0-9])n+([0-9])|mmcblk+([0-9])"
                                   "|sr+([0-9])|loop+([0-9]))";

/// How a disk is connected, by its place among the kernel's devices. The first row that fits counts.
struct Bus {
    const char* place; ///< a pattern
    std::string_view interconnect;
    std::string_view location; ///< "" where the place does not tell
    std::string_view deviceClass;
};

constexpr std::string_view kInFile = "File";
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

struct OpticalDrive {
    const char* property; ///< of udev's, for what the drive can read
    std::string_view deviceClass;
    const char* driverClass;
};

constexpr std::array kOpticalDrives {
    OpticalDrive { "ID_CDROM_BD", "IOBDServices", "IOBDBlockStorageDriver" },
    OpticalDrive { "ID_CDROM_DVD", "IODVDServices", "IODVDBlockStorageDriver" },
    OpticalDrive { "", "IOCompactDiscServices", "IOCDBlockStorageDriver" },
};

/// Where a fact of the device is found: the first that has it counts.
struct Fact {
    const char* property; ///< of udev's, which has long names whole
    std::array<const char*, 3> attributes;
};

constexpr Fact kVendor { "ID_VENDOR_ENC", { "device/vendor" } };
constexpr Fact kProduct { "ID_MODEL_ENC", { "device/model", "device/name" } };
constexpr Fact kRevision { "ID_REVISION", { "device/rev", "device/firmware_rev", "device/fwrev" } };
constexpr Fact kSerialNumber { "ID_SERIAL_SHORT", { "device/serial", "serial" } };

struct Disk {
    BlockDevice device;
    const Bus& bus;
    const OpticalDrive* optical; ///< null for other drives

    bool isImage() const { return bus.location == kInFile; }
};

std::string FactOf(const BlockDevice& device, const Fact& fact)
{
    std::string text = device.udev[fact.property];
    for (const char* attribute : fact.attributes) {
        if (text.empty() && attribute != nullptr)
            text = device.attributes.text(attribute);
    }
    return text;
}

/// In the vendor's place the kernel has a number for virtual disks, and the word "ATA" for what speaks that.
std::string VendorName(const BlockDevice& device)
{
    std::string name = FactOf(device, kVendor);
    return name.starts_with("0x") || name == "ATA" ? "" : name;
}

/// As the host knows it, or as the disk itself tells it: a header of four bytes, then the text.
std::string SerialNumber(const BlockDevice& device)
{
    const std::string page = device.attributes.bytes("device/vpd_pg80");
    const std::string known = FactOf(device, kSerialNumber);
    return !known.empty() || page.size() < 4 ? known : Cleaned(std::string_view(page).substr(4));
}

/// "" where the kernel cannot know: where no disk tells that it does not rotate, it takes it to.
const char* MediumType(const Disk& disk)
{
    const auto rotates = disk.device.attributes.number("queue/rotational");
    if (!rotates || disk.optical != nullptr || disk.isImage())
        return "";
    const bool isTold = disk.bus.interconnect == "SATA" || disk.bus.interconnect == "SAS";
    if (*rotates == 0)
        return "Solid State";
    return isTold ? "Rotational" : "";
}

Properties DeviceCharacteristics(const Disk& disk)
{
    Properties properties;
    properties.text("Vendor Name", VendorName(disk.device))
        .text("Product Name", FactOf(disk.device, kProduct))
        .text("Product Revision Level", FactOf(disk.device, kRevision))
        .text("Serial Number", SerialNumber(disk.device))
        .text("Medium Type", MediumType(disk))
        .number("Logical Block Size", disk.device.attributes.number("queue/logical_block_size"))
        .number("Physical Block Size", disk.device.attributes.number("queue/physical_block_size"));
    return properties;
}

Properties ProtocolCharacteristics(const Disk& disk)
{
    Properties properties;
    properties.text("Physical Interconnect", disk.bus.interconnect)
        .text("Physical Interconnect Location", disk.bus.location);
    if (disk.isImage())
        properties.textData(
            "Virtual Interface Location Path", disk.device.attributes.text("loop/backing_file"));
    return properties;
}

Entry& AddDevice(Registry& registry, Entry& parent, const Disk& disk)
{
    const std::string className(disk.optical != nullptr ? disk.optical->deviceClass : disk.bus.deviceClass);
    Properties features;
    if (disk.device.attributes.number("queue/discard_max_bytes").value_or(0) > 0)
        features.flag("Unmap", true);
    Properties properties;
    properties.text("device-type", "Generic")
        .dictionary("IOStorageFeatures", features)
        .dictionary("Device Characteristics", DeviceCharacteristics(disk))
        .dictionary("Protocol Characteristics", ProtocolCharacteristics(disk));
    return registry.add(parent, className, className, disk.device.attributes.text("nsid"), properties.take());
}

std::string MediaName(const BlockDevice& device)
{
    std::string name;
    for (const std::string& part : { VendorName(device), FactOf(device, kProduct) })
        name += part.empty() ? "" : part + ' ';
    return name + "Media";
}

/// A drive without a medium tells a size all the same, that of an empty disc.
bool HasMedium(const Disk& disk)
{
    const bool isEmpty = disk.optical != nullptr && disk.device.udev["ID_CDROM_MEDIA"] != "1";
    return !isEmpty && disk.device.attributes.number("size").value_or(0) > 0;
}

void AddDisk(Registry& registry, Entry& parent, const Disk& disk, unsigned& unit, const HostFolders& folders)
{
    const std::string driverClass
        = disk.optical != nullptr ? disk.optical->driverClass : "IOBlockStorageDriver";
    Entry& driver = registry.add(AddDevice(registry, parent, disk), driverClass, driverClass, "",
        DriverProperties(disk.device.attributes));
    if (!HasMedium(disk))
        return;
    const bool isRemovable = disk.isImage() || disk.device.attributes.isOne("removable");
    const bool isEjectable = isRemovable || disk.bus.location == "External";
    AddMedia(
        registry, driver, disk.device, { MediaName(disk.device), unit++, isRemovable, isEjectable }, folders);
}

const OpticalDrive* OpticalDriveOf(const std::string& name, const UdevRecord& udev)
{
    const auto* const drive = std::find_if(kOpticalDrives.begin(), kOpticalDrives.end(),
        [&udev](const OpticalDrive& one) { return *one.property == '\0' || udev[one.property] == "1"; });
    return name.starts_with("sr") ? drive : nullptr;
}

/// @param link in the kernel's list of block devices. @return its place; "" for one that is left out or has gone.
std::string PlaceOf(const std::filesystem::path& link, const std::string& sys)
{
    std::error_code gone;
    if (fnmatch(kDiskNames, link.filename().c_str(), FNM_EXTMATCH) != 0)
        return "";
    const std::string place = std::filesystem::canonical(link, gone).string();
    const Attributes attributes(place);
    const bool isIdleLoop
        = link.filename().string().starts_with("loop") && attributes.bytes("loop/backing_file").empty();
    if (gone || isIdleLoop || attributes.isOne("hidden") || !place.starts_with(sys))
        return "";
    return place.substr(sys.size());
}

/// Sorted, numbers within by their value.
std::vector<std::string> Places(const std::string& sys)
{
    std::vector<std::string> places;
    std::error_code error;
    for (std::filesystem::directory_iterator link(sys + "/block", error), end; !error && link != end;
         link.increment(error)) {
        places.push_back(PlaceOf(link->path(), sys));
    }
    std::erase(places, "");
    std::sort(places.begin(), places.end(), [](const std::string& first, const std::string& second) {
        return strverscmp(first.c_str(), second.c_str()) < 0;
    });
    return places;
}

}

void AddHostDisks(Registry& registry, Entry& parent, const HostFolders& folders)
{
    std::error_code missing;
    const std::string sys = std::filesystem::canonical(folders.sys, missing).string();
    unsigned unit = 0;
    for (const std::string& place : Places(sys)) {
        const auto* const bus = std::find_if(kBuses.begin(), kBuses.end(),
            [&place](const Bus& one) { return fnmatch(one.place, place.c_str(), 0) == 0; });
        Disk disk { BlockDevice(sys + place, folders), *bus, nullptr };
        disk.optical = OpticalDriveOf(place.substr(place.rfind('/') + 1), disk.device.udev);
        AddDisk(registry, parent, disk, unit, folders);
    }
}

}
