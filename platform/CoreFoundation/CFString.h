#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFLocale.h>

#include <cstdarg>

// Strings are sequences of UTF-16 units; lengths, indexes and ranges count those. A unit that is half of a
// surrogate pair may stand alone; it survives in the string but has no form in UTF-8 and other encodings.

CF_EXTERN_C_BEGIN

using CFStringEncoding = UInt32;

enum CFStringBuiltInEncodings : CFStringEncoding {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingWindowsLatin1 = 0x0500,
    kCFStringEncodingISOLatin1 = 0x0201,
    kCFStringEncodingASCII = 0x0600, ///< 7 bits; bytes above 127 are invalid
    kCFStringEncodingUnicode = 0x0100, ///< the same as kCFStringEncodingUTF16
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingUTF16 = 0x0100, ///< the host's byte order, unless a byte order mark says otherwise
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingUTF32 = 0x0c000100,
    kCFStringEncodingUTF32BE = 0x18000100,
    kCFStringEncodingUTF32LE = 0x1c000100
};

enum { kCFStringEncodingInvalidId = 0xffffffffU };

using CFStringCompareFlags = CFOptionFlags;
enum : CFStringCompareFlags {
    kCFCompareCaseInsensitive = 1,
    kCFCompareBackwards = 4, ///< search from the end
    kCFCompareAnchored = 8, ///< search only at the start, or at the end when backwards
    kCFCompareNumerically
    = 64 ///< compare runs of decimal digits by value: "1.9" before "1.10"; not when searching
};

/// The constant string of a literal, in UTF-8. It is never destroyed; the same text gives the same object.
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "")
CF_EXPORT CFStringRef __CFStringMakeConstantString(const char* cStr);

CF_EXPORT CFTypeID CFStringGetTypeID();
CF_EXPORT CFStringEncoding CFStringGetSystemEncoding(); ///< that of C strings in formats: Mac OS Roman
CF_EXPORT Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding);
/// @return kCFStringEncodingInvalidId for a code page that is not there.
CF_EXPORT CFStringEncoding CFStringConvertWindowsCodepageToEncoding(UInt32 codepage);

// Making strings. Each answers null where the input is null or negative in length, is not valid in the
// encoding, or the encoding is not known; nothing is ever replaced to make it fit.

CF_EXPORT CFStringRef CFStringCreateWithCString(
    CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding);
/// @param isExternalRepresentation whether a byte order mark at the start is to be obeyed and left out.
CF_EXPORT CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
    CFStringEncoding encoding, Boolean isExternalRepresentation);
/// The contents are copied and freed by the deallocator at once, unless it is kCFAllocatorNull or the answer
/// is null.
CF_EXPORT CFStringRef CFStringCreateWithCStringNoCopy(
    CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding, CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8* bytes,
    CFIndex numBytes, CFStringEncoding encoding, Boolean isExternalRepresentation,
    CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateWithCharacters(
    CFAllocatorRef alloc, const UniChar* chars, CFIndex numChars);
/// @param buffer a host file name, null-terminated. @return null for bytes that are not UTF-8.
CF_EXPORT CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef alloc, const char* buffer);
CF_EXPORT CFStringRef CFStringCreateFromExternalRepresentation(
    CFAllocatorRef alloc, CFDataRef data, CFStringEncoding encoding);
CF_EXPORT CFStringRef CFStringCreateWithSubstring(CFAllocatorRef alloc, CFStringRef str, CFRange range);
CF_EXPORT CFStringRef CFStringCreateCopy(CFAllocatorRef alloc, CFStringRef theString);
/// printf's conversions and %@ (an object), %C (UniChar), %S (null-terminated UniChars), each also in the
/// form %n$…; %s and %c are in the system encoding. %n is not there. Null arguments show as (null).
/// @param formatOptions reserved, null.
CF_EXPORT CFStringRef CFStringCreateWithFormat(
    CFAllocatorRef alloc, CFTypeRef formatOptions, CFStringRef format, ...);
CF_EXPORT CFStringRef CFStringCreateWithFormatAndArguments(
    CFAllocatorRef alloc, CFTypeRef formatOptions, CFStringRef format, va_list arguments);
/// @param maxLength the most units that the string may ever hold, 0 for no limit. Growing past it is a fault.
CF_EXPORT CFMutableStringRef CFStringCreateMutable(CFAllocatorRef alloc, CFIndex maxLength);
CF_EXPORT CFMutableStringRef CFStringCreateMutableCopy(
    CFAllocatorRef alloc, CFIndex maxLength, CFStringRef theString);

// Reading.

CF_EXPORT CFIndex CFStringGetLength(CFStringRef theString);
CF_EXPORT UniChar CFStringGetCharacterAtIndex(CFStringRef theString, CFIndex idx);
/// @param buffer receives range.length units.
CF_EXPORT void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar* buffer);
/// @param bufferSize in bytes, with room for the terminating null.
/// @return false, with an empty buffer where it has room for that, when the text does not fit or has no form
/// in the encoding.
CF_EXPORT Boolean CFStringGetCString(
    CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);
