#pragma once

#include "tools/inspect/Record.h"
#include "util/RegistryProperties.h"
#include <string>
#include <vector>

/// A disk or a partition in the device registry.
struct Medium {
    IORef object;
    std::string name; ///< BSD name: "disk0s1"
    bool isPartition;
};

/// All that have names, in the order of people: disk0, disk0s1, disk0s2, disk1, disk10.
std::vector<Medium> AllMedia();

/// The disk that a partition belongs to: "disk0" of "disk0s1"; itself of a whole disk.
std::string DiskNameOf(const Medium& medium);

/// Whether a medium's label only repeats the drive's model.
bool IsLabelOfModel(const Value& label);

/// What is known of media. Facts that take reading a drive are found out once for each disk.
class MediaFacts {
public:
    /// All that is known, in a record that has the same fields for all media.
    Record describe(const Medium& medium);

private:
    Value mediaType(const Medium& medium);

    std::vector<std::pair<std::string, uint32_t>> fMediaTypes {}; ///< codes of disks, by names
};
