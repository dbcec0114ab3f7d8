#include "tools/inspect/PropertyValues.h"

#include "tools/inspect/Record.h"
#include "util/CFText.h"
#include "util/JSON.h"
#include "util/RegistryProperties.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr size_t kLongestJSON = 1048575; ///< bytes that the library writes

/// Whether the bytes are one text or several, each of them printable and, but for the last, ended by a zero byte.
bool IsText(std::string_view bytes)
{
    const auto isText = [previous = '\0'](char c) mutable {
        const bool isEnd = c == '\0' && previous != '\0';
        previous = c;
        return isEnd || (c >= ' ' && c <= '~');
    };
    return !bytes.empty() && std::all_of(bytes.begin(), bytes.end(), isText);
}

std::string DataText(CFDataRef data)
{
    std::string_view bytes(
        reinterpret_cast<const char*>(CFDataGetBytePtr(data)), static_cast<size_t>(CFDataGetLength(data)));
    std::string text;
    if (!IsText(bytes)) {
        for (const char c : bytes) {
            text += kHexDigits[static_cast<unsigned char>(c) >> 4U];
            text += kHexDigits[static_cast<unsigned char>(c) & 0xFU];
        }
        return text;
    }
    if (bytes.back() == '\0')
        bytes.remove_suffix(1);
    for (const char c : bytes)
        text += c != '\0' ? std::string(1, c) : ", ";
    return text;
}

/// A value that holds no others; "" for what JSON has no form for.
std::string PlainText(CFTypeRef value)
{
    if (const auto data = CFDynamicCast<CFDataRef>(value, CFDataGetTypeID()))
        return DataText(data);
    return StdString(CFDynamicCast<CFStringRef>(value, CFStringGetTypeID()));
}

CFRef<CFTypeRef> TextForJSON(const std::string& text, size_t& size)
{
    constexpr size_t quotationMarks = 2;
    const std::string escaped = EscapedForJSON(text);
    size += escaped.size() + quotationMarks;
    return CFRef<CFTypeRef>(CFText(escaped).release());
}

struct Conversion {
    size_t& size;
    CFTypeRef into; ///< the array or dictionary that is being made
};

void AddItem(const void* value, void* context)
{
    const auto& conversion = *static_cast<const Conversion*>(context);
    const CFRef<CFTypeRef> item = ObjectForJSON(value, ++conversion.size);
    CFArrayAppendValue(static_cast<CFMutableArrayRef>(const_cast<void*>(conversion.into)), item.get());
}

void AddMember(const void* key, const void* value, void* context)
{
    const auto& conversion = *static_cast<const Conversion*>(context);
    conversion.size += 2; // colon and comma
    const CFRef<CFTypeRef> text = TextForJSON(PlainText(key), conversion.size);
    const CFRef<CFTypeRef> member = ObjectForJSON(value, conversion.size);
    CFDictionarySetValue(
        static_cast<CFMutableDictionaryRef>(const_cast<void*>(conversion.into)), text.get(), member.get());
}

CFRef<CFTypeRef> ArrayForJSON(CFArrayRef array, size_t& size)
{
    const CFRef<CFMutableArrayRef> made(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    Conversion conversion { size += 2, made.get() };
    CFArrayApplyFunction(array, CFRangeMake(0, CFArrayGetCount(array)), AddItem, &conversion);
    return CFRef<CFTypeRef>::Retained(made.get());
}

CFRef<CFTypeRef> DictionaryForJSON(CFDictionaryRef dictionary, size_t& size)
{
    const CFRef<CFMutableDictionaryRef> made(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    Conversion conversion { size += 2, made.get() };
    CFDictionaryApplyFunction(dictionary, AddMember, &conversion);
    return CFRef<CFTypeRef>::Retained(made.get());
}

}

CFRef<CFTypeRef> ObjectForJSON(CFTypeRef value, size_t& size)
{
    if (const auto array = CFDynamicCast<CFArrayRef>(value, CFArrayGetTypeID()))
        return ArrayForJSON(array, size);
    if (const auto dictionary = CFDynamicCast<CFDictionaryRef>(value, CFDictionaryGetTypeID()))
        return DictionaryForJSON(dictionary, size);
    const bool isBoolean = CFDynamicCast<CFBooleanRef>(value, CFBooleanGetTypeID()) != nullptr;
    const auto number = NumberFrom(value);
    if (!isBoolean && !number)
        return TextForJSON(PlainText(value), size);
    size += isBoolean ? std::strlen("false") : std::to_string(*number).size();
    return CFRef<CFTypeRef>::Retained(value);
}

std::string PropertyText(CFTypeRef value)
{
    if (const auto number = NumberFrom(value))
        return std::to_string(*number);
    if (const auto boolean = CFDynamicCast<CFBooleanRef>(value, CFBooleanGetTypeID()))
        return CFBooleanGetValue(boolean) ? "yes" : "no";
    size_t size = 0;
    const CFRef<CFTypeRef> object = ObjectForJSON(value, size);
    if (CFDynamicCast<CFStringRef>(object.get(), CFStringGetTypeID()) != nullptr)
        return PlainText(value);
    const std::string text = JSONText(object.get(), size);
    return text.empty() ? "(too long to show)" : text;
}

std::string EscapedForJSON(std::string_view text)
{
    std::string escaped;
    char previous = 0;
    for (const char c : ValidUTF8(text)) {
        const bool isLateControl = previous == '\xC2' && static_cast<unsigned char>(c) < 0xA0;
        if (isLateControl)
            escaped.pop_back(); // the first byte of the two
        std::array<char, 8> code {};
        if (isLateControl || static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned char>(c));
        if (c == '"' || c == '\\')
            code = { '\\', c };
        if (code[0] != 0)
            escaped += code.data();
        else
            escaped += c;
        previous = c;
    }
    return escaped;
}

std::string JSONText(CFTypeRef container, size_t size)
{
    CFDataRef made = nullptr;
    if (size > kLongestJSON)
        return "";
    const bool isMade = CFGetTypeID(container) == CFArrayGetTypeID()
        ? CreateJSON_DataFromArray(static_cast<CFArrayRef>(container), &made)
        : CreateJSON_DataFromDictionary(static_cast<CFDictionaryRef>(container), &made);
    const CFRef<CFDataRef> data(made);
    return isMade ? reinterpret_cast<const char*>(CFDataGetBytePtr(made)) : "";
}
