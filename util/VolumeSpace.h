#pragma once

#include <CoreServices/CoreServices.h>
#include <cstdint>

// How large volumes are. Paths are as a Mac program writes them; null is no path.

/// @param path of anything on the volume. @param total, @param free, @param available receive bytes, the last those free to
/// users without privileges; 0 on failure. Each may be null. @return whether the volume could be asked.
bool GetVolumeTotalAndFreeBytes(const char* path, uint64_t* total, uint64_t* free, uint64_t* available);

/// Asks the file system, as root and in a child, to make a volume as large as this.
/// @param path of the volume's folder. @param size in bytes.
/// @return noErr when there was a volume at the path, which tells nothing of whether its size was changed; nsvErr when
/// there was none; paramErr when no child could be made.
OSStatus ResizeVolume(const char* path, uint64_t size);
