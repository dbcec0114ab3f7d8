#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFLocaleRef = const struct __CFLocale*;
using CFLocaleIdentifier = CFStringRef;

CF_EXPORT CFTypeID CFLocaleGetTypeID();

/// @param localeIdentifier such as "de_AT"; copied. @return null for null.
CF_EXPORT CFLocaleRef CFLocaleCreate(CFAllocatorRef allocator, CFLocaleIdentifier localeIdentifier);

/// What the user expects of dates: "AppleLocale" of the global preferences where it is a string, else the host's, from
/// LC_ALL, LC_TIME or LANG; "en_US_POSIX" where none of them says anything.
CF_EXPORT CFLocaleRef CFLocaleCopyCurrent();

/// Borrowed from the locale.
CF_EXPORT CFLocaleIdentifier CFLocaleGetIdentifier(CFLocaleRef locale);

CF_EXTERN_C_END
