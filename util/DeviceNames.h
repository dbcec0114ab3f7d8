#pragma once

#include <cstddef>
#include <cstdint>

// BSD names, "disk2" of a whole disk and "disk2s3" of a partition, and the pathnames "/dev/disk2" and "/dev/rdisk2" of block
// and raw devices. Texts end in a zero byte; null is none of all this, and is left alone.

/// Whether it is at most 31 letters and digits, as every BSD name is: a text that is not must not reach a tool.
bool IsPlainBSDName(const char* name);

/// Whether the path begins with "/dev/rdisk" or "/dev/null".
bool PathnameIsRawDisk(const char* path);

/// Whether it is "disk", digits, any number of "s", digits, and no more, and the current folder has nothing of that name.
bool PathnameIsBSDNode(const char* name);

/// Whether an "s" comes after the last "k".
bool IsDiskAPartition(const char* name);

/// A number made of all characters behind the last "k", from the end on: ten times what came before, the character's code,
/// and 48, in 32 bits. It tells names apart and is not the number that a reader sees there. 0 for an empty text.
uint32_t ReturnPartitionSliceNumber(const char* name);

/// Replaces a BSD name by the raw device's path. @param size of the buffer; the path is cut to it and to 31 characters.
void ConvertBSDNodeToPathname(char* buffer, size_t size);

/// Cuts the path at the first "s" behind the last "k": /dev/disk2s1 becomes /dev/disk2.
void ConvertPartitionPathnameToDiskPathname(char* path);

/// Cuts the path at its last "s", whatever it belongs to: /dev/disk2s1 becomes /dev/disk2, but /dev/disk2 becomes /dev/di.
void ConvertPartitionPathnameToTrackPathname(char* path);

/// The BSD name in the path of a block or raw device, or one by itself.
/// @param destination has to have one byte more than `size`, for a name of exactly that length.
/// @return false, with nothing written, for other texts and for a name that is longer than `size`.
bool ExtractBSDNameFromPathname(const char* path, char* destination, size_t size);

/// The disk's name out of its partition's.
/// @param destination zeroed, then filled. @return whether the name of the partition fits; else it is cut there.
bool ExtractBSD_DiskNameFromBSD_PartitionName(const char* partitionName, char* destination, size_t size);
