#pragma once

#include <IOKit/IOKitLib.h>
#include <cstdint>

// What kind of storage a medium of the device registry is. Properties are looked for at the object and then at its ancestors.
// No where they are missing or of another type.

/// How a disk is connected: codes of TestForDiskOnSupportedBus().
enum BusCode : uint32_t {
    kBusUnknown = 0,
    kBusPCI = 1, ///< PCI Express as well
    kBusSATA = 2,
    kBusATA = 3,
    kBusFireWire = 4,
    kBusSCSI = 5,
    kBusSAS = 6,
    kBusFibreChannel = 7,
    kBusUSB = 8, ///< up to 480 Mbit/s
    kBusFastUSB = 9,
};

/// Codes of GetMediaTypeWithIOServiceObject() and of the tests.
enum MediaCode : uint32_t {
    kMediaDisk = 1, ///< an ordinary one
    kMediaXsan = 2,
    kMediaIPod = 3,
    kMediaCD = 4,
    kMediaDVD = 5,
    kMediaBluRay = 6,
    kMediaImage = 7,
    kMediaSSD = 8,
    kMediaAPFS = 9,
};

/// @param bus receives the code, kBusUnknown for a bus that is none of those; may be null.
/// @return whether the registry tells the bus at all; else the code is left as it is.
bool TestForDiskOnSupportedBus(io_registry_entry_t media, uint32_t* bus);

/// Makes the tests below in their order, the one for solid-state drives with its reading included, and answers the first that
/// is true; kMediaDisk for none.
uint32_t GetMediaTypeWithIOServiceObject(io_registry_entry_t media);

// @param code, of all of these, receives the code when the answer is yes, else it is left as it is; may be null.

/// Whether it is the medium of an APFS container: of that very class, which an ancestor or a derived one does not count for.
/// @param code is required.
bool TestForAPFS_Media(io_registry_entry_t media, uint32_t* code);
bool TestForOpticalMedia(io_registry_entry_t media, uint32_t* code);
bool TestForIPodMedia(io_registry_entry_t media, uint32_t* code);
bool TestForDiskImageMedia(io_registry_entry_t media, uint32_t* code);
bool TestForXsanImageMedia(io_registry_entry_t media, uint32_t* code);

/// The drive's word counts; where it says nothing, PerformReadTestForSSD_Media().
bool TestForSSD_Media(io_registry_entry_t media, uint32_t* code);

/// Whether the drive takes requests to give up blocks.
bool TestForTRIM_Support(io_registry_entry_t media);

/// Whether it is one of ZEK's own drives.
bool TestForZEK_SSD(io_registry_entry_t media);
