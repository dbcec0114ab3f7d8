#pragma once

#include <cstdint>

// Functions that change disks and volumes: DiskArbitration is asked, or one of the system's tools does the work. All of them
// wait for the end. They say nothing but yes or no, and for null, and for BSD names that are none, no.
//
// The calling thread's run loop runs until DiskArbitration answers: nothing else may stop it meanwhile.

/// What is asked of MountUnmountVolumeWithRec().
struct MountUnmountRec {
    const char* bsdName; ///< of a disk or partition
    uint32_t
        dissenterProcessID; ///< out, of an unmount that failed: the process that holds the volume; else 0
    bool mount; ///< else unmount
    bool
        mountWithArguments; ///< ask, after a plain mount, for one with "perm" and "nobrowse": not to be shown to users
    bool force; ///< unmount although files are open
    bool whole; ///< all volumes of the disk; then nobody looks afterwards whether the volume is mounted
};

constexpr uint32_t kHFSPlusFileSystem = 1; ///< with a journal
constexpr uint32_t kAPFSFileSystem = 2; ///< a volume in a container that is there
constexpr uint32_t kFAT32FileSystem = 3;
constexpr uint32_t kExFATFileSystem = 4;

/// What is asked of CreateFileSystem(). Texts end in a zero byte, volume name and passphrase in UTF-8.
struct CreateFileSystemRec {
    char bsdName[32]; ///< of the partition; of the container for an APFS volume
    char volumeName[512];
    uint32_t fileSystemType; ///< one of the numbers above
    bool encrypt; ///< APFS only: with the passphrase, where there is one
    char passphrase[256]; ///< APFS only; other programs may see it among the tool's arguments
    const char* passphraseHint; ///< APFS only, to a passphrase; may be null
};

/// Mounts a volume where the system wants it.
/// @param browsable false: to be mounted without being shown to users. As a plain mount is asked for first, whoever looks for
/// volumes may be shown it all the same.
/// @return whether it is mounted, or nobody in particular is to blame.
bool MountVolume(const char* bsdName, bool browsable);

/// @param processID may be null; else receives, when it failed, the process that holds the volume, or 0.
/// @return whether it is not mounted any more, or nobody in particular is to blame.
bool UnmountVolume(const char* bsdName, bool force, uint32_t* processID);

/// A request whose refusal names no process counts as done. One that was refused because of a process counts as done when the
/// volume turns out to be mounted, or not to be, as was asked for.
bool MountUnmountVolumeWithRec(MountUnmountRec* record);

/// Ejects a medium, or detaches an image. Its volumes have to be unmounted. @param processID as above.
/// @return whether it is done, or not mounted any more, or nobody in particular is to blame.
bool EjectDisk(const char* bsdName, uint32_t* processID);

/// @param name bytes as the file system has them. @return whether it is done, or nobody in particular is to blame.
bool RenameVolume(const char* bsdName, const char* name);

/// Makes a file system by the tool for it. Everything on the partition is lost.
/// @return whether a tool was run, or was to be, whatever came of it; false, without that, for an unknown type and for a name that the
/// device registry does not know. A process that cannot be forked any more is ended with status 1.
bool CreateFileSystem(const CreateFileSystemRec* record);

/// Makes an APFS container, by newfs_apfs. Everything on the partition is lost.
/// @return whether the tool succeeded; false, without running it, for a name that the device registry does not know. A
/// process that cannot be forked any more is ended with status 1. Where the tool cannot be started, the copy of the
/// process that was to become it comes back as well, with true.
bool CreateAPFS_Container(const char* bsdName);

/// Gives an HFS+ volume a journal, or takes it away, by diskutil. @param target a BSD name or a path, handed on as it is.
/// @return whether the tool succeeded.
bool EnableJournaling(const char* target);
bool DisableJournaling(const char* target);

/// Lets Spotlight index a volume, or not, by mdutil. @return whether the tool is there and succeeded.
bool EnableIndexing(const char* volumePath);
bool DisableIndexing(const char* volumePath);

/// @return whether mdutil says "Enabled" in the first 256 bytes of its answer.
bool ReturnIndexingState(const char* volumePath);
