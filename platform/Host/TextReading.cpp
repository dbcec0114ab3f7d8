#include "TextReading.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <unicode/utf8.h>

namespace {

constexpr std::string_view kBlanks(" \t\r\n\0", 5);
constexpr std::string_view kLineEnds("\n\0", 2);
constexpr int64_t kLargestNumber = int64_t { 1 } << 48U;
constexpr const char* kReplacement = "\xEF\xBF\xBD";

bool IsFit(UChar32 character)
{
    return (character >= 0x20 && (character < 0x7F || character > 0x9F)) || character == '\n'
        || character == '\t';
}

}

std::string CleanText(std::string_view bytes)
{
    const auto* const units = reinterpret_cast<const uint8_t*>(bytes.data());
    std::string clean;
    for (size_t i = 0; i < bytes.size();) {
        const size_t start = i;
        UChar32 character = 0;
        U8_NEXT(units, i, bytes.size(), character);
        if (character < 0 || character == 0xFFFE || character == 0xFFFF)
            clean += kReplacement;
        else if (IsFit(character))
            clean += bytes.substr(start, i - start);
    }
    return clean;
}

std::string CleanLine(std::string_view bytes)
{
    bytes.remove_prefix(std::min(bytes.find_first_not_of(kBlanks), bytes.size()));
    std::string line = CleanText(bytes.substr(0, bytes.find_first_of(kLineEnds)));
    line.erase(line.find_last_not_of(kBlanks) + 1);
    line.erase(0, line.find_first_not_of(kBlanks));
    return line;
}

TextPairs PairsOf(std::string_view text, char separator)
{
    TextPairs pairs;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (const size_t at = line.find(separator); at != std::string_view::npos)
            pairs[CleanLine(line.substr(0, at))] = CleanLine(line.substr(at + 1));
    }
    return pairs;
}

std::string ValueOf(const TextPairs& pairs, const std::string& name)
{
    const auto found = pairs.find(name);
    return found != pairs.end() ? found->second : "";
}

std::string Unescaped(std::string_view text)
{
    std::string plain;
    while (!text.empty()) {
        const bool isHex = text.starts_with("\\x");
        const std::string_view digits
            = text.substr(0, 4).substr(std::min<size_t>(isHex ? 2 : 1, text.size()));
        unsigned char byte = 0;
        const auto [end, error]
            = std::from_chars(digits.data(), digits.data() + digits.size(), byte, isHex ? 16 : 8);
        const bool isCode = text.size() > 3 && text[0] == '\\' && error == std::errc()
            && end == digits.data() + digits.size();
        plain += isCode ? static_cast<char>(byte) : text[0];
        text.remove_prefix(isCode ? 4 : 1);
    }
    return plain;
}

std::optional<int64_t> NumberIn(std::string_view text)
{
    const bool isHex = text.starts_with("0x");
    text.remove_prefix(isHex ? 2 : 0);
    int64_t number = 0;
    const auto [end, error]
        = std::from_chars(text.data(), text.data() + text.size(), number, isHex ? 16 : 10);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && number >= -kLargestNumber && number <= kLargestNumber ? std::optional(number)
                                                                            : std::nullopt;
}

bool ComesBefore(const std::string& first, const std::string& second)
{
    return strverscmp(first.c_str(), second.c_str()) < 0;
}
