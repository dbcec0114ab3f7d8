#include <CoreFoundation/Encodings.h>
#include <CoreFoundation/UrlObject.h>

#include <algorithm>

namespace {

CFStringRef Copy(std::string_view part) { return cf::MakeString(part); }

/// Unescaped; null when that is not UTF-8.
CFStringRef CopyDecoded(std::string_view part) { return cf::MakeString(cf::PercentDecoded(part)); }

/// The component that names of paths are about; empty where there is no path.
std::string_view LastName(const cf::UrlParts& parts)
{
    if (parts.isOpaque() || parts.path.empty())
        return {};
    const cf::Component last = cf::LastComponent(parts.path);
    return parts.path.substr(last.start, last.end - last.start);
}

bool HasCharacter(CFStringRef set, char32_t character)
{
    if (!set)
        return false;
    const cf::Text& text = cf::Check(set, __func__).text;
    for (size_t i = 0; i < text.length(); i += cf::UnitCount(text.characterAt(i))) {
        if (text.characterAt(i) == character)
            return true;
    }
    return false;
}

/// The bytes of the escapes that follow one another from `at` on, which moves past them.
/// @return nothing for a percent sign that begins no escape.
std::optional<std::string> TakeEscapes(const cf::Text& text, size_t& at)
{
    const auto hexAt = [&](size_t index) {
        return index < text.length() && text[index] < 0x80 ? cf::HexValue(static_cast<char>(text[index]))
                                                           : -1;
    };
    std::string bytes;
    for (; at < text.length() && text[at] == u'%'; at += 3) {
        const int high = hexAt(at + 1), low = hexAt(at + 2);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
    }
    return bytes;
}

cf::Text CharacterText(char32_t character)
{
    std::u16string units;
    cf::AppendCharacter(units, character);
    return cf::Text(std::move(units));
}

/// Every byte of the text as an escape; nothing where some of it has no form in the encoding.
std::optional<cf::Text> Escaped(const cf::Text& text, CFStringEncoding encoding)
{
    const std::optional<std::string> bytes = cf::Encode(text, encoding);
    if (!bytes)
        return std::nullopt;
    std::string escapes;
    for (const char byte : *bytes)
        escapes += cf::PercentEscape(byte);
    return cf::Text(std::move(escapes));
}

}

CFTypeID CFURLGetTypeID() { return cf::kURLType; }

CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef URLString, CFURLRef baseURL)
{
    if (!URLString)
        return nullptr;
    const cf::Text& text = cf::Check(URLString, __func__).text;
    if (!text.isAscii() || !cf::IsUrl(text.ascii()) || (text.length() == 0 && !baseURL))
        return nullptr;
    return new __CFURL(text.ascii(), baseURL);
}

CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* URLBytes, CFIndex length,
    CFStringEncoding encoding, CFURLRef baseURL)
{
    const cf::Owned<CFStringRef> text(CFStringCreateWithBytes(allocator, URLBytes, length, encoding, false));
    return CFURLCreateWithString(allocator, text.get(), baseURL);
}

CFStringRef CFURLGetString(CFURLRef anURL) { return cf::Check(anURL, __func__).string.get(); }

CFURLRef CFURLGetBaseURL(CFURLRef anURL) { return cf::Check(anURL, __func__).base.get(); }

CFURLRef CFURLCopyAbsoluteURL(CFURLRef relativeURL)
{
    const __CFURL& url = cf::Check(relativeURL, __func__);
    return url.base ? new __CFURL(url.absoluteText(), nullptr) : cf::Retained(relativeURL);
}

Boolean CFURLHasDirectoryPath(CFURLRef anURL)
{
    const cf::UrlParts parts = cf::Check(anURL, __func__).parts();
    const std::string_view name = LastName(parts);
    return !name.empty() && (parts.path.ends_with('/') || name == "." || name == "..");
}

CFStringRef CFURLCopyScheme(CFURLRef anURL)
{
    const __CFURL& url = cf::Check(anURL, __func__);
    if (const auto scheme = url.parts().scheme)
        return Copy(*scheme);
    return url.base ? CFURLCopyScheme(url.base.get()) : nullptr;
}

