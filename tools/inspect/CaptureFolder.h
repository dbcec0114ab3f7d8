#pragma once

#include "tools/inspect/Record.h"
#include <string>

// The folder into which "capture" puts what the system's tools say of a computer. It may come from elsewhere, and hold
// anything. Paths are the host's.

constexpr const char* kRegistryFile = "ioreg.txt";
constexpr const char* kProfileFile = "system_profiler.xml";

/// The recorded device registry that is meant by a path. @param capture a folder of captures, or the registry's own file.
std::string RecordedRegistryAt(const std::string& capture);

/// Appends what a recorded system profile tells of the computer, its user and its system.
/// @param capture as above; a file has no profile beside it.
/// @return false for a profile that cannot be read.
bool AddRecordedProfile(const std::string& capture, Record& record);
