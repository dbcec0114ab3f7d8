#pragma once

#include <IOKit/IOKitLib.h>
#include <cstddef>
#include <cstdint>

// What tells a drive from others of its model. Properties are looked for at the object and then at its ancestors. Buffers are
// zeroed first, and texts are cut to them; null buffers and sizes of 0 are left alone.

/// The drive's serial number, or its world wide name on buses where that identifies drives.
/// @param bus a BusCode (see MediaTypes.h); for others the text stays empty.
void FillInSerialNumber(io_registry_entry_t media, uint32_t bus, char* buffer, size_t size);

/// The drive's number on its bus, and that of the unit in it; 0 where the bus has none.
void GetTargetID_And_LUN(io_registry_entry_t media, uint32_t bus, int32_t* target, int32_t* logicalUnit);

/// On a disk with a GUID partition table the UUID of the disk or, in the order of the registry, of what comes below it first with
/// one: the table itself or a partition.
void GPT_UUID_ForDisk(io_registry_entry_t disk, char* buffer, size_t size);

/// Where in the computer the drive is: as the firmware names the place, or "Thunderbolt".
void FillInDeviceLocationWithIOServiceObject(io_registry_entry_t object, char* buffer, size_t size);
void FillInDeviceLocationWithBSDName(const char* bsdName, char* buffer, size_t size);
