#pragma once
#pragma GCC system_header // for the next line, which is no standard's

#include_next <sys/xattr.h>

#include <stdint.h>

#define XATTR_NOFOLLOW 0x0001 ///< of a symbolic link itself

/// Sets an extended attribute. It becomes one of the host's "user" attributes, which only files and folders have.
/// @param position must be 0. @param options 0 or XATTR_NOFOLLOW.
/// @return 0, or -1 with errno: EINVAL for another position or other options, ENAMETOOLONG for a name that leaves no room,
/// EPERM for what can have no attributes, symbolic links among it; else as the host's setxattr.
int setxattr(
    const char* path, const char* name, const void* value, size_t size, uint32_t position, int options);
