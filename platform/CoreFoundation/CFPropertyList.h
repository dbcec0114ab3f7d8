#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFError.h>

// Property lists: strings, data, numbers, booleans, dates, and arrays and dictionaries of these, the latter
// with strings as keys. They nest at most 512 levels deep, here; anything deeper, containers that hold
// themselves among it, is refused.

CF_EXTERN_C_BEGIN

enum CFPropertyListMutabilityOptions : CFOptionFlags {
    kCFPropertyListImmutable = 0,
    kCFPropertyListMutableContainers = 1, ///< arrays and dictionaries
    kCFPropertyListMutableContainersAndLeaves = 2 ///< strings and data, too
};

enum CFPropertyListFormat : CFIndex {
    kCFPropertyListOpenStepFormat = 1, ///< neither read nor written
    kCFPropertyListXMLFormat_v1_0 = 100,
    kCFPropertyListBinaryFormat_v1_0 = 200
};

/// Codes of the errors below, in the domain kCFErrorDomainCocoa.
enum : CFIndex {
    kCFPropertyListReadCorruptError = 3840,
    kCFPropertyListReadUnknownVersionError = 3841,
    kCFPropertyListReadStreamError = 3842,
    kCFPropertyListWriteStreamError = 3851
};

/// Reads a property list in the XML (UTF-8) or the binary format. An integer above 2^63-1 becomes the nearest
/// floating-point number.
/// @param data not null. @param options one of CFPropertyListMutabilityOptions.
/// @param format receives the format found; may be null.
/// @param error receives on failure an error that the caller releases; may be null.
/// @return null for bytes that are not one whole, well-formed property list, for more than 4 GiB, for text
/// with a null character or half a surrogate pair, and for a binary one that refers to the same objects so
/// often that it would expand to many times its size.
CF_EXPORT CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef allocator, CFDataRef data,
    CFOptionFlags options, CFPropertyListFormat* format, CFErrorRef* error);

/// Writes a property list; the keys of each dictionary are sorted, so that equal property lists give equal
/// bytes. XML dates are whole seconds, rounded down.
/// @param format XML or binary. @param options reserved, 0. @param error as above, code
/// kCFPropertyListWriteStreamError.
/// @return null for null, for what is no property list, for another format, and for values that the format
/// cannot hold: text with a null character or half a surrogate pair and dates that are not finite; in XML
/// also other control characters than tab, line feed and carriage return, U+FFFE, U+FFFF, and dates outside
/// the years 1000 to 9999.
CF_EXPORT CFDataRef CFPropertyListCreateData(CFAllocatorRef allocator, CFPropertyListRef propertyList,
    CFPropertyListFormat format, CFOptionFlags options, CFErrorRef* error);

/// Whether CFPropertyListCreateData can write it.
CF_EXPORT Boolean CFPropertyListIsValid(CFPropertyListRef plist, CFPropertyListFormat format);

/// @param mutabilityOption one of CFPropertyListMutabilityOptions; immutable leaves may be shared with the
/// original.
/// @return null for what is no property list.
CF_EXPORT CFPropertyListRef CFPropertyListCreateDeepCopy(
    CFAllocatorRef allocator, CFPropertyListRef propertyList, CFOptionFlags mutabilityOption);

CF_EXTERN_C_END
