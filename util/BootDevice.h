#pragma once

#include <IOKit/IOKitLib.h>
#include <cstddef>

// The disk or volume that the computer is to start from. What sets it takes an administrator's rights. Null, texts that are
// no BSD names, and volumes that are not mounted are answered with false.

/// The firmware's path of the device to start from, its variable "boot-device".
/// @param buffer zeroed first. @param size of it, in bytes, of which two are kept free.
/// @return whether there is one, ASCII, and it fits.
bool GetBootPath(char* buffer, size_t size);

/// Sets that variable, to have the firmware look for the starting program on the device, by nvram.
/// @param path with or without "IODeviceTree:" before it.
/// @return whether the tool succeeded, here and below. One that cannot be started counts as having succeeded.
bool SetBootPath(const char* path);

/// Chooses a disk or partition, by bless.
bool SetBootDeviceWithBSD_Name(const char* bsdName);

/// Chooses a mounted volume with a system in "System/Library/CoreServices", by bless.
bool SetBootVolumeWithVolumePathname(const char* volumePath);
bool SetBootVolumeWithBSD_Name(const char* bsdName);

/// The volume that was chosen, as bless tells.
/// @param buffer zeroed first; receives the BSD name, cut to it. Null where only the answer matters.
/// @return whether the tool tells one, in at most 31 characters of ASCII where there is a buffer. Where the tool cannot be
/// started, the copy of the process that was to become it comes back as well, with false.
bool GetBootVolumeBSD_Name(char* buffer, size_t size);

/// From the partition of a system to the partition for starting it, beside: the next one on a disk with a GUID table, the one
/// before on others.
/// @param partition what the name means. @param bsdName is changed to that of the partition beside, also when that is none or
/// another kind; there has to be room for two more characters. The number is what is behind the last "s", 0 where that is
/// none; a name without an "s" is left alone.
/// @return whether it is a partition for starting.
bool GetBSDSliceNumberForAppleBootPartition(io_registry_entry_t partition, char* bsdName);

/// Chooses the partition beside the first device that a root volume says it is started from. Does nothing for a volume that
/// says nothing of the kind.
void SetBootDeviceForBootRootVolume(const char* bsdName);
