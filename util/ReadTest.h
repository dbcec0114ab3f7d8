#pragma once

#include <cstdint>

/// Finds out by reading whether a drive is solid-state: four blocks of 4096 bytes far apart, at places that differ from call
/// to call. The first read wakes the drive; the other three have to take less than 6 ms each. Nothing is written. The raw
/// device has to be readable, as a rule to root only.
/// @param bsdName of the disk. @param size in bytes; 0 for the one that the registry tells.
/// @return false as well for a disk that is not there, cannot be read, or has less than 1 GiB.
bool PerformReadTestForSSD_Media(const char* bsdName, uint64_t size);
