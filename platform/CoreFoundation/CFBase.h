#pragma once

#include <CoreFoundation/MacTypes.h>

// Types and functions common to every Core Foundation object.
//
// Ownership: a function with Create or Copy in its name answers a reference that the caller releases; one
// with Get answers a reference that lives as long as its owner. Objects may be retained and released from any
// thread at once, and immutable ones read from any thread; a mutable object is its users' to guard.
//
// Handing a function null or an object of another type where it needs one of its own type, an index or range
// outside the object, or an immutable object to change, is a fault of the program and ends it with a message.
// Text or bytes that cannot be converted are not: the answer is then null or false.

#define CF_EXTERN_C_BEGIN extern "C" {
#define CF_EXTERN_C_END }
#define CF_EXPORT extern

/// For static analysis: the caller releases the answer of a function whose name does not say so.
#ifdef __clang__
#define CF_RETURNS_RETAINED __attribute__((cf_returns_retained))
#else
#define CF_RETURNS_RETAINED
#endif

CF_EXTERN_C_BEGIN

using CFTypeID = unsigned long;
using CFOptionFlags = unsigned long;
using CFHashCode = unsigned long;
using CFIndex = signed long;

using CFTypeRef = const void*;
using CFPropertyListRef = CFTypeRef;

using CFStringRef = const struct __CFString*;
using CFMutableStringRef = struct __CFString*;
using CFAllocatorRef = const struct __CFAllocator*;
using CFNullRef = const struct __CFNull*;

enum CFComparisonResult : CFIndex {
    kCFCompareLessThan = -1,
    kCFCompareEqualTo = 0,
    kCFCompareGreaterThan = 1
};

using CFComparatorFunction = CFComparisonResult (*)(const void* val1, const void* val2, void* context);

enum { kCFNotFound = -1 };

struct CFRange {
    CFIndex location;
    CFIndex length;
};

inline CFRange CFRangeMake(CFIndex location, CFIndex length) { return { location, length }; }

/// The default allocator is null. Objects themselves always come from the heap; what an allocator decides is
/// how bytes that a caller hands over are freed: kCFAllocatorNull not at all, each of the others with free().
CF_EXPORT const CFAllocatorRef kCFAllocatorDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorSystemDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorMalloc;
CF_EXPORT const CFAllocatorRef kCFAllocatorNull;

CF_EXPORT CFTypeID CFAllocatorGetTypeID();
/// @param size in bytes. @return null for sizes below 1, for kCFAllocatorNull and when memory is short.
CF_EXPORT void* CFAllocatorAllocate(CFAllocatorRef allocator, CFIndex size, CFOptionFlags hint);
CF_EXPORT void CFAllocatorDeallocate(CFAllocatorRef allocator, void* ptr);

/// The one null object, for collections, which hold no null pointers.
CF_EXPORT const CFNullRef kCFNull;
CF_EXPORT CFTypeID CFNullGetTypeID();

/// @param cf not null. @return cf.
CF_EXPORT CFTypeRef CFRetain(CFTypeRef cf);
/// @param cf not null; destroyed with its last reference.
CF_EXPORT void CFRelease(CFTypeRef cf);
/// For debugging. Constants count a very large number that never changes.
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef cf);
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef cf);
/// Objects of different types are never equal. Neither may be null.
CF_EXPORT Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);
/// Equal objects have equal hashes.
CF_EXPORT CFHashCode CFHash(CFTypeRef cf);
/// Text for debugging, whose form may change. The caller releases it.
CF_EXPORT CFStringRef CFCopyDescription(CFTypeRef cf);
/// The class name, such as "CFString"; null for a number that is no class's. The caller releases it.
CF_EXPORT CFStringRef CFCopyTypeIDDescription(CFTypeID type_id);
/// Writes the description and a line feed to standard error; null shows as (null).
CF_EXPORT void CFShow(CFTypeRef obj);

CF_EXTERN_C_END
