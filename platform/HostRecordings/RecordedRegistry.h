#pragma once

#include <cstddef>
#include <string>

/// From now on the device registry of this program is the one that a file has recorded on another computer, as "ioreg -l" or
/// "ioreg -a" prints it, and does not change. What the recording does not tell is not known.
/// @param unreadable receives how many places of it could not be read and are left out. @return "", or why the file cannot be
/// used, with the registry as it was; as on a Mac always.
std::string HostUseRecordedRegistry(const std::string& path, size_t* unreadable);
