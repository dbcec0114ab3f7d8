#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstddef>

// What bundles on the disk say, found by their paths as a Mac program writes them; null is no path. Buffers are the caller's,
// with their capacity in bytes, and hold zero-terminated text on success only. Nothing here loads code.

/// The bundle's program, as the path that opens it on this host, of at most capacity - 1 bytes.
bool CreateExecutablePathnameFromBundlePathname(const char* bundlePath, char* buffer, size_t capacity);

/// The bundle's identifier, "com.example.Thing", if it is ASCII.
bool CreateBundleID_FromBundlePathname(const char* bundlePath, char* buffer, size_t capacity);

/// The last component of the path, without a "/" at its end; what lies there is not looked at.
/// @return false for a path that has no "/" before it, and one whose last component does not fit.
bool CreateExecutableBundleNameFromPathname(const char* path, char* buffer, size_t capacity);

/// The information file of a bundle with a Contents folder, mutable throughout.
/// @return a new dictionary that the caller releases; null when there is no such bundle or its file is no dictionary.
CFMutableDictionaryRef CreateInfoPListDictionaryForBundle(const char* bundlePath);
