#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstddef>

// Dictionaries and arrays as JSON text, without white space. Strings are written as they stand: quotes, backslashes and
// control characters are not escaped, so the text is JSON only where they hold none. A date becomes the bare words
// some date. Objects that JSON has no form for are left out where their text would stand.
//
// The text of each dictionary and array, with all that it holds, is limited to 1048575 bytes. One that does not fit into what
// it lies in fails the whole; of what is not a dictionary or an array, what does not fit is left out.

/// @param data receives a new object that the caller releases: the text and a zero byte.
/// @return false for null, for a dictionary with a key that is no string, for a number that has no text, for a dictionary
/// or array within that does not fit, and for one that contains itself.
bool CreateJSON_DataFromDictionary(CFDictionaryRef dictionary, CFDataRef* data);
bool CreateJSON_DataFromArray(CFArrayRef array, CFDataRef* data);

/// Appends the text of one value to a text.
/// @param object null appends "null". @param text zero-terminated, with room for 1048576 bytes.
/// @return false as above.
bool ConvertObjectToJSON(CFTypeRef object, char* text);
