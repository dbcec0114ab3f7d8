#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

// A URL is a text of ASCII characters, perhaps relative to a base URL. Characters that a URL cannot hold are
// in it as percent escapes of their bytes, so that any file name of the host goes into a URL and comes out
// unchanged.

CF_EXTERN_C_BEGIN

using CFURLRef = const struct __CFURL*;

enum CFURLPathStyle : CFIndex { kCFURLPOSIXPathStyle = 0 };

CF_EXPORT CFTypeID CFURLGetTypeID();

/// @param URLString already escaped. @param baseURL retained; may be null. @return null for text with
/// characters that a URL cannot hold, with a percent sign that begins no escape, or that is empty without a
/// base.
CF_EXPORT CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef URLString, CFURLRef baseURL);
/// As above, from bytes in the encoding.
CF_EXPORT CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* URLBytes, CFIndex length,
    CFStringEncoding encoding, CFURLRef baseURL);

// File URLs. A relative path is relative to the base, or where there is none to the working folder of that
// moment. `isDirectory` decides whether the URL ends with a slash, whether or not the path does. Null for an
// empty path.

CF_EXPORT CFURLRef CFURLCreateWithFileSystemPath(
    CFAllocatorRef allocator, CFStringRef filePath, CFURLPathStyle pathStyle, Boolean isDirectory);
CF_EXPORT CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef allocator, CFStringRef filePath,
    CFURLPathStyle pathStyle, Boolean isDirectory, CFURLRef baseURL);
/// @param buffer bytes of a host path, UTF-8 or not.
CF_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentation(
    CFAllocatorRef allocator, const UInt8* buffer, CFIndex bufLen, Boolean isDirectory);
CF_EXPORT CFURLRef CFURLCreateFromFileSystemRepresentationRelativeToBase(
    CFAllocatorRef allocator, const UInt8* buffer, CFIndex bufLen, Boolean isDirectory, CFURLRef baseURL);
/// @param buffer receives the path, null-terminated, without a slash at the end unless it is the root.
/// @param maxBufLen in bytes, with the terminator. @return false when it does not fit, holds a null, or the
/// URL is no file's.
CF_EXPORT Boolean CFURLGetFileSystemRepresentation(
    CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer, CFIndex maxBufLen);
/// The path without regard to the base; null when it is not UTF-8, holds a null, or the URL is no file's.
CF_EXPORT CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle pathStyle);

// Parts. Except where said, they are taken from the URL's own text, with its escapes, without regard to the
// base.

CF_EXPORT CFStringRef CFURLGetString(CFURLRef anURL);
CF_EXPORT CFURLRef CFURLGetBaseURL(CFURLRef anURL);
/// Resolved against the base by RFC 3986's rules; the URL itself, retained, where it has no base.
CF_EXPORT CFURLRef CFURLCopyAbsoluteURL(CFURLRef relativeURL);
/// Whether the path ends with a slash or with a component "." or "..".
CF_EXPORT Boolean CFURLHasDirectoryPath(CFURLRef anURL);
/// The base's, where the URL has none of its own; null when neither has.
CF_EXPORT CFStringRef CFURLCopyScheme(CFURLRef anURL);
/// As above, unescaped.
CF_EXPORT CFStringRef CFURLCopyHostName(CFURLRef anURL);
/// Null when there is no path.
CF_EXPORT CFStringRef CFURLCopyPath(CFURLRef anURL);
/// Unescaped; "/" for the root, empty where there is no path.
CF_EXPORT CFStringRef CFURLCopyLastPathComponent(CFURLRef url);
/// Unescaped, without the point; null when there is none.
CF_EXPORT CFStringRef CFURLCopyPathExtension(CFURLRef url);

// Changed copies. They keep the base, the query and the fragment; texts given are not escaped yet.

/// @param pathComponent may have several components.
CF_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(
    CFAllocatorRef allocator, CFURLRef url, CFStringRef pathComponent, Boolean isDirectory);
/// The root stays as it is.
CF_EXPORT CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url);
/// @return null where there is no path component to extend or the extension holds a slash.
CF_EXPORT CFURLRef CFURLCreateCopyAppendingPathExtension(
    CFAllocatorRef allocator, CFURLRef url, CFStringRef extension);
CF_EXPORT CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef allocator, CFURLRef url);

// Escapes.

/// @param charactersToLeaveEscaped null for all: then the text comes back as it is. @return null for a
/// percent sign that begins no escape, or escapes that are not UTF-8.
CF_EXPORT CFStringRef CFURLCreateStringByReplacingPercentEscapes(
    CFAllocatorRef allocator, CFStringRef originalString, CFStringRef charactersToLeaveEscaped);
/// Escapes what a URL cannot hold, percent signs too, in the encoding's bytes.
/// @param charactersToLeaveUnescaped, legalURLCharactersToBeEscaped exceptions to that; may be null.
/// @return null where a character has no form in the encoding.
CF_EXPORT CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef allocator,
    CFStringRef originalString, CFStringRef charactersToLeaveUnescaped,
    CFStringRef legalURLCharactersToBeEscaped, CFStringEncoding encoding);

CF_EXTERN_C_END
