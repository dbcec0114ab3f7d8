#pragma once

#include <IOKit/IOKitLib.h>
#include <cstddef>
#include <cstdint>

// What the device registry knows of disks and partitions, by their BSD names ("disk2", "disk2s1") or their media objects.
// What it does not know, null and unknown names are answered with no, 0 and empty texts.

/// @return the media object of that name, to be released by the caller.
io_service_t CreateIOKitObjectWithBSDName(const char* name);

bool DiskExists(const char* name);

/// Whether the medium can be taken out of its drive.
bool IsDiskRemovable(const char* name);

/// Whether it is a partition for starting from only, without a volume for users.
bool IsDiskAppleBootPartition(const char* name);

int64_t NumberBytesOnDisk(const char* name);

/// @return in bytes.
uint32_t SectorSizeForDisk(const char* name);

/// The size of the medium that holds the volume mounted at a path, in bytes.
uint64_t NumberBytesInVolumeIOMedia(const char* volumePath);

/// @param isPartition, name, size, blockSize, maximumTransfer receive what their names say, sizes in bytes; each may be null.
/// @param name BSD name of at most 15 characters, cut to `nameSize`. A medium without one leaves all of them 0.
/// @param maximumTransfer of reading and of writing the smaller one, but 128 KiB at least.
void GetBSDNameAndSizes(io_registry_entry_t media, bool* isPartition, char* name, size_t nameSize,
    uint64_t* size, uint32_t* blockSize, uint32_t* maximumTransfer);

/// How much the drive takes in one transfer: what it tells in bytes, or in blocks; else 128 KiB.
/// @param read, or write. @return in bytes, the low 32 bits.
uint32_t MaxTransferSizeForObject(io_registry_entry_t media, bool read);
