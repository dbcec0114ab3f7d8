#pragma once

#include <IOKit/IOKitLib.h>
#include <cstddef>

// A drive's make, model and firmware, out of what it tells about itself. Buffers are zeroed first, and texts are cut to
// them; where the registry does not tell, texts stay empty. Null buffers and sizes of 0 are left alone.

/// The vendor's and the product's names with a blank between them, and the revision of the firmware, each without blanks
/// around it.
/// @param media or any object of the registry below the drive.
void FillInModelAndFirmwareInfo(
    io_registry_entry_t media, char* model, size_t modelSize, char* firmware, size_t firmwareSize);

/// The same, with the maker split off. Makers are told by how the names start; "Unknown" is one of those, with the names as the
/// model.
void FillInMakeModelAndFirmwareInfo(io_registry_entry_t media, char* make, size_t makeSize, char* model,
    size_t modelSize, char* firmware, size_t firmwareSize);
