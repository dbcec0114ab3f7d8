#pragma once

#include "util/CFRef.h"
#include <cstddef>
#include <string>
#include <string_view>

// Values of the device registry's properties. How deep they are nested is bounded by who reads them: the kernel, or the
// reader of recordings.

/// Makes an object for the library's JSON writer: texts escaped, data as texts.
/// @param size is increased by the bytes that its text takes.
CFRef<CFTypeRef> ObjectForJSON(CFTypeRef value, size_t& size);

/// As people read it: texts as they stand, data as text where it is one, else in hexadecimal digits, arrays and dictionaries
/// as JSON.
std::string PropertyText(CFTypeRef value);

/// The characters between quotation marks for JSON. @param text what is not UTF-8 in it is replaced.
std::string EscapedForJSON(std::string_view text);

/// The library's JSON for an array or a dictionary that ObjectForJSON() made.
/// @param size as it counted. @return "" where that is more than the library writes.
std::string JSONText(CFTypeRef container, size_t size);
