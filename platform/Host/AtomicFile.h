#pragma once

#include <cstddef>
#include <string>

/// Replaces the file at `path` as a whole or not at all: writes a new file in the same folder, flushes it,
/// renames it over `path` and flushes the folder. A Mac offers this in no C interface, so both systems use
/// this one. A symbolic link at `path` is replaced, not followed. The mode is 0666 less the process's mask,
/// or, where a regular file is replaced, that file's permission bits. The temporary name is removed on
/// failure.
/// @param path host path of the file. @param bytes not null unless `size` is 0. @param size in bytes.
/// @return 0, or the errno of the step that failed; then the old file is still there, whole, unless only the
/// last step, flushing the folder, failed: the new file is then in place, but may not outlive a loss of
/// power.
int WriteFileAtomically(const std::string& path, const void* bytes, size_t size);

/// Makes what was renamed or removed in a folder last. File systems that have nothing of a folder to flush, which they tell
/// by EINVAL, count as having done so.
/// @param folder its descriptor. @return 0 or an errno.
int FlushFolder(int folder);
