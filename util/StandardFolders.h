#pragma once

#include <CoreServices/CoreServices.h>
#include <cstddef>

// Paths of folders that every Mac has, as a Mac program writes them. None is made or looked for. Buffers are the caller's,
// with their capacity in bytes; a path of 1024 bytes or more, or that does not fit with its zero byte, is
// paramErr. The home folder is the user database's, unless CFFIXED_USER_HOME names another.

/// "Library" in the user's home folder. @return paramErr as well for a user that the user database does not know.
OSStatus CreateUserLibraryPathname(char* buffer, size_t capacity);

/// "Application Support" in it, or a folder there. @param subfolder may be null.
OSStatus CreateUserApplicationSupportFolderPathname(const char* subfolder, char* buffer, size_t capacity);

/// "/Library/Application Support", or a folder there. @param subfolder may be null.
OSStatus CreateApplicationSupportFolderPathname(const char* subfolder, char* buffer, size_t capacity);

/// The same on another volume. @param volumePath with or without a "/" at its end; null for the start-up volume.
/// @param buffer cleared on failure.
OSStatus CreateApplicationSupportFolderPathnameForVolume(
    const char* volumePath, const char* subfolder, char* buffer, size_t capacity);

/// Where extensions that are not the system's belong on a volume: with the system's before 10.9, in a folder of their own
/// since. @param path receives a new zero-terminated text to be freed with free(), null on failure.
/// @param isTemporary a place for trials instead, whatever the volume.
/// @return noErr; fnfErr when the volume has no system; memFullErr; paramErr for nulls.
OSStatus CreateThirdPartyExtensionsPathnameForVolume(const char* volumePath, char** path, bool isTemporary);
