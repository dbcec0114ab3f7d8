#include "tools/inspect/Record.h"

#include "tools/inspect/PropertyValues.h"
#include "util/CFText.h"
#include "util/StringConversions.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

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

std::string WithOneDecimal(double number)
{
    std::array<char, 400> text {};
    std::snprintf(text.data(), text.size(), "%.1f", number);
    return text.data();
}

/// A value that no others are in.
CFRef<CFTypeRef> Object(const Value& value)
{
    if (const auto* const yes = std::get_if<bool>(&value))
        return CFRef<CFTypeRef>::Retained(*yes ? kCFBooleanTrue : kCFBooleanFalse);
    if (const auto* const number = std::get_if<int64_t>(&value))
        return CFRef<CFTypeRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, number));
    if (const auto* const real = std::get_if<double>(&value))
        return CFRef<CFTypeRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, real));
    if (const auto* const object = std::get_if<CFRef<CFTypeRef>>(&value))
        return *object;
    return CFRef<CFTypeRef>(CFText(ValidUTF8(std::get<std::string>(value))).release());
}

std::string Plain(const Value& value)
{
    if (const auto* const text = std::get_if<std::string>(&value))
        return *text;
    if (const auto* const real = std::get_if<double>(&value))
        return WithOneDecimal(*real);
    return PropertyText(Object(value).get());
}

struct JSONValue {
    std::string text; ///< "" for one that is longer than the library writes
    bool isWhole;
};

JSONValue TextForJSON(const Value& value)
{
    if (const auto* const record = std::get_if<Record>(&value)) {
        std::string text;
        const bool isWhole = AppendObject(text, *record);
        return { std::move(text), isWhole };
    }
    // The library writes what holds others: an array of this value alone.
    const CFRef<CFTypeRef> object = Object(value);
    const void* items[] = { object.get() };
    const CFRef<CFArrayRef> array(CFArrayCreate(kCFAllocatorDefault, items, 1, &kCFTypeArrayCallBacks));
    size_t size = 0;
    const CFRef<CFTypeRef> escaped = ObjectForJSON(array.get(), size);
    const std::string text = JSONText(escaped.get(), size);
    return { text.empty() ? "" : text.substr(1, text.size() - 2), !text.empty() };
}

}

Value Number(uint64_t number) { return number <= INT64_MAX ? Value(static_cast<int64_t>(number)) : Value(); }

Value TextOrNone(std::string_view text) { return text.empty() ? Value() : Value(std::string(text)); }

Value StringOrNone(CFTypeRef value)
{
    return TextOrNone(StdString(CFDynamicCast<CFStringRef>(value, CFStringGetTypeID())));
}

std::string SizeText(const Value& bytes)
{
    std::array<char, 32> text {};
    if (const auto* const known = std::get_if<int64_t>(&bytes))
        ConvertUInt64ToSizeString(static_cast<uint64_t>(*known), text.data(), text.size());
    return text.data();
}

Field SizeField(const char* key, const char* title, Value size)
{
    std::array<char, 32> commas {};
    if (const auto* const known = std::get_if<int64_t>(&size))
        ConvertUInt64ToStringWithCommas(static_cast<uint64_t>(*known), commas.data(), commas.size());
    std::string shown = std::string(commas.data()) + " bytes (" + SizeText(size) + ')';
    return { key, title, std::move(size), std::move(shown) };
}

std::string Printable(std::string_view text)
{
    std::string printable;
    for (const char c : ValidUTF8(text)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0xA0 && byte >= 0x80 && printable.ends_with('\xC2'))
            printable.back() = '?';
        else
            printable += byte < 0x20 || byte == 0x7F ? '?' : c;
    }
    return printable;
}

std::string Shortened(std::string_view text, size_t characters)
{
    std::string whole = Printable(text);
    const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    if (static_cast<size_t>(std::count_if(whole.begin(), whole.end(), begins)) <= characters)
        return whole;
    const auto isPast = [&](char c) { return begins(c) && characters-- == 1; };
    whole.erase(std::find_if(whole.begin(), whole.end(), isPast), whole.end());
    return whole + "\u2026";
}

std::string Shown(const Field& field)
{
    if (std::holds_alternative<std::monostate>(field.value))
        return "-";
    return Printable(field.shown.empty() ? Plain(field.value) : field.shown);
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

bool AppendObject(std::string& json, const Record& record)
{
    bool isWhole = true;
    json += '{';
    const char* separator = "";
    for (const Field& field : record) {
        if (std::holds_alternative<std::monostate>(field.value))
            continue;
        const auto [text, isWholeText] = TextForJSON(field.value);
        isWhole = isWhole && isWholeText;
        if (text.empty())
            continue;
        json += separator + ('"' + EscapedForJSON(field.key)) + "\":" + text;
        separator = ",";
    }
    json += '}';
    return isWhole;
}
