#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFDataRef = const struct __CFData*;
using CFMutableDataRef = struct __CFData*;

CF_EXPORT CFTypeID CFDataGetTypeID();

/// @param bytes copied; may be null when `length` is 0. @param length in bytes.
/// @return null for a negative length or when memory is short.
CF_EXPORT CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
/// Wraps `bytes` without copying them; they must stay as they are while the object lives.
/// @param bytesDeallocator what frees them in the end: kCFAllocatorNull nothing, any other free().
/// @return null for a negative length; the bytes are then still the caller's.
CF_EXPORT CFDataRef CFDataCreateWithBytesNoCopy(
    CFAllocatorRef allocator, const UInt8* bytes, CFIndex length, CFAllocatorRef bytesDeallocator);
CF_EXPORT CFDataRef CFDataCreateCopy(CFAllocatorRef allocator, CFDataRef theData);
/// @param capacity the most bytes that the object may ever hold, 0 for no limit. Growing past it is a fault.
CF_EXPORT CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity);
/// @param capacity as above; not below the length of `theData` unless 0.
CF_EXPORT CFMutableDataRef CFDataCreateMutableCopy(
    CFAllocatorRef allocator, CFIndex capacity, CFDataRef theData);

CF_EXPORT CFIndex CFDataGetLength(CFDataRef theData);
/// @return valid until the object changes or goes; may be null when the length is 0.
CF_EXPORT const UInt8* CFDataGetBytePtr(CFDataRef theData);
CF_EXPORT UInt8* CFDataGetMutableBytePtr(CFMutableDataRef theData);
/// @param buffer receives range.length bytes.
CF_EXPORT void CFDataGetBytes(CFDataRef theData, CFRange range, UInt8* buffer);

/// New bytes are zero. A size that memory cannot hold ends the program.
CF_EXPORT void CFDataSetLength(CFMutableDataRef theData, CFIndex length);
CF_EXPORT void CFDataIncreaseLength(CFMutableDataRef theData, CFIndex extraLength);
/// @param bytes may lie inside the object itself.
CF_EXPORT void CFDataAppendBytes(CFMutableDataRef theData, const UInt8* bytes, CFIndex length);
CF_EXPORT void CFDataReplaceBytes(
    CFMutableDataRef theData, CFRange range, const UInt8* newBytes, CFIndex newLength);
CF_EXPORT void CFDataDeleteBytes(CFMutableDataRef theData, CFRange range);

CF_EXTERN_C_END
