#include "CoreFoundation/StringsTable.h"

#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFString.h>

#include "CoreFoundation/Runtime.h"
#include "CoreFoundation/Text.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace {

bool IsWhitespace(char16_t c)
{
    return (c >= u'\t' && c <= u'\r') || c == u' ' || c == u'\u00A0' || c == u'\u2028' || c == u'\u2029';
}

bool IsUnquoted(char16_t c)
{
    constexpr std::u16string_view others = u"_$/:.-";
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9')
        || others.find(c) != std::u16string_view::npos;
}

/// @return the value of the digit, or 16 for what is none.
unsigned DigitValue(char16_t c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10U;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10U;
    return 16;
}

/// What a letter after a backslash stands for.
char16_t Unescaped(char16_t c)
{
    constexpr std::u16string_view letters = u"abfnrtv";
    constexpr std::u16string_view meanings = u"\a\b\f\n\r\t\v";
    const size_t found = letters.find(c);
    return found == std::u16string_view::npos ? c : meanings[found];
}

class Parser {
public:
    Parser(std::u16string text, CFMutableDictionaryRef table)
        : fText(std::move(text))
        , fTable(table)
    {
    }

    /// Up to the end or the first fault.
    void parse()
    {
        while (parsePair()) { }
    }

private:
    bool atEnd() const { return fPosition >= fText.size(); }
    bool at(std::u16string_view token) const
    {
        return std::u16string_view(fText).substr(fPosition).starts_with(token);
    }

    bool take(char16_t c)
    {
        if (!skipBlanks() || atEnd() || fText[fPosition] != c)
            return false;
        ++fPosition;
        return true;
    }

    /// @return false for a comment that does not end.
    bool skipBlanks()
    {
        for (;;) {
            while (!atEnd() && IsWhitespace(fText[fPosition]))
                ++fPosition;
            if (at(u"//")) {
                fPosition = std::min(fText.find_first_of(u"\n\r\u2028\u2029", fPosition), fText.size());
            } else if (at(u"/*")) {
                const size_t end = fText.find(u"*/", fPosition + 2);
                if (end == std::u16string_view::npos)
                    return false;
                fPosition = end + 2;
            } else {
                return true;
            }
        }
    }

    bool parsePair()
    {
        std::u16string key;
        if (!parseText(key))
            return false;
        std::u16string value = key;
        if (take(u'=') && !parseText(value))
            return false;
        if (!take(u';'))
            return false;
        const cf::Owned<CFStringRef> keyRef = makeString(key);
        const cf::Owned<CFStringRef> valueRef = makeString(value);
        CFDictionarySetValue(fTable, keyRef.get(), valueRef.get());
        return true;
    }

    static cf::Owned<CFStringRef> makeString(const std::u16string& text)
    {
        return cf::Owned<CFStringRef>(CFStringCreateWithCharacters(kCFAllocatorDefault,
            reinterpret_cast<const UniChar*>(text.data()), static_cast<CFIndex>(text.size())));
    }

    bool parseText(std::u16string& text)
    {
        text.clear();
        if (!skipBlanks() || atEnd())
            return false;
        const char16_t c = fText[fPosition];
        if (c == u'"' || c == u'\'')
            return parseQuoted(c, text);
        const size_t start = fPosition;
        while (!atEnd() && IsUnquoted(fText[fPosition]))
            ++fPosition;
        text.assign(fText, start, fPosition - start);
        return !text.empty();
    }

    bool parseQuoted(char16_t quote, std::u16string& text)
    {
        for (++fPosition; !atEnd(); ++fPosition) {
            const char16_t c = fText[fPosition];
            if (c == quote) {
                ++fPosition;
                return true;
            }
            if (c != u'\\')
                text += c;
            else if (++fPosition < fText.size())
                text += parseEscape();
        }
        return false;
    }

    /// At the character after the backslash. Leaves the position on the last character of the escape.
    char16_t parseEscape()
    {
        const char16_t c = fText[fPosition];
        if (DigitValue(c) < 8)
            return parseDigits(fPosition, 3, 8);
        if ((c == u'U' || c == u'u') && fPosition + 1 < fText.size() && DigitValue(fText[fPosition + 1]) < 16)
            return parseDigits(fPosition + 1, 4, 16);
        return Unescaped(c);
    }

    char16_t parseDigits(size_t start, size_t maximum, unsigned base)
    {
        unsigned value = 0;
        size_t i = start;
        for (; i < fText.size() && i < start + maximum && DigitValue(fText[i]) < base; ++i)
            value = value * base + DigitValue(fText[i]);
        fPosition = i - 1;
        return static_cast<char16_t>(value);
    }

    const std::u16string fText;
    CFMutableDictionaryRef fTable;
    size_t fPosition = 0;
};

std::u16string FromUTF16(std::span<const uint8_t> bytes, bool isBigEndian)
{
    std::u16string text(bytes.size() / 2, u'\0');
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned first = bytes[2 * i];
        const unsigned second = bytes[2 * i + 1];
        text[i] = static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
    }
    return text;
}

/// @return the text before the first byte that is not UTF-8.
std::u16string FromUTF8(std::span<const uint8_t> bytes)
{
    std::u16string text;
    text.reserve(bytes.size());
    for (size_t i = 0; i < bytes.size();) {
        UChar32 character = 0;
        U8_NEXT(bytes.data(), i, bytes.size(), character);
        if (character < 0)
            break;
        cf::AppendCharacter(text, static_cast<char32_t>(character));
    }
    return text;
}

bool StartsWith(std::span<const uint8_t> bytes, std::initializer_list<uint8_t> prefix)
{
    return bytes.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), bytes.begin());
}

std::u16string Decoded(std::span<const uint8_t> bytes)
{
    if (StartsWith(bytes, { 0xEF, 0xBB, 0xBF }))
        return FromUTF8(bytes.subspan(3));
    if (StartsWith(bytes, { 0xFE, 0xFF }))
        return FromUTF16(bytes.subspan(2), true);
    if (StartsWith(bytes, { 0xFF, 0xFE }))
        return FromUTF16(bytes.subspan(2), false);
    if (bytes.size() >= 2 && (bytes[0] == 0) != (bytes[1] == 0))
        return FromUTF16(bytes, bytes[0] == 0);
    return FromUTF8(bytes);
}

void AddStringPair(const void* key, const void* value, void* table)
{
    if (CFGetTypeID(value) == CFStringGetTypeID())
        CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(table), key, value);
}

/// @return whether the bytes are a property list that is a dictionary; its pairs of strings are then in the
/// table.
bool AddPropertyList(std::span<const uint8_t> bytes, CFMutableDictionaryRef table)
{
    const cf::Owned<CFDataRef> data(CFDataCreateWithBytesNoCopy(
        kCFAllocatorDefault, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFAllocatorNull));
    const cf::Owned<CFPropertyListRef> plist(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
    if (!plist || CFGetTypeID(plist.get()) != CFDictionaryGetTypeID())
        return false;
    CFDictionaryApplyFunction(static_cast<CFDictionaryRef>(plist.get()), AddStringPair, table);
    return true;
}

} // namespace

CFDictionaryRef CreateStringsTable(std::span<const uint8_t> bytes)
{
    CFMutableDictionaryRef table = CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    // A property list in text form, "<" or "bplist00" first, is no table in the other form, so the order
    // decides nothing.
    if (!AddPropertyList(bytes, table))
        Parser(Decoded(bytes), table).parse();
    return table;
}
