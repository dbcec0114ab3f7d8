#include "CoreFoundation/PropertyListCheck.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <system_error>

namespace {

// Every byte of a document passes through here; comparing is several times as quick as searching a set.
constexpr bool IsWhitespace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

std::string_view Trimmed(std::string_view text)
{
    while (!text.empty() && IsWhitespace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsWhitespace(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Whether libplist reads the text as the number that it shows. It would take a leading zero for octal, so
/// those are refused.
bool IsInteger(std::string_view text, bool& isWide)
{
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    } else if (text.starts_with('0') && text.size() > 1) {
        return false;
    }
    uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    if (error != std::errc() || end != text.data() + text.size())
        return false;
    constexpr auto maximum = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    isWide = magnitude > maximum && !isNegative;
    return !isNegative || magnitude <= maximum + 1;
}

bool IsReal(std::string_view text)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error != std::errc::invalid_argument && end == text.data() + text.size();
}

/// @return the number that `length` digits at `position` form, or -1.
int Digits(std::string_view text, size_t position, size_t length)
{
    int value = 0;
    for (const char c : text.substr(position, length)) {
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

bool IsDate(std::string_view text)
{
    constexpr std::string_view shape = "0000-00-00T00:00:00Z";
    if (text.size() != shape.size())
        return false;
    for (size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] != '0' && text[i] != shape[i])
            return false;
    }
    const int year = Digits(text, 0, 4);
    const int month = Digits(text, 5, 2);
    if (year < 1 || month < 1 || month > 12)
        return false;
    constexpr std::array<int, 12> monthDays = { 31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31 };
    const bool isLeapYear = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    const int lastDay = month == 2 && !isLeapYear ? 28 : monthDays.at(static_cast<size_t>(month) - 1);
    const auto inRange = [text](size_t position, int low, int high) {
        const int value = Digits(text, position, 2);
        return value >= low && value <= high;
    };
    return inRange(8, 1, lastDay) && inRange(11, 0, 23) && inRange(14, 0, 59) && inRange(17, 0, 59);
}

constexpr uint8_t kBase64Skip = 1;
constexpr uint8_t kBase64Digit = 2;
constexpr uint8_t kBase64Padding = 3;

constexpr std::array<uint8_t, 256> Base64Classes()
{
    std::array<uint8_t, 256> classes {};
    for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"))
        classes[static_cast<uint8_t>(c)] = kBase64Digit;
    for (const char c : std::string_view(" \t\r\n"))
        classes[static_cast<uint8_t>(c)] = kBase64Skip;
    classes[static_cast<uint8_t>('=')] = kBase64Padding;
    return classes;
}

/// Whole groups of four only: libplist drops the rest without a word.
bool IsBase64(std::string_view text)
{
    static constexpr std::array<uint8_t, 256> classes = Base64Classes();
    size_t digits = 0;
    size_t padding = 0;
    for (const char c : text) {
        const uint8_t kind = classes[static_cast<uint8_t>(c)];
        if (kind == 0 || (kind == kBase64Digit && padding != 0))
            return false;
        digits += kind == kBase64Digit;
        padding += kind == kBase64Padding;
    }
    return (digits + padding) % 4 == 0 && padding <= 2;
}

struct Tag {
    std::string_view name;
    bool isClosing;
    bool isEmpty; ///< ends in "/>"
};

/// Walks over the document element by element. The first fault stops it.
class XMLChecker {
public:
    explicit XMLChecker(std::string_view text)
        : fText(text)
    {
    }

    PropertyListCheck check()
    {
        if (fText.starts_with("\xEF\xBB\xBF"))
            fText.remove_prefix(3);
        if (fText.find('\0') != std::string_view::npos)
            fFault = "The XML property list has a null character."; // which would cut texts short
        else if (skipProlog() && readRoot())
            return { nullptr, fText.substr(0, fPosition), fHasWideIntegers, fHasWideDates };
        return { fFault, {}, false, false };
    }

private:
    bool fail(const char* fault)
    {
        fFault = fault;
        return false;
    }

    bool at(std::string_view token) const { return fText.substr(fPosition).starts_with(token); }

    bool skipPast(std::string_view token)
    {
        const size_t found = fText.find(token, fPosition);
        if (found == std::string_view::npos)
            return fail("The XML property list ends inside a comment, section or instruction.");
        fPosition = found + token.size();
        return true;
    }

    void skipWhitespace()
    {
        while (fPosition < fText.size() && IsWhitespace(fText[fPosition]))
            ++fPosition;
    }

    bool skipWhitespaceAndComments()
    {
        for (skipWhitespace(); at("<!--"); skipWhitespace()) {
            fPosition += 4;
            if (!skipPast("-->"))
                return false;
        }
        return true;
    }

    bool skipProlog()
    {
        while (skipWhitespaceAndComments()) {
            if (at("<?")) {
                if (!skipPast("?>"))
                    return false;
            } else if (!at("<!DOCTYPE")) {
                return true;
            } else if (!skipDocumentType()) {
                return false;
            }
        }
        return false;
    }

    /// No tag may stand inside, so that libplist's own idea of where the declaration ends cannot matter.
    bool skipDocumentType()
    {
        bool inSubset = false;
        for (; fPosition < fText.size(); ++fPosition) {
            const char c = fText[fPosition];
            if (c == '<' && !at("<!"))
                break;
            if (c == '[' || c == ']')
                inSubset = c == '[';
            if (c == '>' && !inSubset) {
                ++fPosition;
                return true;
            }
        }
        return fail("The document type declaration of the XML property list is malformed.");
    }

    bool readTag(Tag& tag)
    {
        if (!at("<"))
            return fail(fPosition == fText.size() ? "The XML property list ends early."
                                                  : "The XML property list has text between its elements.");
        const size_t end = fText.find('>', fPosition);
        std::string_view inside = fText.substr(fPosition + 1, end - fPosition - 1);
        if (end == std::string_view::npos || inside.find('<') != std::string_view::npos)
            return fail("The XML property list has an unfinished tag.");
        fPosition = end + 1;
        tag.isClosing = inside.starts_with('/');
        tag.isEmpty = inside.ends_with('/') && inside.size() > 1;
        if (tag.isClosing)
            inside.remove_prefix(1);
        else if (tag.isEmpty)
            inside.remove_suffix(1);
        const auto* const nameEnd = std::find_if(inside.begin(), inside.end(), IsWhitespace);
        tag.name = inside.substr(0, static_cast<size_t>(nameEnd - inside.begin()));
        return true;
    }

    bool readClosingTag(std::string_view name)
    {
        Tag tag {};
        if (!readTag(tag))
            return false;
        return (tag.isClosing && tag.name == name)
            || fail("The XML property list has tags that do not match.");
    }

    bool readRoot()
    {
        Tag tag {};
        if (!readTag(tag))
            return false;
        if (tag.name != "plist")
            return readElement(tag, 0);
        if (tag.isClosing || tag.isEmpty)
            return fail("The XML property list is empty.");
        return skipWhitespaceAndComments() && readTag(tag) && readElement(tag, 0)
            && skipWhitespaceAndComments() && readClosingTag("plist");
    }

    bool readElement(const Tag& tag, unsigned depth)
    {
        if (tag.isClosing)
            return fail("The XML property list has tags that do not match.");
        if (tag.name == "dict")
            return readDictionary(tag, depth + 1);
        if (tag.name == "array")
            return readArray(tag, depth + 1);
        if (tag.name == "string")
            return tag.isEmpty || readText(tag.name);
        return readScalar(tag);
    }

    bool enterContainer(unsigned depth)
    {
        return depth <= kPropertyListDepthLimit || fail("The property list is nested too deeply.");
    }

    bool readArray(const Tag& start, unsigned depth)
    {
        if (start.isEmpty)
            return enterContainer(depth);
        Tag tag {};
        while (enterContainer(depth) && skipWhitespaceAndComments() && readTag(tag)) {
            if (tag.isClosing && tag.name == "array")
                return true;
            if (!readElement(tag, depth))
                return false;
        }
        return false;
    }

    bool readDictionary(const Tag& start, unsigned depth)
    {
        if (start.isEmpty)
            return enterContainer(depth);
        Tag tag {};
        while (enterContainer(depth) && skipWhitespaceAndComments() && readTag(tag)) {
            if (tag.isClosing && tag.name == "dict")
                return true;
            if (tag.isClosing || tag.isEmpty || tag.name != "key")
                return fail("A dictionary of the XML property list has a value without a key.");
            if (!readText("key") || !skipWhitespaceAndComments() || !readTag(tag) || !readElement(tag, depth))
                return false;
        }
        return false;
    }

    /// Text of a string or key: anything up to the closing tag, with comments and literal sections.
    bool readText(std::string_view name)
    {
        for (;;) {
            fPosition = std::min(fText.find('<', fPosition), fText.size());
            if (at("<!--")) {
                fPosition += 4;
                if (!skipPast("-->"))
                    return false;
            } else if (!at("<![CDATA[")) {
                return readClosingTag(name);
            } else if (!skipPast("]]>")) {
                return false;
            }
        }
    }

    bool readScalar(const Tag& tag)
    {
        const size_t start = fPosition;
        if (!tag.isEmpty)
            fPosition = std::min(fText.find('<', fPosition), fText.size());
        const std::string_view content = fText.substr(start, fPosition - start);
        return checkScalar(tag.name, content) && (tag.isEmpty || readClosingTag(tag.name));
    }

    bool checkScalar(std::string_view name, std::string_view content)
    {
        const std::string_view value = Trimmed(content);
        if (name == "true" || name == "false")
            return value.empty() || fail("A boolean of the XML property list has content.");
        if (name == "integer") {
            bool isWide = false;
            if (!IsInteger(value, isWide))
                return fail("The XML property list has a malformed integer.");
            fHasWideIntegers = fHasWideIntegers || isWide;
            return true;
        }
        if (name == "real")
            return IsReal(value) || fail("The XML property list has a malformed real number.");
        if (name == "date") {
            // The years that 32-bit seconds around 2001 reach, but for the two that they reach in part.
            fHasWideDates = fHasWideDates || value < "1933" || value >= "2069";
            return IsDate(value) || fail("The XML property list has a malformed date.");
        }
        if (name == "data")
            return IsBase64(value) || fail("The XML property list has malformed data.");
        return fail("The XML property list has an unknown element.");
    }

    std::string_view fText;
    size_t fPosition = 0;
    const char* fFault = "The property list is empty.";
    bool fHasWideIntegers = false;
    bool fHasWideDates = false;
};

} // namespace

PropertyListCheck CheckXMLPropertyList(std::string_view text) { return XMLChecker(text).check(); }
