#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Tells about the system. Known names: "kern.osproductversion", text: ProductVersion of the start-up
/// volume's SystemVersion.plist.
/// @param oldp receives the value, text with its final zero byte; null to learn the size only.
/// @param oldlenp in: the room at oldp in bytes; out: the bytes stored, or with oldp null the value's size.
/// Null only if oldp is.
/// @param newp must be null @param newlen must be 0: nothing known here can be set.
/// @return 0, or -1 with errno: ENOENT, no such name or no such fact on this volume; ENOMEM, the room is
/// short and was filled; EFAULT, a null where there may be none; EPERM, newp was not null.
int sysctlbyname(const char* name, void* oldp, size_t* oldlenp, void* newp, size_t newlen);

#ifdef __cplusplus
}
#endif
