#pragma once

#include <cstdint>

// Whole files and folders. Paths are zero-terminated and as a Mac program writes them; null is no path and fails. What
// changes files is done by the system's own tools for the most part, and what a function answers is what it makes of the
// tool's end, no more.

/// Copies with "cp -rf".
/// @return false only when cp ended by itself with another status than 0, and when there was no child: a cp that was killed
/// counts as having succeeded, and so does a missing one,
/// and one whose end this process does not hear of.
bool CopyFileOrDirectory(const char* source, const char* destination);
/// Moves with "mv -f". @return as for copying.
bool MoveFileOrDirectory(const char* source, const char* destination);
/// Makes the file, or sets its times to now, with "touch". @return as for copying.
bool TouchFileOrDirectory(const char* path);
/// Removes with "rm -rf". @return whether nothing was there, as stat() sees it, or rm ended by itself with status 0. Should
/// rm be missing, the child that was to become it comes back as a copy of the caller with the answer false.
bool RemoveFileOrDirectory(const char* path);
/// Makes a symbolic link with "ln -s". @param target what the link leads to, which need not exist; a path from the root is
/// written into the link as this host knows it. @return whether ln ended by itself with status 0, or is missing.
bool CreateSymbolicLink(const char* target, const char* linkPath);

/// Has the system keep owners and permissions on a volume, or not, with "vsdbutil", as root.
/// @return what waiting for it answered: its process, or -1.
int SetOwnershipAndPermissions(const char* volumePath, bool enable);
/// Has the kernel's extensions put together anew for a volume with "kextcache". Does nothing, successfully, where the
/// volume's system or the running one is older than 10.4.8, or unknown. A failure counts as success where the volume's
/// system is 10.5 or later and the running one is not.
bool UpdateAppleBootPartitionsMKextCacheForVolume(const char* volumePath);

/// @param size receives the size in bytes; 0 for a folder and on failure. @param isFolder receives whether it is one. Both
/// may be null. Links are followed.
bool FileOrDirectoryExists(const char* path, uint64_t* size, bool* isFolder);
/// Whether there is something that is no folder and belongs to root.
bool FileIsOwnedByRoot(const char* path);
/// Gives the item to the real user, with its group as it is. @return true as well where the file system has no owners.
bool RestoreFileOrDirectoryOwnership(const char* path);
/// Sets or clears the Finder's mark of an invisible item, and with it all others: the record is written anew. Links are not
/// followed. @return 0, whatever came of it.
int MakeFileOrDirectoryInisible(const char* path, bool invisible);

/// The part behind the last "/" that is not the path's last character; the whole path when there is none. Borrowed from
/// the path; null for null.
const char* LastPathComponent(const char* path);
/// The part behind the last "."; the whole path when there is none. Borrowed from the path; null for null.
const char* FileExtension(const char* path);
