#include <IOKit/HostBuses.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <fnmatch.h>

namespace iokit {

namespace {

constexpr std::string_view kSata = "SATA";
constexpr std::string_view kPciExpress = "PCI-Express";
constexpr const char* kScsiServices = "IOBlockStorageServices";
constexpr const char* kImageDevice = "IODiskImageBlockStorageDeviceOutKernel";
constexpr const char* kOtherDevice = "IOBlockStorageDevice";

/// The first row that fits counts.
constexpr std::array kBuses {
    Bus { "*/usb[0-9]*", "USB", "External", kScsiServices },
    Bus { "*/nvme*", kPciExpress, "Internal", "IONVMeBlockStorageDevice" },
    Bus { "*/rport-*", "Fibre Channel Interface", "", kScsiServices },
    Bus { "*/end_device-*", "SAS", "", kScsiServices },
    Bus { "*/session[0-9]*", "iSCSI", "External", kScsiServices },
    Bus { "*/ata[0-9]*", kSata, "Internal", "IOAHCIBlockStorageDevice" },
    Bus { "*/mmc_host/*", "Secure Digital", "Internal", "AppleSDXCBlockStorageDevice" },
    Bus { "*/fw[0-9]*", "FireWire", "External", kScsiServices },
    Bus { "*/virtio[0-9]*", "Virtual Interface", "Internal", kOtherDevice },
    Bus { "*/vbd-*", "Virtual Interface", "Internal", kOtherDevice },
    Bus { "*/rbd/*", "Virtual Interface", "", kOtherDevice },
    Bus { "*/virtual/block/loop*", "Virtual Interface", kInFile, kImageDevice },
    Bus { "*/virtual/block/zram*", "Virtual Interface", kInMemory, kImageDevice },
    Bus { "*/virtual/block/*", "Virtual Interface", "", kOtherDevice },
    Bus { "*/target*:*:*/*", "SCSI", "", kScsiServices },
    Bus { "*", "", "", kOtherDevice },
};

constexpr Bus kParallelAta { "", "ATA", "Internal", "IOATABlockStorageDevice" };
constexpr Bus kNvmeOverNetwork { "", "", "External", "IONVMeBlockStorageDevice" };

/// The folder in a place whose own name begins so, as ".../ata1" for "/ata".
std::string FolderIn(const std::string& place, const std::string& start)
{
    const size_t at = place.find(start);
    return at == std::string::npos ? "" : place.substr(0, place.find('/', at + 1));
}

/// Wires of both kinds are ports to the kernel: only those of SATA have a speed, and only old controllers have others.
bool IsParallelAta(const BlockDevice& disk)
{
    if (disk.udev("ID_ATA_SATA") == "1")
        return false;
    const std::string port = FolderIn(disk.folder(), "/ata");
    const std::string link = "link" + port.substr(port.rfind("/ata") + 4);
    const std::string speed = disk.host().text(port + '/' + link + "/ata_link/" + link + "/sata_spd");
    if (!speed.empty() && std::isdigit(static_cast<unsigned char>(speed.front())) != 0)
        return false;
    return disk.host().text(port.substr(0, port.rfind('/')) + "/class").starts_with("0x0101");
}

bool IsOverNetwork(const BlockDevice& disk)
{
    const std::string transport = disk.text("device/transport");
    return !transport.empty() && transport != "pcie";
}

}

const Bus* BusOf(const BlockDevice& disk)
{
    const auto* const bus = std::find_if(kBuses.begin(), kBuses.end(),
        [&disk](const Bus& one) { return fnmatch(one.place, disk.folder().c_str(), 0) == 0; });
    if (bus->interconnect == kSata && IsParallelAta(disk))
        return &kParallelAta;
    if (bus->interconnect == kPciExpress && IsOverNetwork(disk))
        return &kNvmeOverNetwork;
    return bus;
}

}
