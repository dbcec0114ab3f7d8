#pragma once

#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

/// The name of the user to whom this process belongs, from the user database.
/// @param useShortName the one for logging in; else the full name, or that one where the user has no other.
/// @return to be released by the caller; null where the database does not know the user.
CF_EXPORT CFStringRef CSCopyUserName(Boolean useShortName) CF_RETURNS_RETAINED;

CF_EXTERN_C_END
