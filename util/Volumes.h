#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstddef>

// Mounted volumes, as DiskArbitration describes them. Paths are absolute, as a Mac program writes them, and have to be the
// volume's to the byte, at most 1023 of them. The functions that take a path look through all media of the registry, so
// they are not for loops. Null, and what is not there, is answered with false or null and an untouched destination.

/// Whether a volume is mounted on exactly this folder. The search ends, with false, at the first medium that
/// DiskArbitration does not describe; this one and the next two have it in common.
bool VolumeExistsAtPathname(const char* path);

/// The BSD name of the medium that holds a volume.
/// @return whether it was found and fits in `size` bytes with its zero byte.
bool GetVolumeBSD_NameWithPathname(const char* path, char* destination, size_t size);

/// The name of a volume, UTF-8, as above.
bool ExtractVolumeNameFromPathname(const char* path, char* destination, size_t size);

/// Where the volume on a disk or partition is mounted, as above.
bool GetVolumePathnameWithBSDName(const char* bsdName, char* destination, size_t size);

/// @return the volume's UUID, to be released by the caller.
CFUUIDRef CreateVolumeCFUUID_WithBSD_Name(const char* bsdName);
CFUUIDRef CreateVolumeCFUUID(const char* volumePath);

/// Gives an HFS volume, which must not be mounted, a new UUID, by "hfs.util -s". As a rule only root may.
bool GetNewUUID_ForVolume(const char* bsdName);
