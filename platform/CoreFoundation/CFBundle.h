#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

// A bundle is a folder with an information file and resources, in one of two shapes:
//   Contents/Info.plist, Contents/Resources/, Contents/MacOS/<executable>
//   Info.plist, resources in Resources/ or beside it, <executable>
// What a bundle has read it keeps; a new object sees what has changed on disk.
// Paths in URLs are those of a Mac; they are looked up in the start-up volume.

CF_EXTERN_C_BEGIN

using CFBundleRef = struct __CFBundle*;

CF_EXPORT const CFStringRef kCFBundleInfoDictionaryVersionKey;
CF_EXPORT const CFStringRef kCFBundleExecutableKey;
CF_EXPORT const CFStringRef kCFBundleIdentifierKey;
CF_EXPORT const CFStringRef kCFBundleVersionKey;
CF_EXPORT const CFStringRef kCFBundleDevelopmentRegionKey;
CF_EXPORT const CFStringRef kCFBundleNameKey;
CF_EXPORT const CFStringRef kCFBundleLocalizationsKey;

CF_EXPORT CFTypeID CFBundleGetTypeID();

/// The bundle that the running executable lies in as <bundle>/Contents/MacOS/<executable>, else the
/// executable's folder. Where the environment has CFProcessPath, that is taken for the executable's path; it
/// is looked at in each call.
/// @return never released, the same object for the same path; null when there is no such folder.
CF_EXPORT CFBundleRef CFBundleGetMainBundle();
/// @param bundleURL of a folder. @return null when there is no such folder; else the caller releases it.
CF_EXPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL);

/// The folder, with an absolute path.
CF_EXPORT CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
/// The content of the information file; empty where that is missing, unreadable, or no dictionary. Never
/// null.
CF_EXPORT CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle);
/// The value in the language chosen, from the table "InfoPlist", else in the information file; null where
/// neither has it.
CF_EXPORT CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key);
/// Null where the information file has none, or not as a string.
CF_EXPORT CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);
/// As above.
CF_EXPORT CFStringRef CFBundleGetDevelopmentRegion(CFBundleRef bundle);
/// The file that the information file names; without a name there, the running executable for the main
/// bundle, else a file called like the bundle without its extension. Null when no such file exists.
CF_EXPORT CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle);
/// The folder may be missing.
CF_EXPORT CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle);

/// Looks in the resources folder, then in the <language>.lproj folders of the languages chosen for the user.
/// @param resourceName file name; null or empty finds nothing. @param resourceType extension, with or without
/// its point; null or empty for none, or when the name has it. @param subDirName folder in each of these
/// places; may be null.
/// @return null when there is no such file or folder.
CF_EXPORT CFURLRef CFBundleCopyResourceURL(
    CFBundleRef bundle, CFStringRef resourceName, CFStringRef resourceType, CFStringRef subDirName);

/// Looks the key up in a strings table, the one that CFBundleCopyResourceURL finds.
/// @param value the answer when there is no text; null or empty for the key itself.
/// @param tableName without extension; null or empty for "Localizable".
/// @return null only when key and value are null.
CF_EXPORT CFStringRef CFBundleCopyLocalizedString(
    CFBundleRef bundle, CFStringRef key, CFStringRef value, CFStringRef tableName);

#define CFCopyLocalizedString(key, comment)                                                                  \
    CFBundleCopyLocalizedString(CFBundleGetMainBundle(), (key), (key), nullptr)
#define CFCopyLocalizedStringFromTable(key, tbl, comment)                                                    \
    CFBundleCopyLocalizedString(CFBundleGetMainBundle(), (key), (key), (tbl))
#define CFCopyLocalizedStringFromTableInBundle(key, tbl, bundle, comment)                                    \
    CFBundleCopyLocalizedString((bundle), (key), (key), (tbl))
#define CFCopyLocalizedStringWithDefaultValue(key, tbl, bundle, value, comment)                              \
    CFBundleCopyLocalizedString((bundle), (key), (value), (tbl))

/// The names of the .lproj folders, sorted, then what the information file lists beside those.
CF_EXPORT CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef bundle);
/// Those of the names that fit the user's languages, the best first; the first name when none does.
/// @param locArray strings.
CF_EXPORT CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef locArray);

CF_EXTERN_C_END
