#pragma once

#include <CoreFoundation/CoreFoundation.h>

// The part of Apple's <SystemConfiguration/SystemConfiguration.h> for the names of the computer. All functions may be called
// from any thread.

CF_EXTERN_C_BEGIN

/// Where a Mac keeps its configuration. Here nobody has one: pass null.
using SCDynamicStoreRef = const struct __SCDynamicStore*;

enum {
    kSCStatusOK = 0,
    kSCStatusNoKey = 1004 ///< there is no such value
};

/// @return how the calling thread's last call of the other functions ended: a kSCStatus.
CF_EXPORT int SCError();

/// The name that users gave the computer.
/// @param nameEncoding receives the encoding in which the name is best kept; may be null.
/// @return to be released by the caller; null where it has none.
CF_EXPORT CFStringRef SCDynamicStoreCopyComputerName(
    SCDynamicStoreRef store, CFStringEncoding* nameEncoding) CF_RETURNS_RETAINED;

/// The name by which the computer answers on the local network: letters, digits and hyphens, without ".local".
/// @return to be released by the caller; null where it has none.
CF_EXPORT CFStringRef SCDynamicStoreCopyLocalHostName(SCDynamicStoreRef store) CF_RETURNS_RETAINED;

CF_EXTERN_C_END
