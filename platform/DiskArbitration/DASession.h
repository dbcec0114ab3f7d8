#pragma once

#include <CoreFoundation/CFRunLoop.h>

CF_EXTERN_C_BEGIN

/// What a program has with DiskArbitration: its requests, and the answers to them. All sessions share what was found out
/// about the volumes of this host. Its functions may be called from any thread.
using DASessionRef = struct __DASession*;

CF_EXPORT CFTypeID DASessionGetTypeID();

/// @return to be released by the caller. Never null, whatever of the host is out of reach.
CF_EXPORT DASessionRef DASessionCreate(CFAllocatorRef allocator) CF_RETURNS_RETAINED;

/// From now on answers to this session's requests come on that loop, while it runs in that mode; in how many others they
/// may come as well, each comes once. What was answered before is kept until then. The loop does not hold the session.
/// Nothing is done for null, here and below.
CF_EXPORT void DASessionScheduleWithRunLoop(
    DASessionRef session, CFRunLoopRef runLoop, CFStringRef runLoopMode);
/// Answers are kept from now on, unless the session is scheduled elsewhere; one whose callback has begun is not called
/// back.
CF_EXPORT void DASessionUnscheduleFromRunLoop(
    DASessionRef session, CFRunLoopRef runLoop, CFStringRef runLoopMode);

CF_EXTERN_C_END
