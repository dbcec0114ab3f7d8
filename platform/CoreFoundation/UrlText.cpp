#include <CoreFoundation/UrlText.h>

#include <algorithm>
#include <vector>

namespace cf {

namespace {

constexpr std::string_view kUnreservedMarks = "-._~";

// Not isalpha and its like, which ask the locale.
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsLetterOrDigit(char c) { return IsLetter(c) || (c >= '0' && c <= '9'); }
bool Contains(std::string_view set, char c) { return set.find(c) != std::string_view::npos; }

bool HasOnly(std::string_view text, std::string_view marks)
{
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '%') {
            if (i + 2 >= text.size() || HexValue(text[i + 1]) < 0 || HexValue(text[i + 2]) < 0)
                return false;
        } else if (!IsLetterOrDigit(text[i]) && !Contains(kUnreservedMarks, text[i])
            && !Contains(marks, text[i]))
            return false;
    }
    return true;
}

bool IsScheme(std::string_view text)
{
    return !text.empty() && IsLetter(text.front())
        && std::ranges::all_of(text, [](char c) { return IsLetterOrDigit(c) || Contains("+-.", c); });
}

/// Takes what comes before the first of `ends` off the text.
std::string_view TakeUntil(std::string_view& text, std::string_view ends)
{
    const std::string_view taken = text.substr(0, text.find_first_of(ends));
    text.remove_prefix(taken.size());
    return taken;
}

/// Takes what follows `mark` at the front, up to the first of `ends`, off the text.
std::optional<std::string_view> TakeAfter(
    std::string_view& text, std::string_view mark, std::string_view ends)
{
    if (!text.starts_with(mark))
        return std::nullopt;
    text.remove_prefix(mark.size());
    return TakeUntil(text, ends);
}

/// Takes "." and ".." components out, each ".." with the component before it. What a relative path has no
/// component for stays; above the root there is nothing.
std::string WithoutDots(std::string_view path)
{
    if (path.empty())
        return {};
    const bool isRooted = path.starts_with('/');
    path.remove_prefix(isRooted ? 1 : 0);
    std::vector<std::string_view> kept;
    for (bool isLast = false; !isLast;) {
        const std::string_view name = TakeUntil(path, "/");
        isLast = path.empty();
        path.remove_prefix(isLast ? 0 : 1);
        if (name != "." && name != "..") {
            kept.push_back(name);
            continue;
        }
        if (name == ".." && !kept.empty() && kept.back() != "..")
            kept.pop_back();
        else if (name == ".." && !isRooted)
            kept.push_back(name);
        if (isLast) // a folder
            kept.emplace_back();
    }
    std::string result;
    for (const std::string_view name : kept)
        result.append(name).append("/");
    result.erase(result.size() - std::min<size_t>(result.size(), 1));
    if (isRooted)
        result.insert(result.begin(), '/');
    return result.empty() ? "./" : result;
}

/// The folder of the base's path, then the relative path.
std::string Merged(const UrlParts& base, std::string_view path)
{
    const bool isBareHost = base.authority && base.path.empty();
    std::string merged(isBareHost ? "/" : base.path.substr(0, base.path.rfind('/') + 1));
    return merged.append(path);
}

}

int HexValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool IsUrl(std::string_view text)
{
    const UrlParts parts = SplitUrl(text);
    return HasOnly(parts.authority.value_or(""), "!$&'()*+,;=:@[]") && HasOnly(parts.path, "!$&'()*+,;=:@/")
        && HasOnly(parts.query.value_or(""), "!$&'()*+,;=:@/?")
        && HasOnly(parts.fragment.value_or(""), "!$&'()*+,;=:@/?");
}

UrlParts SplitUrl(std::string_view text)
{
    UrlParts parts;
    const std::string_view scheme = text.substr(0, text.find_first_of(":/?#"));
    if (scheme.size() < text.size() && text[scheme.size()] == ':' && IsScheme(scheme)) {
        parts.scheme = scheme;
        text.remove_prefix(scheme.size() + 1);
    }
    parts.authority = TakeAfter(text, "//", "/?#");
    parts.path = TakeUntil(text, "?#");
    parts.query = TakeAfter(text, "?", "#");
    parts.fragment = TakeAfter(text, "#", "");
    return parts;
}

std::string JoinUrl(const UrlParts& parts)
{
    std::string text;
    if (parts.scheme)
        text.append(*parts.scheme).append(":");
    if (parts.authority)
        text.append("//").append(*parts.authority);
    text.append(parts.path);
    if (parts.query)
        text.append("?").append(*parts.query);
    if (parts.fragment)
        text.append("#").append(*parts.fragment);
    return text;
}

std::string ResolveUrl(std::string_view base, std::string_view reference)
{
    const UrlParts from = SplitUrl(base);
    UrlParts result = SplitUrl(reference);
    std::string path;
    if (result.scheme || result.authority || result.path.starts_with('/'))
        path = result.isOpaque() ? std::string(result.path) : WithoutDots(result.path);
    else if (!result.path.empty())
        path = WithoutDots(Merged(from, result.path));
    else {
        path = from.path;
        if (!result.query)
            result.query = from.query;
    }
    if (!result.scheme) {
        result.scheme = from.scheme;
        if (!result.authority)
            result.authority = from.authority;
    }
    result.path = path;
    return JoinUrl(result);
}

std::string PercentDecoded(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] != '%' || i + 2 >= text.size()) {
            bytes += text[i];
            continue;
        }
        bytes += static_cast<char>(HexValue(text[i + 1]) << 4 | HexValue(text[i + 2]));
        i += 2;
    }
    return bytes;
}

std::string PercentEscape(char byte)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    return { '%', digits[value >> 4], digits[value & 15] };
}

std::string PercentEncoded(std::string_view bytes, std::string_view kept)
{
    std::string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        if (IsLetterOrDigit(byte) || Contains(kUnreservedMarks, byte) || Contains(kept, byte))
            text += byte;
        else
            text += PercentEscape(byte);
    }
    return text;
}

Component LastComponent(std::string_view path)
{
    size_t end = path.size();
    while (end > 1 && path[end - 1] == '/')
        end--;
    if (path.substr(0, end) == "/")
        return { 0, 1 };
    return { path.substr(0, end).rfind('/') + 1, end };
}

size_t ExtensionPoint(std::string_view component)
{
    const size_t point = component.rfind('.');
    return point == 0 || point == std::string_view::npos || point + 1 == component.size() || component == ".."
        ? std::string_view::npos
        : point;
}

}
