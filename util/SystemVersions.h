#pragma once

#include <cstddef>
#include <cstdint>

// Which system is installed on a volume, from its SystemVersion.plist, or where that is missing its ServerVersion.plist.

/// @param volumePath as a Mac program writes it, with or without a "/" at its end; null and "" give nothing.
/// @param version receives the version's text, "10.15.7"; @param build the build number, "19H2". Both ASCII, either may be
/// null. What is not there leaves its buffer as it is, what does not fit with its zero byte makes it empty.
/// @param versionCapacity of the buffers, in bytes.
void SystemVersionAndBuildNumber(
    const char* volumePath, char* version, size_t versionCapacity, char* build, size_t buildCapacity);

/// The version as a whole that compares (see NumVersion.h); 0 when there is none, or none that can be read.
uint32_t ReturnSystemVersionOnVolume(const char* volumePath);
