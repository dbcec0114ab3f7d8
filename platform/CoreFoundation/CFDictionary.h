#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

using CFDictionaryRef = const struct __CFDictionary*;
using CFMutableDictionaryRef = struct __CFDictionary*;

using CFDictionaryRetainCallBack = const void* (*)(CFAllocatorRef allocator, const void* value);
using CFDictionaryReleaseCallBack = void (*)(CFAllocatorRef allocator, const void* value);
using CFDictionaryCopyDescriptionCallBack = CFStringRef (*)(const void* value);
using CFDictionaryEqualCallBack = Boolean (*)(const void* value1, const void* value2);
using CFDictionaryHashCallBack = CFHashCode (*)(const void* value);
using CFDictionaryApplierFunction = void (*)(const void* key, const void* value, void* context);

/// What a dictionary does with its keys. A null member stands for: keep the pointer as it is, let it go
/// without a call, show the address, compare the addresses, hash the address.
struct CFDictionaryKeyCallBacks {
    CFIndex version; ///< 0
    CFDictionaryRetainCallBack retain; ///< answers what the dictionary keeps
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
    CFDictionaryHashCallBack hash;
};

/// What a dictionary does with its values; null members as above.
struct CFDictionaryValueCallBacks {
    CFIndex version; ///< 0
    CFDictionaryRetainCallBack retain; ///< answers what the dictionary keeps
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
};

/// For keys and values that are Core Foundation objects, none of them null.
CF_EXPORT const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
CF_EXPORT const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
/// For keys that are strings: the dictionary keeps an immutable copy, so that a mutable key may change later.
CF_EXPORT const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks;

CF_EXPORT CFTypeID CFDictionaryGetTypeID();

/// @param keys, values C arrays to copy from, may be null when `numValues` is 0; of equal keys the first
/// counts.
/// @param keyCallBacks, valueCallBacks copied; null for pointers that are neither retained nor compared by
/// content.
/// @return null for a negative count.
CF_EXPORT CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
    CFIndex numValues, const CFDictionaryKeyCallBacks* keyCallBacks,
    const CFDictionaryValueCallBacks* valueCallBacks);
CF_EXPORT CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef allocator, CFDictionaryRef theDict);
/// @param capacity a hint at the number of values, no limit.
CF_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
    const CFDictionaryKeyCallBacks* keyCallBacks, const CFDictionaryValueCallBacks* valueCallBacks);
CF_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutableCopy(
    CFAllocatorRef allocator, CFIndex capacity, CFDictionaryRef theDict);

CF_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef theDict);
CF_EXPORT Boolean CFDictionaryContainsKey(CFDictionaryRef theDict, const void* key);
/// Takes time in proportion to the count.
CF_EXPORT Boolean CFDictionaryContainsValue(CFDictionaryRef theDict, const void* value);
/// @return null where the key is absent.
CF_EXPORT const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key);
/// @param value receives the value where the key is there, else is left alone; may be null.
CF_EXPORT Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef theDict, const void* key, const void** value);
/// @param keys, values each null or with room for the count; both come in the same order, which is no
/// promise.
CF_EXPORT void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values);
/// The applier must not change the dictionary.
CF_EXPORT void CFDictionaryApplyFunction(
    CFDictionaryRef theDict, CFDictionaryApplierFunction applier, void* context);

/// Only where the key is absent.
CF_EXPORT void CFDictionaryAddValue(CFMutableDictionaryRef theDict, const void* key, const void* value);
/// Whether or not the key is there; a key that is there stays the same object.
CF_EXPORT void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value);
/// Only where the key is there.
CF_EXPORT void CFDictionaryReplaceValue(CFMutableDictionaryRef theDict, const void* key, const void* value);
CF_EXPORT void CFDictionaryRemoveValue(CFMutableDictionaryRef theDict, const void* key);
CF_EXPORT void CFDictionaryRemoveAllValues(CFMutableDictionaryRef theDict);

CF_EXTERN_C_END
