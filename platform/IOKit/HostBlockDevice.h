#pragma once

#include <Host/HostTree.h>

#include <cstdint>
#include <optional>
#include <string>

namespace iokit {

/// A disk or a partition, as the kernel and udev describe it. Facts come and go with the device; a text that is not there
/// is "".
class BlockDevice {
public:
    /// @param host has to outlive this. @param folder of the device in there, "sys/devices/…/block/sda".
    BlockDevice(const HostTree& host, std::string folder);

    const HostTree& host() const { return *fHost; }
    const std::string& folder() const { return fFolder; }
    std::string name() const; ///< the kernel's, "sda"
    std::string node() const; ///< the host's file for it, "/dev/sda"
    /// The folder of the device that the disk belongs to: of a SCSI disk, the one named "2:0:0:0".
    std::string ownerFolder() const;

    /// @param file below the folder, everywhere.
    std::string bytes(const std::string& file) const { return fHost->bytes(fFolder + '/' + file); }
    std::string text(const std::string& file) const { return fHost->text(fFolder + '/' + file); }
    std::optional<uint64_t> number(const std::string& file) const; ///< none for a negative one

    std::optional<uint64_t> majorNumber() const { return fMajor; }
    std::optional<uint64_t> minorNumber() const { return fMinor; }
    std::optional<uint64_t> sectors() const
    {
        return fSectors;
    } ///< of 512 bytes, whatever the disk's own have
    /// @return what the kernel told when the device came, "DEVNAME".
    std::string uevent(const std::string& name) const;
    /// @return a property of udev's.
    std::string udev(const std::string& property) const;
    bool isKnownToUdev() const { return !fUdev.empty(); }

private:
    const HostTree* fHost;
    std::string fFolder;
    std::optional<uint64_t> fMajor;
    std::optional<uint64_t> fMinor;
    std::optional<uint64_t> fSectors;
    // Of all that these records tell, little is ever asked for: they are kept as they came.
    std::string fUevent;
    std::string fUdev;
};

}
