#pragma once

#include <CoreFoundation/CFString.h>
#include <sys/types.h>

/// What the user knows a running application by, in the user's language. Applications are programs of application bundles
/// (Name.app/Contents/MacOS/…) and those that the host's menus offer by a desktop entry with the same program; where several
/// entries have it, the first found counts. On a Mac the workspace knows.
/// @return a new string that the caller releases; null for a process that is gone, may not be looked at, or is no
/// application.
CF_EXPORT CFStringRef HostApplicationName(pid_t process) CF_RETURNS_RETAINED;
