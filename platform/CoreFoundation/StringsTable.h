#pragma once

#include <CoreFoundation/CFDictionary.h>

#include <cstdint>
#include <span>

/// Reads a strings table: pairs "key" = "value"; with comments in the manner of C, in UTF-8 or UTF-16 (with a
/// byte order mark, or without one where the first character is ASCII), or a property list in XML or binary
/// form. Quoted texts know \a \b \f \n \r \t \v, \ and one to three octal digits, \U or \u and one to four
/// hexadecimal digits (a UTF-16 unit); \ before anything else stands for that. Quotes may be left out around
/// letters, digits and _ $ / : . - alone. A key without a value ("key";) has itself as value. Of equal keys
/// the last counts. A table that is malformed answers the pairs before the fault; nothing else tells of it,
/// since texts that are shown as keys are seen at once. A property list gives all or nothing, and only its
/// pairs of strings.
/// @return a dictionary of strings by strings, never null; the caller releases it.
CFDictionaryRef CreateStringsTable(std::span<const uint8_t> bytes);
