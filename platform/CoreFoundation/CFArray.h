#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFArrayRef = const struct __CFArray*;
using CFMutableArrayRef = struct __CFArray*;

using CFArrayRetainCallBack = const void* (*)(CFAllocatorRef allocator, const void* value);
using CFArrayReleaseCallBack = void (*)(CFAllocatorRef allocator, const void* value);
using CFArrayCopyDescriptionCallBack = CFStringRef (*)(const void* value);
using CFArrayEqualCallBack = Boolean (*)(const void* value1, const void* value2);
using CFArrayApplierFunction = void (*)(const void* value, void* context);

/// What an array does with its values. A null member stands for: keep the pointer as it is, let it go without
/// a call, show the address, compare the addresses.
struct CFArrayCallBacks {
    CFIndex version; ///< 0
    CFArrayRetainCallBack retain; ///< answers what the array keeps
    CFArrayReleaseCallBack release;
    CFArrayCopyDescriptionCallBack copyDescription;
    CFArrayEqualCallBack equal;
};

/// For values that are Core Foundation objects, none of them null.
CF_EXPORT const CFArrayCallBacks kCFTypeArrayCallBacks;

CF_EXPORT CFTypeID CFArrayGetTypeID();

/// @param values the C array to copy from, may be null when `numValues` is 0. @param callBacks copied; null
/// for pointers that are neither retained nor compared by content. @return null for a negative count.
CF_EXPORT CFArrayRef CFArrayCreate(
    CFAllocatorRef allocator, const void** values, CFIndex numValues, const CFArrayCallBacks* callBacks);
CF_EXPORT CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef theArray);
/// @param capacity a hint at the number of values, no limit.
CF_EXPORT CFMutableArrayRef CFArrayCreateMutable(
    CFAllocatorRef allocator, CFIndex capacity, const CFArrayCallBacks* callBacks);
CF_EXPORT CFMutableArrayRef CFArrayCreateMutableCopy(
    CFAllocatorRef allocator, CFIndex capacity, CFArrayRef theArray);

CF_EXPORT CFIndex CFArrayGetCount(CFArrayRef theArray);
CF_EXPORT const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx);
/// @param values receives range.length pointers.
CF_EXPORT void CFArrayGetValues(CFArrayRef theArray, CFRange range, const void** values);
CF_EXPORT CFIndex CFArrayGetCountOfValue(CFArrayRef theArray, CFRange range, const void* value);
CF_EXPORT Boolean CFArrayContainsValue(CFArrayRef theArray, CFRange range, const void* value);
/// @return kCFNotFound where no value of the range is equal.
CF_EXPORT CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef theArray, CFRange range, const void* value);
CF_EXPORT CFIndex CFArrayGetLastIndexOfValue(CFArrayRef theArray, CFRange range, const void* value);
/// The applier must not change the array.
CF_EXPORT void CFArrayApplyFunction(
    CFArrayRef theArray, CFRange range, CFArrayApplierFunction applier, void* context);

CF_EXPORT void CFArrayAppendValue(CFMutableArrayRef theArray, const void* value);
/// @param idx from 0 to the count; at the count the value is appended.
CF_EXPORT void CFArrayInsertValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void* value);
/// @param idx as above.
CF_EXPORT void CFArraySetValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void* value);
CF_EXPORT void CFArrayRemoveValueAtIndex(CFMutableArrayRef theArray, CFIndex idx);
CF_EXPORT void CFArrayRemoveAllValues(CFMutableArrayRef theArray);
CF_EXPORT void CFArrayExchangeValuesAtIndices(CFMutableArrayRef theArray, CFIndex idx1, CFIndex idx2);
/// @param otherArray may be `theArray` itself.
CF_EXPORT void CFArrayAppendArray(CFMutableArrayRef theArray, CFArrayRef otherArray, CFRange otherRange);
/// Equal values keep their order.
CF_EXPORT void CFArraySortValues(
    CFMutableArrayRef theArray, CFRange range, CFComparatorFunction comparator, void* context);

CF_EXTERN_C_END
