#pragma once

#include <stdio.h>

#define RENAME_SWAP 0x00000002 ///< exchange the two, which must both exist; they may be of different kinds
#define RENAME_EXCL 0x00000004 ///< fail with EEXIST where `to` exists

#ifdef __cplusplus
extern "C" {
#endif

/// renameat(2) with flags; relative names are looked up in the folders `fromfd` and `tofd` (or AT_FDCWD).
/// Either flag makes the change in one step that nobody can see half done.
/// @return 0, or -1 with errno: EINVAL for unknown flags and for both at once; ENOTSUP, or EINVAL here where
/// the file system itself answers so, when it has no such rename; otherwise as renameat.
int renameatx_np(int fromfd, const char* from, int tofd, const char* to, unsigned int flags);

#ifdef __cplusplus
}
#endif
