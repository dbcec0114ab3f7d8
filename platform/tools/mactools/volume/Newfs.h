#pragma once

#include "Tool.h"

// newfs_apfs, newfs_exfat, newfs_hfs, newfs_msdos: make a file system on a disk, a partition or an image that nobody uses, with
// the host's tool for it, whose output is theirs. Everything on it is lost; nothing is when the command is refused.
// @return the host's tool's status; 64 for a wrong command line; 1 for a name that the file system cannot have and for a
// device that is not there or in use.

/// A container, with one volume in it: the host's tool makes none without, so -C makes no difference.
int NewfsApfs(const Arguments& arguments);
int NewfsExfat(const Arguments& arguments);
int NewfsHfs(const Arguments& arguments); ///< HFS+, where the host has a tool for it
int NewfsMsdos(const Arguments& arguments); ///< FAT; small letters of the name become capitals
