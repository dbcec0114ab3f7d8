#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFURL.h>
#include <DiskArbitration/DADissenter.h>
#include <DiskArbitration/DASession.h>
#include <IOKit/IOTypes.h>

// The part of Apple's <DiskArbitration/DADisk.h> for disks: what they are, and requests to mount and eject them. A disk
// stands for a medium of the device registry, whole or a partition, and for the volume on it; it holds both, and its
// session, as long as it lives. Disks of the same name are equal.
//
// Functions that create answer null for null, for what there is not, and for objects that are no media or have no BSD
// name. All functions answer null or 0 for a null disk, and may be called from any thread.

CF_EXTERN_C_BEGIN

using DADiskRef = struct __DADisk*;

// Keys of descriptions. Each may be missing: where it does not apply, or nobody could tell.

CF_EXPORT const CFStringRef kDADiskDescriptionVolumeKindKey; ///< string: the file system, as "msdos"
CF_EXPORT const CFStringRef kDADiskDescriptionVolumeMountableKey; ///< boolean
CF_EXPORT const CFStringRef kDADiskDescriptionVolumeNameKey; ///< string
CF_EXPORT const CFStringRef kDADiskDescriptionVolumeNetworkKey; ///< boolean
CF_EXPORT const CFStringRef kDADiskDescriptionVolumePathKey; ///< URL of the folder in which it is mounted
CF_EXPORT const CFStringRef kDADiskDescriptionVolumeUUIDKey; ///< UUID; shorter numbers, as FAT's, are none

CF_EXPORT const CFStringRef kDADiskDescriptionMediaBlockSizeKey; ///< number, in bytes
CF_EXPORT const CFStringRef kDADiskDescriptionMediaBSDMajorKey; ///< number, here and in the next two
CF_EXPORT const CFStringRef kDADiskDescriptionMediaBSDMinorKey;
CF_EXPORT const CFStringRef kDADiskDescriptionMediaBSDUnitKey;
CF_EXPORT const CFStringRef kDADiskDescriptionMediaBSDNameKey; ///< string: "disk0s1"
CF_EXPORT const CFStringRef kDADiskDescriptionMediaContentKey; ///< string: the partition's type
CF_EXPORT const CFStringRef kDADiskDescriptionMediaEjectableKey; ///< boolean
CF_EXPORT const CFStringRef kDADiskDescriptionMediaKindKey; ///< string: the class of the registry's object
CF_EXPORT const CFStringRef kDADiskDescriptionMediaLeafKey; ///< boolean: it has no partitions
CF_EXPORT const CFStringRef kDADiskDescriptionMediaNameKey; ///< string
CF_EXPORT const CFStringRef kDADiskDescriptionMediaPathKey; ///< string: its path in the registry
CF_EXPORT const CFStringRef kDADiskDescriptionMediaRemovableKey; ///< boolean
CF_EXPORT const CFStringRef kDADiskDescriptionMediaSizeKey; ///< number, in bytes
CF_EXPORT const CFStringRef kDADiskDescriptionMediaUUIDKey; ///< UUID
CF_EXPORT const CFStringRef kDADiskDescriptionMediaWholeKey; ///< boolean: it is no partition
CF_EXPORT const CFStringRef kDADiskDescriptionMediaWritableKey; ///< boolean

CF_EXPORT const CFStringRef kDADiskDescriptionDeviceInternalKey; ///< boolean
CF_EXPORT const CFStringRef kDADiskDescriptionDeviceModelKey; ///< string, here and in all that follow but one
CF_EXPORT const CFStringRef kDADiskDescriptionDevicePathKey; ///< its path in the registry
CF_EXPORT const CFStringRef kDADiskDescriptionDeviceProtocolKey; ///< how it is connected: "USB"
CF_EXPORT const CFStringRef kDADiskDescriptionDeviceRevisionKey;
CF_EXPORT const CFStringRef kDADiskDescriptionDeviceUnitKey; ///< number
CF_EXPORT const CFStringRef kDADiskDescriptionDeviceVendorKey;

CF_EXPORT const CFStringRef kDADiskDescriptionBusNameKey;
CF_EXPORT const CFStringRef kDADiskDescriptionBusPathKey; ///< its path in the registry's device tree

CF_EXPORT CFTypeID DADiskGetTypeID();

// All to be released by the caller.

/// @param name "disk0s1", "/dev/disk0s1" or "/dev/rdisk0s1".
CF_EXPORT DADiskRef DADiskCreateFromBSDName(
    CFAllocatorRef allocator, DASessionRef session, const char* name) CF_RETURNS_RETAINED;
/// @param media stays the caller's.
CF_EXPORT DADiskRef DADiskCreateFromIOMedia(
    CFAllocatorRef allocator, DASessionRef session, io_service_t media) CF_RETURNS_RETAINED;
/// @param path of the very folder in which the volume is mounted; none below it.
CF_EXPORT DADiskRef DADiskCreateFromVolumePath(
    CFAllocatorRef allocator, DASessionRef session, CFURLRef path) CF_RETURNS_RETAINED;

