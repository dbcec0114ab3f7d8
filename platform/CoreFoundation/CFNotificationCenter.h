#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>

// Notification centers call observers back, one after the other in the order of their registration and on the
// thread that posts, before posting returns. Every function may be called from any thread, and from
// callbacks: an observer added while a notification is delivered does not get that one; one removed gets
// nothing that has not begun.

CF_EXTERN_C_BEGIN

using CFNotificationCenterRef = struct __CFNotificationCenter*;
using CFNotificationName = CFStringRef;

using CFNotificationCallback = void (*)(CFNotificationCenterRef center, void* observer,
    CFNotificationName name, const void* object, CFDictionaryRef userInfo);

/// What becomes of notifications while a program is suspended. Nothing suspends a center here.
enum CFNotificationSuspensionBehavior : CFIndex {
    CFNotificationSuspensionBehaviorDrop = 1,
    CFNotificationSuspensionBehaviorCoalesce = 2,
    CFNotificationSuspensionBehaviorHold = 3,
    CFNotificationSuspensionBehaviorDeliverImmediately = 4
};

enum : CFOptionFlags {
    kCFNotificationDeliverImmediately = 1,
    kCFNotificationPostToAllSessions = 2 ///< no difference here
};

CF_EXPORT CFTypeID CFNotificationCenterGetTypeID();

/// The center of this process. Objects are compared by address. @return never null, the process's own.
CF_EXPORT CFNotificationCenterRef CFNotificationCenterGetLocalCenter();
/// The center whose objects are strings, compared by content. It reaches this process only. @return as above.
CF_EXPORT CFNotificationCenterRef CFNotificationCenterGetDistributedCenter();

/// The same observer may register several times and is then called as often.
/// @param observer handed to the callback, not retained; may be null. @param callBack not null.
/// @param name null for all names. @param object null for all objects; not retained, except the distributed
/// center's.
CF_EXPORT void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
    CFNotificationCallback callBack, CFStringRef name, const void* object,
    CFNotificationSuspensionBehavior suspensionBehavior);
/// Removes the registrations of the observer for exactly this name and object.
/// @param name null for any name. @param object null for any object.
CF_EXPORT void CFNotificationCenterRemoveObserver(
    CFNotificationCenterRef center, const void* observer, CFNotificationName name, const void* object);
CF_EXPORT void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer);

/// @param name not null. @param object, userInfo may be null; they must live until this returns.
/// @param deliverImmediately no difference here.
CF_EXPORT void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFNotificationName name,
    const void* object, CFDictionaryRef userInfo, Boolean deliverImmediately);
CF_EXPORT void CFNotificationCenterPostNotificationWithOptions(CFNotificationCenterRef center,
    CFNotificationName name, const void* object, CFDictionaryRef userInfo, CFOptionFlags options);

CF_EXTERN_C_END
