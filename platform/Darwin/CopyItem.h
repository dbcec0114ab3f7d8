#pragma once

#include "copyfile.h"

#include <string>
#include <sys/stat.h>
#include <vector>

// The parts of copyfile(). Each function returns 0 or an errno.

/// One call of copyfile(): what it is to do, and what it has learnt on the way.
struct CopyJob {
    copyfile_flags_t flags;
    bool isRoot; ///< may give files away and see the system's attributes
    bool canClone = true; ///< until a file system says otherwise
    bool canCopyRange = true; ///< likewise
    off_t copied = 0; ///< bytes
    off_t cloned = 0; ///< of them, bytes shared with the original
    std::vector<char> buffer {}; ///< bytes on their way; allocated when first needed
    std::vector<char> names {}; ///< attribute names

    bool has(copyfile_flags_t any) const { return (flags & any) != 0; }
};

/// A name to be looked up in a folder. Neither is owned.
struct CopyPlace {
    int folder; ///< descriptor, or AT_FDCWD
    const char* name;
    bool follow; ///< a symbolic link of that name is followed
};

inline bool IsSameFile(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Copies the bytes of a file, its holes left holes. Both descriptors are at the start; `to` is empty.
int CopyData(CopyJob& job, int from, int to, const struct stat& source);

/// Copies extended attributes, ACLs, owner, mode and times as the job's flags say, for a file or folder.
/// @param made the copy as it was before.
int CopyMetadata(CopyJob& job, int from, int to, const struct stat& source, const struct stat& made);

/// Copies one regular file or symbolic link.
/// @param type as d_type of a folder's entry, known to be right a moment ago. @return ENOTSUP for other
/// types.
int CopyItem(CopyJob& job, const CopyPlace& from, const CopyPlace& to, unsigned char type);

/// Copies a folder, with everything in it when the job is recursive.
int CopyFolder(CopyJob& job, const CopyPlace& from, const CopyPlace& to);
