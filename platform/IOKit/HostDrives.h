#pragma once

#include <Host/HostTree.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace iokit {

/// A disk or a partition, as the kernel and udev describe it. Facts come and go with the device; a text that is not there
/// is "".
class BlockDevice {
public:
    /// @param host has to outlive this. @param folder of the device in there, "sys/devices/…/block/sda".
    BlockDevice(const HostTree& host, std::string folder);

    const HostTree& host() const { return *fHost; }
    const std::string& folder() const { return fFolder; }
    /// @param file below the folder, everywhere.
    std::string bytes(const std::string& file) const { return fHost->bytes(fFolder + '/' + file); }
    std::string text(const std::string& file) const { return fHost->text(fFolder + '/' + file); }
    std::optional<uint64_t> number(const std::string& file) const; ///< none for a negative one
    /// @return a property of udev's.
    std::string udev(const std::string& property) const { return ValueOf(fUdev, property); }

private:
    const HostTree* fHost;
    std::string fFolder;
    TextPairs fUdev;
};

/// How a disk is connected.
struct Bus {
    const char* place; ///< pattern of the places among the kernel's devices
    std::string_view interconnect;
    std::string_view location; ///< "" where the place does not tell
    std::string_view deviceClass; ///< of the registry
};

/// A device for media, with what it tells of itself.
struct Drive {
    BlockDevice device;
    const Bus* bus; ///< never null

    std::string name() const; ///< the host's, "sda"
    bool isImage() const; ///< a file takes its place
    bool isOptical() const { return name().starts_with("sr"); }
    bool isRemovable() const { return device.number("removable") == 1; }

    std::string vendor() const;
    std::string product() const;
    std::string revision() const; ///< of its firmware
    std::string serialNumber() const;
    /// "Solid State" or "Rotational"; "" where the kernel cannot know: where no disk tells that it does not rotate, it takes
    /// it to.
    std::string mediumType() const;
};

/// The host's drives, in the order of their places in the computer. Disks in memory, those put together from others, and
/// loop devices without a file are left out.
std::vector<Drive> HostDrives(const HostTree& host);

}
