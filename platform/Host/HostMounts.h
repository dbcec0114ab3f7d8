#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

/// A folder in which a file system is to be found, as the kernel tells this process. Texts are any bytes.
struct HostMount {
    int64_t id;
    int64_t parent; ///< the mount in which the folder lies; its own, or none that is known, at the top
    dev_t device; ///< of the files, which is no disk's for some file systems
    std::string root; ///< the part of the file system that is there; "/" for all of it
    std::string folder; ///< absolute, without links
    std::string type; ///< as the kernel names it: "vfat"
    std::string source; ///< often the device's file: "/dev/sda1"
};
using HostMounts = std::vector<HostMount>;

/// Where the kernel has its table of them: in a HostTree.
constexpr const char* kHostMountTable = "proc/self/mountinfo";
constexpr size_t kLongestMountTable = size_t { 64 }
    << 20U; ///< bytes: the most mounts that kernels allow, and long names

/// @param table as the kernel writes it; what is no line of it is left out. @return in the order of the table.
HostMounts HostMountsIn(std::string_view table);
