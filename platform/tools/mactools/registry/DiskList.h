#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/Runtime.h>
#include <Host/HostTree.h>
#include <IOKit/Registry.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

/// A disk or a partition, as far as lists tell of it.
struct ListedMedia {
    std::string identifier; ///< "disk0s1"
    std::string content; ///< the kind of table or of partition in words; "" where it is not known
    std::string volumeName; ///< "" for none
    std::string uuid; ///< in the partition table; "" for none
    uint64_t size; ///< in bytes
};

struct ListedDisk {
    ListedMedia whole; ///< or the one partition that was asked for
    char mark; ///< before its size: * of a physical disk, + of an image, a space of a partition
    std::string kind; ///< "internal, physical"
    std::vector<ListedMedia> partitions;
};

/// The registry's disks by their numbers. Names of volumes are taken from the host's udev.
std::vector<ListedDisk> DisksOf(const iokit::Registry& registry, const HostTree& host);

/// @param identifier "disk0", "disk0s1", both also with "/dev/" or "/dev/r" before. @return the disk, or the partition in the
/// place of one; none where there is no such one.
std::vector<ListedDisk> DisksNamed(const std::vector<ListedDisk>& disks, const std::string& identifier);

/// The table: a heading for each disk, then a line for it and for each of its partitions.
void PrintDisks(std::ostream& out, const std::vector<ListedDisk>& disks);

/// The same as a property list: "AllDisks", "AllDisksAndPartitions", "VolumesFromDisks", "WholeDisks".
cf::Owned<CFDictionaryRef> DisksAsPropertyList(const std::vector<ListedDisk>& disks);

/// A size in the largest decimal unit that leaves it at 1 or more: "500.3 GB", "512 B".
std::string SizeText(uint64_t bytes);
