#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>

CF_EXTERN_C_BEGIN

using CFErrorRef = struct __CFError*;
using CFErrorDomain = CFStringRef;

CF_EXPORT const CFErrorDomain kCFErrorDomainPOSIX; ///< codes are errno values
CF_EXPORT const CFErrorDomain kCFErrorDomainOSStatus; ///< codes are OSStatus values
CF_EXPORT const CFErrorDomain kCFErrorDomainCocoa;
CF_EXPORT const CFStringRef kCFErrorLocalizedDescriptionKey;

CF_EXPORT CFTypeID CFErrorGetTypeID();
/// @param userInfo copied; may be null.
CF_EXPORT CFErrorRef CFErrorCreate(
    CFAllocatorRef allocator, CFErrorDomain domain, CFIndex code, CFDictionaryRef userInfo);
CF_EXPORT CFErrorDomain CFErrorGetDomain(CFErrorRef err);
CF_EXPORT CFIndex CFErrorGetCode(CFErrorRef err);
/// Never null; empty where there is none.
CF_EXPORT CFDictionaryRef CFErrorCopyUserInfo(CFErrorRef err);
/// A sentence for people: the user info's kCFErrorLocalizedDescriptionKey, else one made of domain and code.
CF_EXPORT CFStringRef CFErrorCopyDescription(CFErrorRef err);

CF_EXTERN_C_END
