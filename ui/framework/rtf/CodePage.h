#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <QString>
#include <QStringDecoder>
#include <array>
#include <map>
#include <string_view>
#include <vector>

namespace rtf {

// Stand for fonts of signs instead of letters; the first is the customary number, nobody uses the second.
constexpr int kSymbolPage = 42;
constexpr int kDingbatsPage = -42;

/// What the bytes of a Windows code page stand for.
class CodePage {
public:
    /// @param number of a code page, or one of the above.
    explicit CodePage(int number);

    bool isUtf8() const { return fEncoding == kCFStringEncodingUTF8; }
    bool hasAscii() const { return fCharacters['A'] == u'A'; } ///< bytes below 128 stand for ASCII
    /// @return 0 where the byte alone is no character, but may begin a pair.
    char16_t characterOf(unsigned char byte) const { return fCharacters[byte]; }
    /// @return 0 where the pair is no character.
    char16_t characterOf(unsigned char first, unsigned char second);

private:
    char16_t decoded(std::string_view bytes) const;

    CFStringEncoding fEncoding;
    std::array<char16_t, 256> fCharacters {};
    std::vector<char16_t> fPairs; ///< by both bytes, those asked for so far; empty before the first
};

/// The code pages that a text uses.
class CodePages {
public:
    /// @param number taken for 1252, Western, where there is no such code page. @return lives as long as this.
    CodePage& page(int number);

private:
    std::map<int, CodePage> fPages;
};

/// Turns bytes into text as they come, also where those of one character come one by one.
class TextDecoder {
public:
    /// Appends to `out`. What is no character shows as U+FFFD.
    void decode(std::string_view bytes, CodePage& page, QString& out);
    /// Forgets a character that has only begun.
    void drop();

private:
    unsigned char fFirst = 0; ///< of a pair whose second byte is still to come; 0 for none
    QStringDecoder fUtf8 { QStringDecoder::Utf8 };
};

}
