#include <CoreFoundation/CFStringEncodingExt.h>
#include <CoreFoundation/EncodingList.h>

#include <algorithm>
#include <array>
#include <bit>

namespace cf {

namespace {

/// A name as a template's argument.
template <size_t Size> struct Name {
    // Implicit, so that a literal is enough.
    constexpr Name(const char (&literal)[Size]) { std::ranges::copy(literal, text); }
    char text[Size] {};
};

/// The table of an encoding that ICU has under this name, made when it is first asked for.
template <Name name> const ByteTable& Table()
{
    static const ByteTable table(name.text);
    return table;
}

constexpr bool kHostIsBigEndian = std::endian::native == std::endian::big;

constexpr auto kEncodings = std::to_array<Encoding>({
    // The first ones are asked for most.
    { kCFStringEncodingUTF8, 65001, Form::Utf8 },
    { kCFStringEncodingASCII, 20127, Form::Table, Table<"US-ASCII"> },
    { kCFStringEncodingMacRoman, 10000, Form::Table, Table<"macintosh"> },
    { kCFStringEncodingMacGreek, 10006, Form::Table, Table<"x-mac-greek"> },
    { kCFStringEncodingMacCyrillic, 10007, Form::Table, Table<"x-mac-cyrillic"> },
    { kCFStringEncodingMacCentralEurRoman, 10029, Form::Table, Table<"x-mac-centraleurroman"> },
    { kCFStringEncodingMacTurkish, 10081, Form::Table, Table<"x-mac-turkish"> },
    { kCFStringEncodingISOLatin1, 28591, Form::Table, Table<"ISO-8859-1"> },
    { kCFStringEncodingDOSLatinUS, 437, Form::Table, Table<"ibm-437"> },
    { kCFStringEncodingDOSGreek, 737, Form::Table, Table<"ibm-737"> },
    { kCFStringEncodingDOSBalticRim, 775, Form::Table, Table<"ibm-775"> },
    { kCFStringEncodingDOSLatin1, 850, Form::Table, Table<"ibm-850"> },
    { kCFStringEncodingDOSLatin2, 852, Form::Table, Table<"ibm-852"> },
    { kCFStringEncodingDOSCyrillic, 855, Form::Table, Table<"ibm-855"> },
    { kCFStringEncodingDOSTurkish, 857, Form::Table, Table<"ibm-857"> },
    { kCFStringEncodingDOSPortuguese, 860, Form::Table, Table<"ibm-860"> },
    { kCFStringEncodingDOSIcelandic, 861, Form::Table, Table<"ibm-861"> },
    { kCFStringEncodingDOSHebrew, 862, Form::Table, Table<"ibm-862"> },
    { kCFStringEncodingDOSCanadianFrench, 863, Form::Table, Table<"ibm-863"> },
    { kCFStringEncodingDOSNordic, 865, Form::Table, Table<"ibm-865"> },
    { kCFStringEncodingDOSRussian, 866, Form::Table, Table<"ibm-866"> },
    { kCFStringEncodingDOSGreek2, 869, Form::Table, Table<"ibm-869"> },
    { kCFStringEncodingDOSThai, 874, Form::Table, Table<"windows-874"> },
    { kCFStringEncodingDOSJapanese, 932, Form::Pairs, nullptr, "windows-932" },
    { kCFStringEncodingDOSChineseSimplif, 936, Form::Pairs, nullptr, "windows-936" },
    { kCFStringEncodingDOSKorean, 949, Form::Pairs, nullptr, "windows-949" },
    { kCFStringEncodingDOSChineseTrad, 950, Form::Pairs, nullptr, "windows-950" },
    { kCFStringEncodingWindowsLatin1, 1252, Form::Table, Table<"windows-1252"> },
    { kCFStringEncodingWindowsLatin2, 1250, Form::Table, Table<"windows-1250"> },
    { kCFStringEncodingWindowsCyrillic, 1251, Form::Table, Table<"windows-1251"> },
    { kCFStringEncodingWindowsGreek, 1253, Form::Table, Table<"windows-1253"> },
    { kCFStringEncodingWindowsLatin5, 1254, Form::Table, Table<"windows-1254"> },
    { kCFStringEncodingWindowsHebrew, 1255, Form::Table, Table<"windows-1255"> },
    { kCFStringEncodingWindowsArabic, 1256, Form::Table, Table<"windows-1256"> },
    { kCFStringEncodingWindowsBalticRim, 1257, Form::Table, Table<"windows-1257"> },
    { kCFStringEncodingWindowsVietnamese, 1258, Form::Table, Table<"windows-1258"> },
    { kCFStringEncodingUTF16, 0, Form::Utf16, nullptr, nullptr, kHostIsBigEndian, true },
    { kCFStringEncodingUTF16BE, 0, Form::Utf16, nullptr, nullptr, true },
    { kCFStringEncodingUTF16LE, 0, Form::Utf16 },
    { kCFStringEncodingUTF32, 0, Form::Utf32, nullptr, nullptr, kHostIsBigEndian, true },
    { kCFStringEncodingUTF32BE, 0, Form::Utf32, nullptr, nullptr, true },
    { kCFStringEncodingUTF32LE, 0, Form::Utf32 },
});

}

const Encoding* FindEncoding(CFStringEncoding id)
{
    const auto* found = std::ranges::find(kEncodings, id, &Encoding::id);
    return found == kEncodings.end() ? nullptr : found;
}

const Encoding* FindEncodingOfCodepage(UInt32 codepage)
{
    const auto* found = std::ranges::find(kEncodings, codepage, &Encoding::windowsCodepage);
    return found == kEncodings.end() || codepage == 0 ? nullptr : found;
}

}
