#pragma once

#include <CoreFoundation/CFRunLoop.h>

// Tells a run loop when a file can be read or written without waiting.

CF_EXTERN_C_BEGIN

using CFFileDescriptorRef = struct __CFFileDescriptor*;
using CFFileDescriptorNativeDescriptor = int;

enum : CFOptionFlags {
    kCFFileDescriptorReadCallBack = 1, ///< there is something to be read, or its end
    kCFFileDescriptorWriteCallBack = 2
};

/// @param callBackTypes what it is ready for. These callbacks are disabled by then; whoever wants another one enables it
/// again.
using CFFileDescriptorCallBack = void (*)(CFFileDescriptorRef f, CFOptionFlags callBackTypes, void* info);

struct CFFileDescriptorContext {
    CFIndex version; ///< 0
    void* info; ///< handed to the callback
    void* (*retain)(void* info); ///< this and the others may be null
    void (*release)(void* info);
    CFStringRef (*copyDescription)(void* info); ///< is not asked
};

CF_EXPORT CFTypeID CFFileDescriptorGetTypeID();
/// @param fd open. @param closeOnInvalidate whether the object is to close it.
/// @param callout not null. @param context copied; may be null.
/// @return without any callback enabled; to be released by the caller. Null for a negative fd.
CF_EXPORT CFFileDescriptorRef CFFileDescriptorCreate(CFAllocatorRef allocator,
    CFFileDescriptorNativeDescriptor fd, Boolean closeOnInvalidate, CFFileDescriptorCallBack callout,
    const CFFileDescriptorContext* context) CF_RETURNS_RETAINED;
/// Each is called once.
CF_EXPORT void CFFileDescriptorEnableCallBacks(CFFileDescriptorRef f, CFOptionFlags callBackTypes);
CF_EXPORT void CFFileDescriptorDisableCallBacks(CFFileDescriptorRef f, CFOptionFlags callBackTypes);
/// No callback comes any more. Happens by itself with the last reference.
CF_EXPORT void CFFileDescriptorInvalidate(CFFileDescriptorRef f);
CF_EXPORT Boolean CFFileDescriptorIsValid(CFFileDescriptorRef f);
/// @return a source that holds the object; to be released by the caller. Null for an invalid object.
CF_EXPORT CFRunLoopSourceRef CFFileDescriptorCreateRunLoopSource(
    CFAllocatorRef allocator, CFFileDescriptorRef f, CFIndex order) CF_RETURNS_RETAINED;

CF_EXTERN_C_END
