#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFString.h>

// The settings of programs, kept in domains: one dictionary for each application, in
// <home>/Library/Preferences/<id>.plist. That is the domain of the current user on any host. Other
// combinations of user and host, and application ids that are empty or hold a slash, a null character or
// "..", have no domain: reading finds nothing, setting does nothing, synchronizing fails.
//
// A domain is read when it is first used and then answered from memory. Changes are held in memory until the
// domain is synchronized. Every function may be called from any thread.
//
// A file that cannot be read, or has more than 64 MiB, is never written over: synchronizing fails while it is
// so. A file that can be read but is damaged, or no dictionary, counts as having nothing in it; before it is
// replaced it is renamed to <id>.plist.damaged, or <id>.plist.damaged-2 and so on where that name is taken.

CF_EXTERN_C_BEGIN

CF_EXPORT const CFStringRef kCFPreferencesAnyApplication; ///< the file ".GlobalPreferences.plist"
/// The main bundle's identifier, else the name of the running program.
CF_EXPORT const CFStringRef kCFPreferencesCurrentApplication;
CF_EXPORT const CFStringRef kCFPreferencesAnyHost;
CF_EXPORT const CFStringRef kCFPreferencesCurrentHost;
CF_EXPORT const CFStringRef kCFPreferencesAnyUser;
CF_EXPORT const CFStringRef kCFPreferencesCurrentUser;

// For the current user on any host.

/// @return the application's value, else that of kCFPreferencesAnyApplication, immutable; null where neither
/// has one.
CF_EXPORT CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID);
/// Booleans, numbers (0 is false), and the texts "true", "yes", "1", "false", "no", "0" in capital or small
/// letters.
/// @param keyExistsAndHasValidFormat receives whether there is such a value; may be null. @return false where
/// not.
CF_EXPORT Boolean CFPreferencesGetAppBooleanValue(
    CFStringRef key, CFStringRef applicationID, Boolean* keyExistsAndHasValidFormat);
/// Whole numbers, booleans as 1 and 0, and texts that are a whole decimal number.
/// @param keyExistsAndHasValidFormat as above. @return 0 where there is none.
CF_EXPORT CFIndex CFPreferencesGetAppIntegerValue(
    CFStringRef key, CFStringRef applicationID, Boolean* keyExistsAndHasValidFormat);
/// @param value copied; null removes the key. What is no property list, or cannot be written as one, changes
/// nothing.
CF_EXPORT void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID);
CF_EXPORT Boolean CFPreferencesAppSynchronize(CFStringRef applicationID);

// For any one domain.

/// @return the domain's own value, immutable; null where it has none.
CF_EXPORT CFPropertyListRef CFPreferencesCopyValue(
    CFStringRef key, CFStringRef applicationID, CFStringRef userName, CFStringRef hostName);
/// @param keysToFetch null for all. @return never null; without the keys that have no value.
CF_EXPORT CFDictionaryRef CFPreferencesCopyMultiple(
    CFArrayRef keysToFetch, CFStringRef applicationID, CFStringRef userName, CFStringRef hostName);
/// @return null for a domain without keys.
CF_EXPORT CFArrayRef CFPreferencesCopyKeyList(
    CFStringRef applicationID, CFStringRef userName, CFStringRef hostName);
/// As CFPreferencesSetAppValue.
CF_EXPORT void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID,
    CFStringRef userName, CFStringRef hostName);
/// @param keysToSet set after the others are removed; may be null. @param keysToRemove may be null.
CF_EXPORT void CFPreferencesSetMultiple(CFDictionaryRef keysToSet, CFArrayRef keysToRemove,
    CFStringRef applicationID, CFStringRef userName, CFStringRef hostName);

/// Reads the domain again and, where changes are held, applies them key by key and replaces the file as a
/// whole; changes that other processes have made to other keys stay. Waits up to 5 seconds for other
/// processes that do the same. Missing folders below the home folder are made. Where the changes change
/// nothing, nothing is written.
/// @return false when that could not be done; the changes are then still held.
CF_EXPORT Boolean CFPreferencesSynchronize(
    CFStringRef applicationID, CFStringRef userName, CFStringRef hostName);

CF_EXTERN_C_END
