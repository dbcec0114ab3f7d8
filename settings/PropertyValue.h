#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>
#include <optional>

// The value of a stored property, whatever kind of object somebody stored it as: a number or boolean is taken
// at its value, a text at the number (or, for booleans, also the word) that it begins with. Nothing for null
// and for objects that have no such value (data, dates, containers).

/// A number is true when it is not 0; a text when it begins, after any blanks, with Y, y, T, t or a number
/// that is not 0.
std::optional<bool> BooleanValue(CFTypeRef object);

/// Fractions are cut off and the lowest 32 bits kept, as the C conversions between whole numbers do.
std::optional<uint32_t> UnsignedValue(CFTypeRef object);

std::optional<double> DoubleValue(CFTypeRef object);
