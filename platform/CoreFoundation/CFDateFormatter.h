#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFLocale.h>

// Dates as text, by ICU, in the time zone of the process (TZ, else the host's).

CF_EXTERN_C_BEGIN

using CFDateFormatterRef = struct __CFDateFormatter*;

enum CFDateFormatterStyle : CFIndex {
    kCFDateFormatterNoStyle = 0,
    kCFDateFormatterShortStyle = 1,
    kCFDateFormatterMediumStyle = 2,
    kCFDateFormatterLongStyle = 3,
    kCFDateFormatterFullStyle = 4
};

CF_EXPORT CFTypeID CFDateFormatterGetTypeID();

/// @param locale null for the current one. @param dateStyle, @param timeStyle how long each part is; kCFDateFormatterNoStyle
/// leaves it out. @return null for a style that does not exist, and where ICU has no data.
CF_EXPORT CFDateFormatterRef CFDateFormatterCreate(CFAllocatorRef allocator, CFLocaleRef locale,
    CFDateFormatterStyle dateStyle, CFDateFormatterStyle timeStyle);

/// @param formatString a pattern of Unicode's, such as "yyyy-MM-dd"; null changes nothing.
CF_EXPORT void CFDateFormatterSetFormat(CFDateFormatterRef formatter, CFStringRef formatString);

/// @return a new string that the caller releases; null for a null date and where ICU fails.
CF_EXPORT CFStringRef CFDateFormatterCreateStringWithDate(
    CFAllocatorRef allocator, CFDateFormatterRef formatter, CFDateRef date);
CF_EXPORT CFStringRef CFDateFormatterCreateStringWithAbsoluteTime(
    CFAllocatorRef allocator, CFDateFormatterRef formatter, CFAbsoluteTime at);

CF_EXTERN_C_END