CFStringRef CFURLCopyHostName(CFURLRef anURL)
{
    const __CFURL& url = cf::Check(anURL, __func__);
    const cf::UrlParts parts = url.parts();
    if (!parts.authority)
        return url.base && !parts.scheme ? CFURLCopyHostName(url.base.get()) : nullptr;
    std::string_view host = parts.authority->substr(parts.authority->rfind('@') + 1);
    // An address in brackets has colons of its own.
    host = host.starts_with('[') ? host.substr(0, host.find(']') + 1) : host.substr(0, host.find(':'));
    return host.empty() ? nullptr : CopyDecoded(host);
}

CFStringRef CFURLCopyPath(CFURLRef anURL)
{
    const cf::UrlParts parts = cf::Check(anURL, __func__).parts();
    return parts.isOpaque() || parts.path.empty() ? nullptr : Copy(parts.path);
}

CFStringRef CFURLCopyLastPathComponent(CFURLRef url)
{
    return CopyDecoded(LastName(cf::Check(url, __func__).parts()));
}

CFStringRef CFURLCopyPathExtension(CFURLRef url)
{
    const std::string_view name = LastName(cf::Check(url, __func__).parts());
    const size_t point = cf::ExtensionPoint(name);
    return point == std::string_view::npos ? nullptr : CopyDecoded(name.substr(point + 1));
}

CFStringRef CFURLCreateStringByReplacingPercentEscapes(
    CFAllocatorRef, CFStringRef originalString, CFStringRef charactersToLeaveEscaped)
{
    if (!originalString || !charactersToLeaveEscaped)
        return cf::Retained(originalString);
    const cf::Text& text = cf::Check(originalString, __func__).text;
    cf::Text replaced;
    for (size_t at = 0; at < text.length();) {
        if (text[at] != u'%') {
            replaced.append(text.substring(at++, 1));
            continue;
        }
        // Several escapes may make one character.
        const std::optional<std::string> bytes = TakeEscapes(text, at);
        const cf::Owned<CFStringRef> decoded(bytes ? cf::MakeString(*bytes) : nullptr);
        if (!decoded)
            return nullptr;
        const cf::Text& characters = decoded->text;
        for (size_t i = 0; i < characters.length(); i += cf::UnitCount(characters.characterAt(i))) {
            const cf::Text character = CharacterText(characters.characterAt(i));
            const bool stays = HasCharacter(charactersToLeaveEscaped, characters.characterAt(i));
            replaced.append(stays ? Escaped(character, kCFStringEncodingUTF8).value() : character);
        }
    }
    return cf::MakeString(std::move(replaced));
}

CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef, CFStringRef originalString,
    CFStringRef charactersToLeaveUnescaped, CFStringRef legalURLCharactersToBeEscaped,
    CFStringEncoding encoding)
{
    if (!originalString)
        return nullptr;
    constexpr std::string_view legalMarks = "-_.!~*'();/?:@&=+$,";
    const auto isLegal = [&](char32_t character) {
        const char c = static_cast<char>(character);
        return character < 0x80 && cf::PercentEncoded({ &c, 1 }, legalMarks).size() == 1;
    };
    const cf::Text& text = cf::Check(originalString, __func__).text;
    cf::Text escaped;
    for (size_t at = 0; at < text.length(); at += cf::UnitCount(text.characterAt(at))) {
        const char32_t character = text.characterAt(at);
        const bool stays = HasCharacter(charactersToLeaveUnescaped, character)
            || (isLegal(character) && !HasCharacter(legalURLCharactersToBeEscaped, character));
        if (stays) {
            escaped.append(CharacterText(character));
            continue;
        }
        const std::optional<cf::Text> escapes = Escaped(CharacterText(character), encoding);
        if (!escapes)
            return nullptr;
        escaped.append(*escapes);
    }
    return cf::MakeString(std::move(escaped));
}
