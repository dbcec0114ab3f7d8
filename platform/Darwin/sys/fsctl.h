#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Requests something of the file system that a path lies on. None of the host's takes a Mac's requests.
/// @return -1 with errno: ENOTSUP, or what keeps the path from being looked at (ENOENT …).
int fsctl(const char* path, unsigned long request, void* data, unsigned int options);

#ifdef __cplusplus
}
#endif
