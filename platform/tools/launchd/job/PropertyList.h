#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace launchd {

struct CFReleaser {
    void operator()(CFTypeRef value) const { CFRelease(value); }
};

/// A reference obtained by the Create or Copy rule, given up at the end of its scope.
template <class Reference> using CFOwned = std::unique_ptr<std::remove_pointer_t<Reference>, CFReleaser>;

/// @return the text in UTF-8, or nothing when it has no UTF-8 form or contains a null character, which would
/// end it early wherever it is used as a C string.
std::optional<std::string> TextOf(CFStringRef text);

/// @param utf8 any bytes. @return null when they are not UTF-8.
CFOwned<CFStringRef> MakeText(std::string_view utf8);

/// Reads an XML or binary property list whose root is a dictionary. The dictionary is mutable all the way
/// down.
/// @param problem set to one sentence when null is returned.
CFOwned<CFMutableDictionaryRef> ReadDictionary(std::string_view bytes, std::string& problem);

/// @return the bytes of the property list in the format, or nothing when it has none.
std::optional<std::string> WriteDictionary(CFDictionaryRef dictionary, CFPropertyListFormat format);

/// Setters for a dictionary under construction. `key` is UTF-8; SetText answers false for text that is not.
bool SetText(CFMutableDictionaryRef dictionary, const char* key, std::string_view utf8);
void SetInteger(CFMutableDictionaryRef dictionary, const char* key, long long value);
void SetBytes(CFMutableDictionaryRef dictionary, const char* key, std::string_view bytes);
void SetBoolean(CFMutableDictionaryRef dictionary, const char* key, bool value);

/// @return an empty dictionary that retains what is put into it.
CFOwned<CFMutableDictionaryRef> MakeDictionary();

} // namespace launchd
