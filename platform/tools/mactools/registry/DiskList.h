#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/Runtime.h>
#include <IOKit/Registry.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

/// A disk or a partition, as far as lists tell of it.
struct ListedMedia {
    std::string identifier; ///< "disk0s1"
    std::string content; ///< the kind of table or of partition in words; "" where it is not known
    std::string volumeName; ///< or what the partition is called; "" for none
    std::string uuid; ///< in the partition table; "" for none
    uint64_t size; ///< in bytes
};

struct ListedDisk {
    ListedMedia whole; ///< or the one partition that was asked for
    char mark; ///< before its size: * of a physical disk, + of any other, a space of a partition
    std::string kind; ///< "internal, physical"
    std::vector<std::string> stores; ///< identifiers of the media that it is put together from
    std::vector<ListedMedia> partitions;

    bool isContainer() const { return whole.content == "APFS Container Scheme"; }
};

/// The registry's disks by their numbers, each medium once. DiskArbitration knows the names of volumes.
std::vector<ListedDisk> DisksOf(const std::shared_ptr<const iokit::Registry>& registry);

/// @param identifier "disk0", "disk0s1", both also with "/dev/" or "/dev/r" before. @return the disk, or the partition in the
/// place of one; none where there is no such one.
std::vector<ListedDisk> DisksNamed(const std::vector<ListedDisk>& disks, const std::string& identifier);

/// The table: a heading for each disk, then a line for it and for each of its partitions.
void PrintDisks(std::ostream& out, const std::vector<ListedDisk>& disks);

/// The same as a property list: "AllDisks", "AllDisksAndPartitions", "VolumesFromDisks", "WholeDisks".
cf::Owned<CFDictionaryRef> DisksAsPropertyList(const std::vector<ListedDisk>& disks);

/// A size in the largest decimal unit that leaves it at 1 or more: "500.3 GB", "512 B".
std::string SizeText(uint64_t bytes);