/// A pointer into the string, valid until it changes or goes. Not null for text that is all ASCII, in any
/// encoding that has ASCII as a part; else null. Text after an embedded null character is cut off for C.
CF_EXPORT const char* CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding);
/// Always null here: the units are not kept in a form to point to. Use CFStringGetCharacters.
CF_EXPORT const UniChar* CFStringGetCharactersPtr(CFStringRef theString);
/// Converts as many whole characters of the range as fit.
/// @param lossByte an ASCII character that stands in for one that the encoding lacks; 0 to stop there.
/// @param isExternalRepresentation whether UTF-16 and UTF-32 begin with a byte order mark.
/// @param buffer null to measure only, with no limit. @param maxBufLen in bytes; nothing is terminated.
/// @param usedBufLen receives the bytes written or measured; may be null. @return the UTF-16 units converted.
CF_EXPORT CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding,
    UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer, CFIndex maxBufLen, CFIndex* usedBufLen);
/// @return the most bytes that `length` units can take, without terminator; kCFNotFound when unknown or too
/// many.
CF_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
/// @return false when the text with its terminating null does not fit, holds a null, or has no UTF-8 form.
CF_EXPORT Boolean CFStringGetFileSystemRepresentation(CFStringRef string, char* buffer, CFIndex maxBufLen);
/// With room for the terminating null.
CF_EXPORT CFIndex CFStringGetMaximumSizeOfFileSystemRepresentation(CFStringRef string);
/// @param lossByte as above. @return null when a character has no form in the encoding and lossByte is 0.
/// UTF-16 and UTF-32 without a byte order in their name begin with a byte order mark.
CF_EXPORT CFDataRef CFStringCreateExternalRepresentation(
    CFAllocatorRef alloc, CFStringRef theString, CFStringEncoding encoding, UInt8 lossByte);

// Comparing and searching. Without options units are compared one by one.

/// @param compareOptions kCFCompareCaseInsensitive, kCFCompareNumerically or both.
CF_EXPORT CFComparisonResult CFStringCompare(
    CFStringRef theString1, CFStringRef theString2, CFStringCompareFlags compareOptions);
/// @param result receives the place found; may be null. @return false, the result left alone, where there is
/// none. An empty text is found nowhere.
CF_EXPORT Boolean CFStringFindWithOptions(CFStringRef theString, CFStringRef stringToFind,
    CFRange rangeToSearch, CFStringCompareFlags searchOptions, CFRange* result);
/// @return location kCFNotFound and length 0 where there is none.
CF_EXPORT CFRange CFStringFind(
    CFStringRef theString, CFStringRef stringToFind, CFStringCompareFlags compareOptions);
CF_EXPORT Boolean CFStringHasPrefix(CFStringRef theString, CFStringRef prefix);
CF_EXPORT Boolean CFStringHasSuffix(CFStringRef theString, CFStringRef suffix);

/// @return one string more than there are separators; of an empty text, one empty string.
CF_EXPORT CFArrayRef CFStringCreateArrayBySeparatingStrings(
    CFAllocatorRef alloc, CFStringRef theString, CFStringRef separatorString);
CF_EXPORT CFStringRef CFStringCreateByCombiningStrings(
    CFAllocatorRef alloc, CFArrayRef theArray, CFStringRef separatorString);

/// The decimal number that the text begins with, after white space; 0 where there is none; the nearest SInt32
/// when too large.
CF_EXPORT SInt32 CFStringGetIntValue(CFStringRef str);
/// As above, with a point whatever the locale.
CF_EXPORT double CFStringGetDoubleValue(CFStringRef str);

// Changing.

CF_EXPORT void CFStringAppend(CFMutableStringRef theString, CFStringRef appendedString);
CF_EXPORT void CFStringAppendCharacters(CFMutableStringRef theString, const UniChar* chars, CFIndex numChars);
/// Appends nothing where `cStr` is not valid in the encoding.
CF_EXPORT void CFStringAppendCString(
    CFMutableStringRef theString, const char* cStr, CFStringEncoding encoding);
CF_EXPORT void CFStringAppendFormat(
    CFMutableStringRef theString, CFTypeRef formatOptions, CFStringRef format, ...);
CF_EXPORT void CFStringAppendFormatAndArguments(
    CFMutableStringRef theString, CFTypeRef formatOptions, CFStringRef format, va_list arguments);
CF_EXPORT void CFStringInsert(CFMutableStringRef str, CFIndex idx, CFStringRef insertedStr);
CF_EXPORT void CFStringDelete(CFMutableStringRef theString, CFRange range);
CF_EXPORT void CFStringReplace(CFMutableStringRef theString, CFRange range, CFStringRef replacement);
CF_EXPORT void CFStringReplaceAll(CFMutableStringRef theString, CFStringRef replacement);
/// @return how many were replaced; what a replacement brings in is not searched again.
CF_EXPORT CFIndex CFStringFindAndReplace(CFMutableStringRef theString, CFStringRef stringToFind,
    CFStringRef replacementString, CFRange rangeToSearch, CFStringCompareFlags compareOptions);
/// Takes `trimString` off both ends as often as it is there.
CF_EXPORT void CFStringTrim(CFMutableStringRef theString, CFStringRef trimString);
/// Takes white space and line ends, in Unicode's sense, off both ends.
CF_EXPORT void CFStringTrimWhitespace(CFMutableStringRef theString);
/// @param locale null; the mapping is Unicode's own, which is not any one language's.
CF_EXPORT void CFStringLowercase(CFMutableStringRef theString, CFLocaleRef locale);
CF_EXPORT void CFStringUppercase(CFMutableStringRef theString, CFLocaleRef locale);

CF_EXTERN_C_END
