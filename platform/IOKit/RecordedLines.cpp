#include <IOKit/RecordedLines.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <unicode/utf8.h>
#include <utility>

namespace iokit {

namespace {

constexpr std::string_view kHeading = "+-o ";

size_t CharacterCount(std::string_view text)
{
    return static_cast<size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80; }));
}

size_t IndentOf(std::string_view text)
{
    size_t indent = 0;
    while (indent < text.size() && (text[indent] == ' ' || text[indent] == '|'))
        ++indent;
    return indent;
}

/// Whether a line ends before what it begins does, as far as its last character tells.
bool StopsInTheMiddle(const RecordedLine& line)
{
    if (line.isHeading())
        return !line.text.ends_with('>');
    const std::string_view content = line.content();
    if (!content.starts_with('"'))
        return false;
    constexpr std::string_view separator = "\" = ";
    const size_t key = content.find(separator, 1);
    if (key == std::string_view::npos)
        return true;
    const std::string_view value = content.substr(key + separator.size());
    constexpr std::string_view starts = "\"<{([";
    constexpr std::string_view ends = "\">})]";
    const size_t kind = value.empty() ? std::string_view::npos : starts.find(value.front());
    return value.empty()
        || (kind != std::string_view::npos && (value.size() == 1 || value.back() != ends[kind]));
}

/// Whether a line is one of the tree's own, and no more of the value before it.
bool BelongsToTree(const RecordedLine& line, size_t width)
{
    const std::string_view content = line.content();
    if (line.isHeading() || content == "{" || content == "}")
        return true;
    return content.starts_with('"')
        && (content.find("\" = ", 1) != std::string_view::npos || line.text.size() == width);
}

struct Escape {
    std::string_view name;
    std::string_view text;
};
constexpr std::array kEscapes {
    Escape { "&lt;", "<" },
    Escape { "&gt;", ">" },
    Escape { "&quot;", "\"" },
    Escape { "&amp;", "&" },
    Escape { "&apos;", "'" },
    Escape { "&nbsp;", " " },
};

void AppendUTF8(std::string& text, uint32_t character)
{
    std::array<char, U8_MAX_LENGTH> bytes {};
    size_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, character);
    text.append(bytes.data(), length);
}

/// Undoes "&#34;" and "&#x22;" at the start of a text. @return how long that was; 0 where it is none.
size_t AppendNumbered(std::string& plain, std::string_view text)
{
    const bool isHex = text.starts_with("&#x");
    const size_t start = isHex ? 3 : 2;
    const size_t end = text.substr(0, 12).find(';');
    if (!text.starts_with("&#") || end == std::string_view::npos)
        return 0;
    uint32_t character = 0;
    const auto [stop, error]
        = std::from_chars(text.data() + start, text.data() + end, character, isHex ? 16 : 10);
    if (error != std::errc() || stop != text.data() + end || character > 0x10ffff)
        return 0;
    AppendUTF8(plain, character);
    return end + 1;
}

std::string WithoutEntities(std::string_view text)
{
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty()) {
        const size_t run = std::min(text.find('&'), text.size());
        plain += text.substr(0, run);
        text.remove_prefix(run);
        const auto* const escape = std::find_if(
            kEscapes.begin(), kEscapes.end(), [&](const Escape& one) { return text.starts_with(one.name); });
        if (escape != kEscapes.end()) {
            plain += escape->text;
            text.remove_prefix(escape->name.size());
        } else if (const size_t length = AppendNumbered(plain, text); length > 0) {
            text.remove_prefix(length);
        } else {
            plain += text.substr(0, 1);
            text.remove_prefix(std::min<size_t>(1, text.size()));
        }
    }
    return plain;
}

/// @return how long the terminal's escape at the start of a text is: "ESC [ 1 m", "ESC ( B".
size_t EscapeLength(std::string_view text)
{
    if (!text.starts_with("\033[") && !text.starts_with("\033("))
        return 1;
    const auto isFinal = [](char c) { return c >= '@' && c <= '~'; };
    const auto* const end = std::find_if(text.begin() + 2, text.end(), isFinal);
    return static_cast<size_t>(end - text.begin()) + (end != text.end() ? 1 : 0);
}

/// The names are in bold: what headings have of the terminal's escapes goes.
std::string WithoutBold(std::string_view text)
{
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty()) {
        std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
        text.remove_prefix(line.size());
        const bool isHeading = line.substr(IndentOf(line)).starts_with(kHeading);
        for (size_t escape = 0; isHeading && (escape = line.find('\033')) != std::string_view::npos;) {
            plain += line.substr(0, escape);
            line.remove_prefix(escape + EscapeLength(line.substr(escape)));
        }
        plain += line;
    }
    return plain;
}

}

std::optional<RecordedLine> RecordedLines::next()
{
    if (fRest.empty())
        return {};
    const size_t end = fRest.find('\n');
    std::string_view text = fRest.substr(0, end);
    fRest.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    const bool isUnfinished = end == std::string_view::npos;
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    const bool isFull
        = fWidth > 0 && text.size() >= fWidth && (text.size() == fWidth || CharacterCount(text) == fWidth);
    return RecordedLine { text, IndentOf(text), isUnfinished || isFull };
}

std::string_view PlainRegistryText(std::string_view text, std::string& copy)
{
    RecordedLines lines(text);
    std::optional<RecordedLine> first = lines.next();
    while (first && !first->isHeading())
        first = lines.next();
    if (!first)
        return "";
    text.remove_prefix(static_cast<size_t>(first->text.data() - text.data()));
    if (first->text.find("  &lt;class ") != std::string_view::npos) {
        copy = WithoutEntities(text);
        text = copy;
    }
    if (text.find('\033') != std::string_view::npos) {
        std::string plain = WithoutBold(text);
        copy = std::move(plain);
        text = copy;
    }
    return text;
}

size_t WidthOf(std::string_view text)
{
    size_t width = 0;
    bool isCut = false;
    RecordedLines lines(text);
    for (std::optional<RecordedLine> line = lines.next(); line; line = lines.next()) {
        if (line->text.size() < width || (isCut && line->text.size() == width))
            continue;
        const size_t count = CharacterCount(line->text);
        if (count < width)
            continue;
        isCut = isCut && count == width;
        width = count;
        const std::optional<RecordedLine> following = RecordedLines(lines).next();
        isCut = isCut || (StopsInTheMiddle(*line) && following && BelongsToTree(*following, width));
    }
    return isCut ? width : 0;
}

}
