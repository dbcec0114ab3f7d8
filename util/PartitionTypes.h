#pragma once

#include <IOKit/IOKitLib.h>
#include <cstddef>
#include <cstdint>

// What partitions are for, by the media objects of the device registry. No and 0 where the registry does not tell.

/// Answers of VolumePartitionTypeOnDisk().
enum PartitionType : uint32_t {
    kPartitionUnknown = 0,
    kPartitionHFS = 1,
    kPartitionAppleRAID = 2,
    kPartitionKelvaneRAID = 3,
    kPartitionCoreStorage = 4,
    kPartitionAPFS = 5,
    kPartitionMicrosoftBasicData = 6,
    kPartitionWindowsNTFS = 7,
};

/// Answers of APFS_VolumeRole().
enum APFSRole : uint32_t {
    kAPFSRoleOther = 0,
    kAPFSRoleNone = 1,
    kAPFSRolePreBoot = 2,
    kAPFSRoleRecovery = 3,
    kAPFSRoleVM = 4,
};

/// What a disk is for: the type of its first partition, in the order of the scheme, that has one of those types.
/// @param disk medium of a whole disk.
uint32_t VolumePartitionTypeOnDisk(io_registry_entry_t disk);

bool IsKelvane_Volume(io_registry_entry_t media);

/// Whether the medium belongs to a RAID of the system's: the nearest driver's class tells.
bool IsAppleRAID_Volume(io_registry_entry_t media);
bool IsCoreStorageVolume(io_registry_entry_t media);

/// Whether the medium stands for a container, and whether it is a partition that one lies in.
bool IsAPFS_Container(io_registry_entry_t media);
bool IsIOMediaContainingAPFS_Container(io_registry_entry_t media);
bool IsAPFS_Volume(io_registry_entry_t media);

/// The first of an APFS volume's roles.
uint32_t APFS_VolumeRole(io_registry_entry_t media);

/// Finds the container that lies in a partition.
/// @param container receives its medium, to be released by the caller, or 0; may be null.
bool CreateAPFS_ContainerFromIOMediaObject(io_registry_entry_t partition, io_registry_entry_t* container);

/// The same by names. @param destination receives the container's BSD name where that fits with its zero byte; may be null.
/// @return whether there is a container with a name, which may not have fitted.
bool CreateAPFS_ContainerFromIOMediaObjectWithBSD_Names(
    const char* partition, char* destination, size_t size);
