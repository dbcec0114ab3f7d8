#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Text.h>

#include <optional>
#include <span>

namespace cf {

bool IsKnownEncoding(CFStringEncoding encoding);
/// @return whether ASCII text has the same bytes in the encoding.
bool HasAsciiAsPart(CFStringEncoding encoding);
/// @return the most bytes that one UTF-16 unit can take; 0 for an unknown encoding.
size_t MaximumBytesPerUnit(CFStringEncoding encoding);

/// @param external whether a byte order mark at the start is to be obeyed and left out.
/// @return nothing for bytes that are not valid in the encoding, or an unknown encoding.
std::optional<Text> Decode(CFStringEncoding encoding, std::span<const UInt8> bytes, bool external);

struct Encoded {
    size_t units = 0; ///< how many were converted
    size_t bytes = 0; ///< how many those take
};

/// Converts whole characters of units start … start+count until they end, the buffer is full, or one has no
/// form.
/// @param lossByte an ASCII character that stands in for one that has no form; 0: stop there. @param external
/// whether encodings of open byte order begin with a byte order mark. @param buffer null to measure only.
/// @param size of buffer in bytes.
Encoded Encode(const Text& text, size_t start, size_t count, CFStringEncoding encoding, UInt8 lossByte,
    bool external, UInt8* buffer, size_t size);

/// The whole text; nothing where some of it has no form in the encoding.
std::optional<std::string> Encode(const Text& text, CFStringEncoding encoding);

}