/// @return good as long as the disk.
CF_EXPORT const char* DADiskGetBSDName(DADiskRef disk);
/// @return what is known: of the mount at this moment; of the volume since the registry was last read, or this program
/// last had a disk changed by a request; of the medium since the disk was made. To be released by the caller.
CF_EXPORT CFDictionaryRef DADiskCopyDescription(DADiskRef disk) CF_RETURNS_RETAINED;
/// @return the medium, to be released by the caller with IOObjectRelease.
CF_EXPORT io_service_t DADiskCopyIOMedia(DADiskRef disk);
/// @return the disk of which this one is a part, itself where it is whole; to be released by the caller. Null where the
/// registry has none.
CF_EXPORT DADiskRef DADiskCopyWholeDisk(DADiskRef disk) CF_RETURNS_RETAINED;

// Requests. They return at once, however long the disk service or the user takes; only where the host's message bus is
// there and silent, a second may pass. The answer comes through the callback, once, on a run loop that the disk's session
// is scheduled with, refusals as well, and one answer at a time: a callback that stops the loop leaves the others to its
// next run. What a session wants of a disk and its partitions is done in the order of the requests; other disks do not
// wait for it.
//
// A request does not hold the session, and its callback gets a disk that is equal to the one it was made with. Once the
// session has gone, which its disks keep, answers come no more; what has reached the disk service by then may still be
// done, the rest is not. A null disk is left alone, without an answer. The user may be asked for a password.
//
// Refusals: kDAReturnNotReady, there is no disk service to be had, or it ended meanwhile; kDAReturnNotFound, the disk has
// gone, or was only recorded; kDAReturnNotPrivileged; kDAReturnBadArgument; kDAReturnUnsupported, not with this disk, or
// with none; kDAReturnBusy and kDAReturnNotMounted, as told below; kDAReturnError for what has no number of its own. The
// service's own words are in the dissenter.

using DADiskMountOptions = UInt32;
enum : DADiskMountOptions {
    kDADiskMountOptionDefault = 0,
    kDADiskMountOptionWhole = 1 ///< all volumes of the disk
};

using DADiskUnmountOptions = UInt32;
enum : DADiskUnmountOptions {
    kDADiskUnmountOptionDefault = 0,
    kDADiskUnmountOptionWhole = 1, ///< all volumes of the disk
    kDADiskUnmountOptionForce = 0x00080000 ///< although files are open
};

using DADiskEjectOptions = UInt32;
enum : DADiskEjectOptions { kDADiskEjectOptionDefault = 0 };

using DADiskRenameOptions = UInt32;
enum : DADiskRenameOptions { kDADiskRenameOptionDefault = 0 };

/// @param disk, as the dissenter, good for the length of the call. @param dissenter null when it was done.
/// @param context as it was given.
using DADiskMountCallback = void (*)(DADiskRef disk, DADissenterRef dissenter, void* context);
using DADiskUnmountCallback = DADiskMountCallback;
using DADiskEjectCallback = DADiskMountCallback;
using DADiskRenameCallback = DADiskMountCallback;

/// Mounts a volume, or those of the whole disk that are not mounted yet, of which there need not be any. One answer is for
/// all: the first refusal, if there is one. One volume that is mounted already is refused as busy.
/// @param path null: the system chooses the folder. Any other is refused as unsupported.
/// @param callback here and below may be null.
CF_EXPORT void DADiskMount(
    DADiskRef disk, CFURLRef path, DADiskMountOptions options, DADiskMountCallback callback, void* context);
/// @param arguments words of mount's option -o, ended by null; may be null. These are known: "async", "noatime",
/// "nobrowse", "nodev", "noexec", "nosuid", "perm", "rdonly", "sync". With others the request is refused as a bad
/// argument.
CF_EXPORT void DADiskMountWithArguments(DADiskRef disk, CFURLRef path, DADiskMountOptions options,
    DADiskMountCallback callback, void* context, CFStringRef arguments[]);
/// Unmounts a volume, or those of the whole disk that are mounted, of which there need not be any. Refused as busy while
/// somebody uses it, whom the dissenter names where that can be seen.
CF_EXPORT void DADiskUnmount(
    DADiskRef disk, DADiskUnmountOptions options, DADiskUnmountCallback callback, void* context);
/// The whole disk's medium leaves its drive, a disk that is one with its drive is made ready to be unplugged, a disk image
/// leaves its device. Refused as busy while a volume of the disk is mounted; the dissenter names who uses that, if anybody
/// does.
CF_EXPORT void DADiskEject(
    DADiskRef disk, DADiskEjectOptions options, DADiskEjectCallback callback, void* context);
/// Gives a volume another name, which file systems may shorten or refuse. @param name not null, and of characters other
/// than zero, or it is refused as a bad argument.
CF_EXPORT void DADiskRename(DADiskRef disk, CFStringRef name, DADiskRenameOptions options,
    DADiskRenameCallback callback, void* context);

CF_EXTERN_C_END
