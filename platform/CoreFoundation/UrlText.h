#pragma once

#include <optional>
#include <string>
#include <string_view>

// URLs as texts, by RFC 3986.

namespace cf {

/// What a URL consists of, without the punctuation between; absent parts differ from empty ones. The views
/// point into the text.
struct UrlParts {
    std::optional<std::string_view> scheme, authority;
    std::string_view path;
    std::optional<std::string_view> query, fragment;

    /// @return whether the path is no path, as that of "mailto:someone".
    bool isOpaque() const { return scheme && !authority && !path.starts_with('/'); }
};

/// @return whether the text has only characters that a URL can hold, at places where it can.
bool IsUrl(std::string_view text);
UrlParts SplitUrl(std::string_view text);
std::string JoinUrl(const UrlParts& parts);
/// @return the absolute URL that `reference` stands for in a document at `base`.
std::string ResolveUrl(std::string_view base, std::string_view reference);

/// The value of a hexadecimal digit; -1 for any other character.
int HexValue(char digit);
/// @param text whose percent signs all begin escapes.
std::string PercentDecoded(std::string_view text);
/// "%" and two digits, whatever the byte.
std::string PercentEscape(char byte);
/// @param kept the characters that stay, besides letters, digits and "-._~".
std::string PercentEncoded(std::string_view bytes, std::string_view kept);

/// Where the last component of a path begins and ends, without slashes after it. The root is a component,
/// "/".
struct Component {
    size_t start, end;
};
Component LastComponent(std::string_view path);
/// Where the extension's point is; npos when there is no extension. A name's first character begins none.
size_t ExtensionPoint(std::string_view component);

}
