#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/Runtime.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace iokit {

/// Puts together a dictionary of properties. What is not known is left out, so that a source can hand over whatever it
/// could find:
///     Properties().text("BSD Name", name).number("Size", size).take()
/// @param key, everywhere: a literal, ASCII.
class Properties {
public:
    Properties();

    Properties& text(const char* key, std::string_view utf8); ///< left out when empty or not UTF-8
    Properties& plainText(const char* key, std::string_view utf8); ///< the same, but kept when empty
    Properties& flag(const char* key, bool value);
    Properties& number(const char* key, std::optional<uint64_t> number); ///< left out when there is none
    Properties& data(const char* key, std::string_view bytes); ///< left out when empty
    /// Text in the form that firmware gives it: data with a null at the end. Left out when empty.
    Properties& textData(const char* key, const std::string& text);
    Properties& array(const char* key, CFArrayRef values); ///< kept when empty
    Properties& dictionary(const char* key, const Properties& values); ///< left out when empty

    /// The dictionary. Nothing can be added after that.
    cf::Owned<CFDictionaryRef> take();

private:
    Properties& value(const char* key, const cf::Owned<CFTypeRef>& value);

    cf::Owned<CFMutableDictionaryRef> fValues;
};

/// @param value, of both, may be null or of another type. @return the number's low 64 bits; none where it is no number.
std::optional<uint64_t> NumberOf(CFTypeRef value);
/// @return whether it is a boolean and true.
bool IsTrue(CFTypeRef value);

}
