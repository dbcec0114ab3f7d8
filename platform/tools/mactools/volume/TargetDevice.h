#pragma once

#include <Host/Descriptor.h>
#include <Host/HostMounts.h>
#include <Host/HostTree.h>

#include <optional>
#include <string>
#include <sys/stat.h>

/// What a tool is to change: a disk, a partition, or an image of one.
struct TargetDevice {
    std::string path; ///< the host's file: absolute, without links
    struct stat info; ///< of a block device or a regular file

    bool isDevice() const { return S_ISBLK(info.st_mode); }
};

/// @param tool in whose name is complained.
/// @param name "disk2s1", "rdisk2s1", both also with "/dev/" before, or the path of an image or a device, which has a slash
/// in it. Nothing else names a device, least of all what could be an option.
/// @return nothing after a complaint.
std::optional<TargetDevice> FindTarget(const char* tool, const std::string& name);

/// Opens a target for reading and writing that nobody uses: no mount, swap space or loop device has it or, of a disk, one of
/// its partitions. As long as a device stays open nobody else can begin to use it, not even another tool.
/// @param name in complaints. @return none after one.
Descriptor OpenUnused(
    const char* tool, const std::string& name, const TargetDevice& target, const HostTree& host = HostTree());

/// @return the host's mounts, those that hide others after them.
HostMounts CurrentMounts(const HostTree& host = HostTree());

/// @param folder a host path. @return what is to be seen there if it is the top of a mounted volume.
std::optional<HostMount> MountOn(const std::string& folder);
