#pragma once

#include <IOKit/References.h>

#include <optional>
#include <string>
#include <vector>

/// The variable that remembers the disk to start from. As on a Mac, it tells what to look for in the registry, and the BSD
/// name that this had, since another disk may have the name after the next start.
constexpr const char* kStartupDiskVariable = "efi-boot-device";

/// The medium that a file or folder lies on. @param path host path. @return none where the registry does not know it.
iokit::Held MediaWith(const std::string& path);

/// A value for the variable: the partition's UUID, or the name and the size of what has none.
/// @param folder what the computer is to start from there: its path on the volume; "" for none.
/// @return nothing for a folder whose name cannot be written down.
std::optional<std::string> StartupDiskText(const iokit::Entry& media, const std::string& folder);
/// @param text such a value. @return the medium that is now what it tells of: none where that is not there; nothing where the
/// text cannot be understood.
std::optional<iokit::Held> StartupDiskIn(const std::string& text);

/// The partitions with the programs that start from a medium, by their UUIDs: itself, then those that a firmware starts from
/// on the same disk.
std::vector<std::string> StartPartitions(const iokit::Entry& media);
