#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFTimeInterval = double; ///< seconds
using CFAbsoluteTime = CFTimeInterval; ///< seconds since 1 January 2001, 00:00 GMT
using CFDateRef = const struct __CFDate*;

/// Seconds from the named epoch's start to 1 January 2001.
CF_EXPORT const CFTimeInterval kCFAbsoluteTimeIntervalSince1970;
CF_EXPORT const CFTimeInterval kCFAbsoluteTimeIntervalSince1904;

/// The system clock, which may be set back.
CF_EXPORT CFAbsoluteTime CFAbsoluteTimeGetCurrent();

CF_EXPORT CFTypeID CFDateGetTypeID();
CF_EXPORT CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at);
CF_EXPORT CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate);
/// @return positive where `theDate` is the later.
CF_EXPORT CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef theDate, CFDateRef otherDate);
CF_EXPORT CFComparisonResult CFDateCompare(CFDateRef theDate, CFDateRef otherDate, void* context);

CF_EXTERN_C_END
