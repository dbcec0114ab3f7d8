#include "tools/inspect/Record.h"

#include "util/CFText.h"

#include <array>
#include <cstdio>

namespace {

constexpr size_t kLongestJSON = 1000000; ///< bytes, somewhat less than the library writes
constexpr const char* kReplacement = "\xEF\xBF\xBD";

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

/// How many bytes the character at the start takes; 0 when there is none.
size_t CharacterSize(std::string_view bytes)
{
    const size_t longest = std::min<size_t>(bytes.size(), 4);
    for (size_t size = 1; size <= longest; ++size) {
        if (CFText(bytes.substr(0, size)))
            return size;
    }
    return 0;
}

std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : ValidUTF8(text)) {
        std::array<char, 8> code {};
        if (IsControl(c))
            std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(c));
        else if (c == '"' || c == '\\')
            std::snprintf(code.data(), code.size(), "\\%c", c);
        else
            code[0] = c;
        escaped += code.data();
    }
    return escaped;
}

/// @param size is increased by the bytes of its text, about.
CFRef<CFTypeRef> ObjectForJSON(const Value& value, size_t& size)
{
    constexpr size_t longestNumber = 20;
    size += longestNumber;
    if (const auto* const yes = std::get_if<bool>(&value))
        return CFRef<CFTypeRef>::Retained(*yes ? kCFBooleanTrue : kCFBooleanFalse);
    if (const auto* const number = std::get_if<int64_t>(&value))
        return CFRef<CFTypeRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, number));
    const std::string text = Escaped(std::get<std::string>(value));
    size += text.size();
    return CFRef<CFTypeRef>(CFText(text).release());
}

std::string Plain(const Value& value)
{
    if (const auto* const yes = std::get_if<bool>(&value))
        return *yes ? "yes" : "no";
    if (const auto* const number = std::get_if<int64_t>(&value))
        return std::to_string(*number);
    return std::get<std::string>(value);
}

}

std::string ValidUTF8(std::string_view bytes)
{
    if (CFText(bytes))
        return std::string(bytes);
    std::string valid;
    while (!bytes.empty()) {
        const size_t size = CharacterSize(bytes);
        valid += size > 0 ? bytes.substr(0, size) : kReplacement;
        bytes.remove_prefix(std::max<size_t>(size, 1));
    }
    return valid;
}

std::string Shown(const Field& field)
{
    if (std::holds_alternative<std::monostate>(field.value))
        return "-";
    std::string text = ValidUTF8(field.shown.empty() ? Plain(field.value) : field.shown);
    for (char& c : text) {
        if (IsControl(c))
            c = '?';
    }
    return text;
}

CFRef<CFDictionaryRef> DictionaryForJSON(const Record& record)
{
    CFRef<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    size_t size = 0;
    for (const Field& field : record) {
        if (std::holds_alternative<std::monostate>(field.value))
            continue;
        const CFRef<CFStringRef> key = CFText(field.key);
        CFDictionarySetValue(dictionary.get(), key.get(), ObjectForJSON(field.value, size).get());
        size += static_cast<size_t>(CFStringGetLength(key.get()));
    }
    if (size > kLongestJSON)
        return {};
    return CFRef<CFDictionaryRef>(dictionary.release());
}
