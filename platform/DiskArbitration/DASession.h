#pragma once

#include <CoreFoundation/CFRunLoop.h>

CF_EXTERN_C_BEGIN

/// What a program has with DiskArbitration. It keeps what it has found out about the volumes of this host: one session for
/// many disks asks once.
using DASessionRef = struct __DASession*;

CF_EXPORT CFTypeID DASessionGetTypeID();

/// @return to be released by the caller. Never null, whatever of the host is out of reach.
CF_EXPORT DASessionRef DASessionCreate(CFAllocatorRef allocator) CF_RETURNS_RETAINED;

/// From now on answers to this session's requests come on that loop, while it runs in that mode. What was answered before is
/// kept until then. Nothing is done for null.
CF_EXPORT void DASessionScheduleWithRunLoop(DASessionRef session, CFRunLoopRef runLoop, CFStringRef runLoopMode);
CF_EXPORT void DASessionUnscheduleFromRunLoop(
    DASessionRef session, CFRunLoopRef runLoop, CFStringRef runLoopMode);

CF_EXTERN_C_END
