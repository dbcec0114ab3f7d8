#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/MacTypes.h>

CF_EXTERN_C_BEGIN

/// Why somebody refused. It is a dictionary: "DAStatus", a number; "DAStatusString", a sentence, where there is one;
/// "DAProcessID", the number of the process that holds the volume, where that is the reason and the process is known.
using DADissenterRef = const struct __DADissenter*;

using DAReturn = SInt32;

enum : DAReturn {
    kDAReturnSuccess = 0,
    kDAReturnError = static_cast<DAReturn>(0xF8DA0001),
    kDAReturnBusy = static_cast<DAReturn>(0xF8DA0002),
    kDAReturnBadArgument = static_cast<DAReturn>(0xF8DA0003),
    kDAReturnExclusiveAccess = static_cast<DAReturn>(0xF8DA0004),
    kDAReturnNoResources = static_cast<DAReturn>(0xF8DA0005),
    kDAReturnNotFound = static_cast<DAReturn>(0xF8DA0006),
    kDAReturnNotMounted = static_cast<DAReturn>(0xF8DA0007),
    kDAReturnNotPermitted = static_cast<DAReturn>(0xF8DA0008),
    kDAReturnNotPrivileged = static_cast<DAReturn>(0xF8DA0009),
    kDAReturnNotReady = static_cast<DAReturn>(0xF8DA000A),
    kDAReturnNotWritable = static_cast<DAReturn>(0xF8DA000B),
    kDAReturnUnsupported = static_cast<DAReturn>(0xF8DA000C)
};

/// @param string a sentence for people; may be null. @return to be released by the caller.
CF_EXPORT DADissenterRef DADissenterCreate(
    CFAllocatorRef allocator, DAReturn status, CFStringRef string) CF_RETURNS_RETAINED;
/// @return kDAReturnSuccess for null.
CF_EXPORT DAReturn DADissenterGetStatus(DADissenterRef dissenter);
/// @return null where there is none, and for null; good as long as the dissenter.
CF_EXPORT CFStringRef DADissenterGetStatusString(DADissenterRef dissenter);

CF_EXTERN_C_END
