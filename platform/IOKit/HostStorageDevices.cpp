#include <IOKit/HostStorageDevices.h>

#include <IOKit/HostDevices.h>
#include <IOKit/HostScsi.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>

namespace iokit {

namespace {

struct OpticalDrive {
    const char* property; ///< of udev's, for what the drive can read
    const char* deviceClass;
};

constexpr std::array kOpticalDrives {
    OpticalDrive { "ID_CDROM_BD", "IOBDServices" },
    OpticalDrive { "ID_CDROM_DVD", "IODVDServices" },
    OpticalDrive { "", "IOCompactDiscServices" },
};

std::string ClassOf(const Drive& drive)
{
    if (!drive.isOptical())
        return std::string(drive.bus->deviceClass);
    return std::find_if(kOpticalDrives.begin(), kOpticalDrives.end(), [&drive](const OpticalDrive& one) {
        return *one.property == '\0' || drive.device.udev(one.property) == "1";
    })->deviceClass;
}

std::optional<ScsiAddress> AddressOf(const Drive& drive)
{
    const std::string owner = drive.device.ownerFolder();
    return ScsiAddressIn(owner.substr(owner.rfind('/') + 1));
}

bool IsAta(const Drive& drive) { return drive.bus->interconnect.ends_with("ATA"); }

std::string FileOfRemotePort(const Drive& drive, const std::string& file)
{
    const std::string& folder = drive.device.folder();
    const size_t at = folder.find("/rport-");
    if (at == std::string::npos)
        return "";
    const std::string port = folder.substr(0, folder.find('/', at + 1));
    return drive.device.host().text(port + "/fc_remote_ports" + port.substr(port.rfind('/')) + '/' + file);
}

/// How the drive is connected: what the bus calls it, and what finds it there.
Properties ProtocolCharacteristics(const Drive& drive, const DriveFacts& facts)
{
    const BlockDevice& device = drive.device;
    Properties properties;
    properties.text("Physical Interconnect", drive.bus->interconnect)
        .text("Physical Interconnect Location", facts.location)
        .data("Node World Wide Name", WorldWideName(FileOfRemotePort(drive, "node_name")))
        .data("Port World Wide Name", WorldWideName(FileOfRemotePort(drive, "port_name")));
    if (const auto address = AddressOf(drive); address && !IsAta(drive))
        properties.number("SCSI Target Identifier", address->target)
            .number("SCSI Logical Unit Number", address->unit);
    if (drive.isImage())
        properties.textData("Virtual Interface Location Path", device.text("loop/backing_file"));
    else if (drive.bus->location == kInMemory)
        properties.textData(
            "Virtual Interface Location Path", "ram://" + std::to_string(device.sectors().value_or(0)));
    return properties;
}

Properties DeviceCharacteristics(const Drive& drive, const DriveFacts& facts)
{
    Properties properties;
    properties.text("Vendor Name", facts.vendor)
        .text("Product Name", facts.product)
        .text("Product Revision Level", facts.revision)
        .text("Serial Number", facts.serialNumber)
        .text("Medium Type", drive.mediumType())
        .number("Logical Block Size", facts.blockSize)
        .number("Physical Block Size", drive.device.number("queue/physical_block_size"));
    return properties;
}

/// A port of one device, as all are but those of multipliers, and the driver, which is where a Mac keeps the names.
Entry& AddAhciDevice(
    Registry& registry, Entry& above, const Drive& drive, const DriveFacts& facts, const Properties& protocol)
{
    Properties device;
    device.number("IOUnit", 0).dictionary("Protocol Characteristics", protocol);
    Properties driver;
    driver.text("Model", facts.product)
        .text("Revision", facts.revision)
        .text("Serial Number", facts.serialNumber)
        .text("Physical Interconnect Location", facts.location);
    const std::string className = drive.isOptical() ? "IOAHCISerialATAPI" : "AppleAHCIDiskDriver";
    Entry& port = registry.add(above, "IOAHCIDevice", "IOAHCIDevice", "0", device.take());
    return registry.add(port, className, className, "", driver.take());
}

/// On old wires the first device is 0 and the second 1.
Entry& AddAtaDevice(Registry& registry, Entry& above, const Drive& drive, const DriveFacts& facts)
{
    const auto address = AddressOf(drive);
    Properties properties;
    properties.text("device model", facts.product)
        .text("device revision", facts.revision)
        .text("device serial", facts.serialNumber)
        .number("unit number", address ? std::optional(address->target) : std::nullopt);
    return registry.add(above, "ATADeviceNub", "ATADeviceNub", "", properties.take());
}

Entry& AddLogicalUnit(
    Registry& registry, Entry& above, const Drive& drive, const DriveFacts& facts, const Properties& protocol)
{
    const uint64_t unit = AddressOf(drive)->unit;
    const cf::Owned<CFArrayRef> names = DeviceIdentification(drive.device.bytes("device/vpd_pg83"));
    Properties properties;
    properties.text("Vendor Identification", facts.vendor)
        .text("Product Identification", facts.product)
        .text("Product Revision Level", facts.revision)
        .text("Serial Number", facts.serialNumber)
        .number("SCSI Logical Unit Number", unit)
        .dictionary("Protocol Characteristics", protocol);
    if (names)
        properties.array("INQUIRY Device Identification", names.get());
    const std::string className = "IOSCSILogicalUnitNub";
    return registry.add(above, className, className, std::to_string(unit), properties.take());
}

Entry& AddImage(Registry& registry, Entry& above, const Drive& drive)
{
    Properties properties;
    properties.textData("image-path", drive.device.text("loop/backing_file"));
    const std::string className = "KDIFileBackingStore";
    return registry.add(above, className, className, drive.name().substr(4), properties.take());
}

/// @return the entry that is the drive to its bus; `above` where a Mac has none.
Entry& AddOnBus(
    Registry& registry, Entry& above, const Drive& drive, const DriveFacts& facts, const Properties& protocol)
{
    if (drive.isImage())
        return AddImage(registry, above, drive);
    if (drive.bus->interconnect == "SATA")
        return AddAhciDevice(registry, above, drive, facts, protocol);
    if (drive.bus->interconnect == "ATA")
        return AddAtaDevice(registry, above, drive, facts);
    return AddressOf(drive) ? AddLogicalUnit(registry, above, drive, facts, protocol) : above;
}

std::optional<uint64_t> LongestTransfer(const Drive& drive)
{
    const auto kilobytes = drive.device.number("queue/max_sectors_kb");
    return kilobytes ? std::optional(*kilobytes * 1024) : std::nullopt;
}

}

std::string DriveFacts::mediaName() const
{
    std::string name;
    for (const std::string& part : { vendor, product })
        name += part.empty() ? "" : part + ' ';
    return name + "Media";
}

DriveFacts FactsOf(const Drive& drive, const Entry& above)
{
    return { drive.vendor(), drive.product(), drive.revision(), drive.serialNumber(),
        drive.device.number("queue/logical_block_size"), LocationOf(*drive.bus, above) };
}

Entry& AddStorageDevice(Registry& registry, Entry& above, const Drive& drive, const DriveFacts& facts)
{
    Properties features;
    if (drive.device.number("queue/discard_max_bytes").value_or(0) > 0)
        features.flag("Unmap", true);
    const std::optional<uint64_t> longest = LongestTransfer(drive);
    const Properties protocol = ProtocolCharacteristics(drive, facts);
    Properties properties;
    properties.text("device-type", "Generic")
        .dictionary("IOStorageFeatures", features)
        .number("IOMaximumByteCountRead", longest)
        .number("IOMaximumByteCountWrite", longest)
        .dictionary("Device Characteristics", DeviceCharacteristics(drive, facts))
        .dictionary("Protocol Characteristics", protocol);
    const std::string className = ClassOf(drive);
    return registry.add(AddOnBus(registry, above, drive, facts, protocol), className, className,
        drive.device.text("nsid"), properties.take());
}

}
