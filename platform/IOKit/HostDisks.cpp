#include <IOKit/HostDisks.h>

#include <IOKit/HostDrives.h>
#include <IOKit/HostMedia.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>

namespace iokit {

namespace {

struct OpticalDrive {
    const char* property; ///< of udev's, for what the drive can read
    const char* deviceClass;
    const char* driverClass;
};

constexpr std::array kOpticalDrives {
    OpticalDrive { "ID_CDROM_BD", "IOBDServices", "IOBDBlockStorageDriver" },
    OpticalDrive { "ID_CDROM_DVD", "IODVDServices", "IODVDBlockStorageDriver" },
    OpticalDrive { "", "IOCompactDiscServices", "IOCDBlockStorageDriver" },
};

/// @return null for other drives.
const OpticalDrive* OpticalDriveOf(const Drive& drive)
{
    const auto* const kind
        = std::find_if(kOpticalDrives.begin(), kOpticalDrives.end(), [&drive](const OpticalDrive& one) {
              return *one.property == '\0' || drive.device.udev(one.property) == "1";
          });
    return drive.isOptical() ? kind : nullptr;
}

Properties DeviceCharacteristics(const Drive& drive)
{
    Properties properties;
    properties.text("Vendor Name", drive.vendor())
        .text("Product Name", drive.product())
        .text("Product Revision Level", drive.revision())
        .text("Serial Number", drive.serialNumber())
        .text("Medium Type", drive.mediumType())
        .number("Logical Block Size", drive.device.number("queue/logical_block_size"))
        .number("Physical Block Size", drive.device.number("queue/physical_block_size"));
    return properties;
}

Properties ProtocolCharacteristics(const Drive& drive)
{
    Properties properties;
    properties.text("Physical Interconnect", drive.bus->interconnect)
        .text("Physical Interconnect Location", drive.bus->location);
    if (drive.isImage())
        properties.textData("Virtual Interface Location Path", drive.device.text("loop/backing_file"));
    return properties;
}

Entry& AddDevice(Registry& registry, Entry& parent, const Drive& drive, const std::string& className)
{
    Properties features;
    if (drive.device.number("queue/discard_max_bytes").value_or(0) > 0)
        features.flag("Unmap", true);
    Properties properties;
    properties.text("device-type", "Generic")
        .dictionary("IOStorageFeatures", features)
        .dictionary("Device Characteristics", DeviceCharacteristics(drive))
        .dictionary("Protocol Characteristics", ProtocolCharacteristics(drive));
    return registry.add(parent, className, className, drive.device.text("nsid"), properties.take());
}

std::string MediaName(const Drive& drive)
{
    std::string name;
    for (const std::string& part : { drive.vendor(), drive.product() })
        name += part.empty() ? "" : part + ' ';
    return name + "Media";
}

/// A drive without a medium tells a size all the same, that of an empty disc.
bool HasMedium(const Drive& drive)
{
    const bool isEmpty = drive.isOptical() && drive.device.udev("ID_CDROM_MEDIA") != "1";
    return !isEmpty && drive.device.number("size").value_or(0) > 0;
}

void AddDrive(Registry& registry, Entry& parent, const Drive& drive, unsigned& unit)
{
    const OpticalDrive* const optical = OpticalDriveOf(drive);
    const std::string deviceClass(optical != nullptr ? optical->deviceClass : drive.bus->deviceClass);
    const std::string driverClass = optical != nullptr ? optical->driverClass : "IOBlockStorageDriver";
    Entry& driver = registry.add(AddDevice(registry, parent, drive, deviceClass), driverClass, driverClass,
        "", DriverProperties(drive.device));
    if (!HasMedium(drive))
        return;
    const bool isRemovable = drive.isImage() || drive.isRemovable();
    const bool isEjectable = isRemovable || drive.bus->location == "External";
    AddMedia(registry, driver, drive.device, { MediaName(drive), unit++, isRemovable, isEjectable });
}

}

void AddHostDisks(Registry& registry, Entry& parent, const HostTree& host)
{
    unsigned unit = 0;
    for (const Drive& drive : HostDrives(host))
        AddDrive(registry, parent, drive, unit);
}

}
