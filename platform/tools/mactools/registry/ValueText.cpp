#include "registry/ValueText.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <charconv>
#include <string_view>
#include <vector>

namespace {

void AppendNumber(std::string& line, CFTypeRef value, bool hexadecimal)
{
    char digits[24];
    const uint64_t number = iokit::NumberOf(value).value_or(0);
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number, hexadecimal ? 16 : 10).ptr;
    line += hexadecimal ? "0x" : "";
    line.append(digits, end);
}

/// Whether texts with quotation marks in them can still be told apart, and where they end.
bool IsPlain(std::string_view bytes)
{
    const bool isOne = bytes.find('\0') == bytes.size() - 1;
    return bytes.find('"') == std::string_view::npos
        || (isOne && bytes.find("\",\"") == std::string_view::npos
            && bytes.find("\">") == std::string_view::npos);
}

/// Whether firmware means text: printable texts, each ended by one null.
bool IsText(std::string_view bytes)
{
    const auto isText = [previous = '\0'](char c) mutable {
        const bool isEnd = c == '\0' && previous != '\0';
        previous = c;
        return isEnd || (c >= ' ' && c <= '~');
    };
    return bytes.size() > 1 && bytes.back() == '\0' && std::all_of(bytes.begin(), bytes.end(), isText)
        && IsPlain(bytes);
}

void AppendTexts(std::string& line, std::string_view bytes)
{
    bytes.remove_suffix(1);
    line += '"';
    for (const char c : bytes) {
        if (c == '\0')
            line += "\",\"";
        else
            line += c;
    }
    line += '"';
}

void AppendBytes(std::string& line, std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        line += digits[byte >> 4U];
        line += digits[byte & 0xfU];
    }
}

void AppendData(std::string& line, CFDataRef data)
{
    const auto* const start = reinterpret_cast<const char*>(CFDataGetBytePtr(data));
    const std::string_view bytes(start, static_cast<size_t>(CFDataGetLength(data)));
    line += '<';
    if (IsText(bytes))
        AppendTexts(line, bytes);
    else
        AppendBytes(line, bytes);
    line += '>';
}

void AppendArray(std::string& line, CFArrayRef array, bool hexadecimal)
{
    line += '(';
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        line += i > 0 ? "," : "";
        AppendValue(line, CFArrayGetValueAtIndex(array, i), hexadecimal);
    }
    line += ')';
}

void AppendDictionary(std::string& line, CFDictionaryRef dictionary, bool hexadecimal)
{
    const auto count = static_cast<size_t>(CFDictionaryGetCount(dictionary));
    std::vector<const void*> keys(count);
    std::vector<const void*> values(count);
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    line += '{';
    for (size_t i = 0; i < count; ++i) {
        line += i > 0 ? "," : "";
        AppendValue(line, keys[i], hexadecimal);
        line += '=';
        AppendValue(line, values[i], hexadecimal);
    }
    line += '}';
}

}

void AppendValue(std::string& line, CFTypeRef value, bool hexadecimal)
{
    const CFTypeID type = CFGetTypeID(value);
    if (type == CFStringGetTypeID())
        line += '"' + cf::TextOf(value) + '"';
    else if (type == CFNumberGetTypeID())
        AppendNumber(line, value, hexadecimal);
    else if (type == CFBooleanGetTypeID())
        line += iokit::IsTrue(value) ? "Yes" : "No";
    else if (type == CFDataGetTypeID())
        AppendData(line, static_cast<CFDataRef>(value));
    else if (type == CFDictionaryGetTypeID())
        AppendDictionary(line, static_cast<CFDictionaryRef>(value), hexadecimal);
    else if (type == CFArrayGetTypeID())
        AppendArray(line, static_cast<CFArrayRef>(value), hexadecimal);
}
