#include "ui/framework/rtf/CodePage.h"
#include "ui/framework/rtf/SymbolFonts.h"

#include "util/CFRef.h"
#include <algorithm>

namespace rtf {

namespace {

constexpr int kWesternPage = 1252;
constexpr char16_t kNotAsked = 0xffff; ///< no character
constexpr QChar kReplacement = QChar::ReplacementCharacter;

CFStringEncoding EncodingOf(int number)
{
    return CFStringConvertWindowsCodepageToEncoding(static_cast<UInt32>(number));
}

}

CodePage::CodePage(int number)
    : fEncoding(EncodingOf(number))
{
    for (size_t i = 0; i < fCharacters.size(); i++) {
        const auto byte = static_cast<unsigned char>(i);
        const char chars[] = { static_cast<char>(byte) };
        if (number == kSymbolPage)
            fCharacters[i] = SymbolCharacter(byte);
        else if (number == kDingbatsPage)
            fCharacters[i] = DingbatCharacter(byte);
        else
            fCharacters[i] = byte < 0x80 ? byte : decoded({ chars, 1 });
    }
}

char16_t CodePage::characterOf(unsigned char first, unsigned char second)
{
    if (fPairs.empty())
        fPairs.resize(0x10000, kNotAsked);
    char16_t& known = fPairs[static_cast<size_t>(first << 8 | second)];
    const char chars[] = { static_cast<char>(first), static_cast<char>(second) };
    if (known == kNotAsked)
        known = decoded({ chars, 2 });
    return known;
}

/// @return 0 where the bytes are no character.
char16_t CodePage::decoded(std::string_view bytes) const
{
    const CFRef<CFStringRef> text(CFStringCreateWithBytes(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size()), fEncoding, false));
    return text && CFStringGetLength(text.get()) == 1 ? CFStringGetCharacterAtIndex(text.get(), 0) : u'\0';
}

CodePage& CodePages::page(int number)
{
    const bool known = number == kSymbolPage || number == kDingbatsPage
        || EncodingOf(number) != kCFStringEncodingInvalidId;
    const int used = known ? number : kWesternPage;
    return fPages.try_emplace(used, used).first->second;
}

void TextDecoder::decode(std::string_view bytes, CodePage& page, QString& out)
{
    if (page.isUtf8()) {
        out += fUtf8.decode(bytes);
        return;
    }
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (fFirst == 0 && page.hasAscii() && std::ranges::all_of(bytes, isAscii)) {
        out += QLatin1String(bytes.data(), static_cast<qsizetype>(bytes.size()));
        return;
    }
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (fFirst != 0) {
            const char16_t pair = page.characterOf(std::exchange(fFirst, 0), byte);
            out += pair != 0 ? QChar(pair) : kReplacement;
            if (pair != 0 || !isAscii(c)) // a first byte went astray; what follows it need not
                continue;
        }
        if (const char16_t single = page.characterOf(byte))
            out += QChar(single);
        else
            fFirst = byte;
    }
}

void TextDecoder::drop()
{
    fFirst = 0;
    fUtf8.resetState();
}

}
