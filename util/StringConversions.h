#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstddef>
#include <cstdint>

// Numbers, sizes, times and disk identities as short texts for display, and size texts read back. Buffers are the
// caller's; every function but CatStrings ends its text with a zero byte within the capacity, which is in bytes and counts
// that zero. Texts that do not fit are cut. Null buffers and capacities of 0 are left alone.

/// The number of a size in the largest unit that fits, with three digits as a rule: 0.00, 12.5, 999.
/// @param bytes the size. @param power receives the decimal exponent that names the unit, though the divisor is a power of
/// 1024: 3 for KB, 6 for MB, 9 for GB, 12 for TB; 0, with an empty text, from 1000 TB on. May be null.
void ConvertUInt64ToSizeSizeStringAndPowerOfTen(
    uint64_t bytes, char* buffer, size_t capacity, int32_t* power);

/// The same with its unit: "12.5 GB"; " -" for a size that is too large to show.
void ConvertUInt64ToSizeString(uint64_t bytes, char* buffer, size_t capacity);

/// Reads a size: "0x10", or decimal digits with an optional kb, mb, gb, tb or pb in either case, in powers of 1024. What
/// follows the digits is ignored, a fraction too.
/// @param text zero-terminated; null is refused. @param bytes written only on success; may be null.
/// @return false for another unit before the "b", and where more than 255 characters stand before the unit.
bool ConvertSizeStringToUInt64(const char* text, uint64_t* bytes);

/// 1,234,567, whatever the locale.
void ConvertUInt64ToStringWithCommas(uint64_t value, char* buffer, size_t capacity);

/// Sixteen upper-case hexadecimal digits, the last byte first, so that a number stored in little-endian order reads as
/// usual.
/// @param bytes 8 of them. @param buffer of at least 17 bytes, or 24 with `spaces`: a blank after every pair but the last.
void ConvertUInt64ToHexString(const void* bytes, char* buffer, bool spaces);

/// Eight pairs of upper-case hexadecimal digits in stored order with a blank between them.
/// @param name 8 bytes. @param buffer of at least 24 bytes.
void ConvertWWN_DataToHexString(const void* name, char* buffer);

/// 00:00:00 with as many digits for the hours as they need; "--:--:--" from 1000 hours on.
void ConvertSecondsToHoursMinutesSecondsString(uint32_t seconds, char* buffer, size_t capacity);

/// A moment in the user's locale, date and time of medium length, UTF-8.
/// @param seconds since 2001-01-01 00:00 UTC. @param buffer "" when the text cannot be made or does not fit.
void ConvertAbsoluteSecondsToMediumDateString(uint32_t seconds, char* buffer, size_t capacity);

/// The same as 2026.11.21 09:05:00, in the user's time zone.
void ConvertAbsoluteSecondsToShortDateString(uint32_t seconds, char* buffer, size_t capacity);

/// Where a disk is attached.
struct DiskIdent {
    int32_t
        busType; ///< 2 SATA, 3 ATA, 4 FireWire, 5 SCSI, 6 SAS, 7 Fibre Channel, 8 USB2, 9 USB3; others are unknown
    int32_t busNumber;
    int32_t targetID;
    int32_t logicalUnit;
};

/// "SATA bus 0, id 1, lun 2", or without the logical unit.
void ConvertDiskIdentToString(const DiskIdent* ident, char* buffer, size_t capacity, bool withLUN);

/// Compares the bytes of a data object, up to their first zero, or a string's ASCII characters, of which there may be 255.
/// @param object null, and other types, are never equal. @param text zero-terminated; null is never equal.
/// @param substring whether it is enough that the text occurs in the object's.
bool CompareCFTypeRefToString(CFTypeRef object, const char* text, bool substring);

/// Cuts trailing blanks off the text, in place.
/// @return its first character that is no blank; its end when there is none, null for null.
char* StripSpaces(char* text);

/// Appends to a text whose length is kept apart, as much as fits; does not end it with a zero byte, for which room stays.
/// @param length of the destination, updated. @param trim leaves out the source's leading blanks, and trailing blanks and
/// zero bytes.
void CatStrings(char* destination, const char* source, size_t capacity, size_t* length, bool trim);
