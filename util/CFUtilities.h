#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

// Small helpers for CoreFoundation objects.

/// The object as one of the type that the caller expects.
/// @param expected what the type's …GetTypeID function answers. @param result receives the object, not retained; null when
/// it is null or of another type. Required.
/// @return whether it is of that type.
bool CastCFType(CFTypeRef object, CFTypeID expected, CFTypeRef* result);

/// Releases unless null.
void SafeCFRelease(CFTypeRef object);

/// A property list, immutable, out of the bytes of a file in any format.
/// @param bytes are not copied and needed no longer afterwards. @param length of them.
/// @return to be released by the caller; null for null, and for bytes that are none.
CFPropertyListRef CreatePropertyListFromBytes(const void* bytes, uint32_t length);
