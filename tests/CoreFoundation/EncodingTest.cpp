#include "Values.h"

#include <gtest/gtest.h>

namespace {

CFStringEncoding Codepage(UInt32 number) { return CFStringConvertWindowsCodepageToEncoding(number); }

std::string Decoded(UInt32 codepage, std::string_view bytes)
{
    return Taken(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
        static_cast<CFIndex>(bytes.size()), Codepage(codepage), false));
}

std::string EncodedIn(UInt32 codepage, const char* text, UInt8 lossByte = 0)
{
    const auto data
        = Hold(CFStringCreateExternalRepresentation(nullptr, Text(text).get(), Codepage(codepage), lossByte));
    return Bytes(data.get());
}

}

TEST(Encoding, CodePagesReadAndWriteTheirOwnLetters)
{
    const struct {
        UInt32 codepage;
        const char *bytes, *text;
    } cases[] = { { 437, "\x81\xb0\xe0", "ü░α" }, { 737, "\x80\x98", "Αα" }, { 775, "\xd0\xe1", "ąß" },
        { 850, "\x81\xd5", "üı" }, { 852, "\x9f\xa5", "čą" }, { 855, "\xa1\xa0", "Аа" },
        { 857, "\x98\x8d", "İı" }, { 860, "\x84\xa9", "ãÒ" }, { 861, "\x8d\x95", "Þþ" },
        { 862, "\x80\x9a", "את" }, { 863, "\x90\x8d", "É‗" }, { 865, "\x9b\xaf", "ø¤" },
        { 866, "\x80\xe0", "Ар" }, { 869, "\xa4\xd6", "Αα" }, { 874, "\xa1\xd2", "กา" },
        { 1250, "\xe8\xb9", "čą" }, { 1251, "\xcf\xff", "Пя" }, { 1253, "\xc1\xf9", "Αω" },
        { 1254, "\xdd\xfd", "İı" }, { 1255, "\xe0\xfa", "את" }, { 1256, "\xc7\xed", "اي" },
        { 1257, "\xe0\xe8", "ąč" }, { 1258, "\xf5\xfe", "ơ₫" }, { 10006, "\xb0\xe1", "Αα" },
        { 10007, "\x80\xe0", "Аа" }, { 10029, "\x8b\x88", "čą" }, { 10081, "\xdc\xdd", "İı" },
        { 932, "\x93\xfa\x96{\x83\\\xb1", "日本ソｱ" }, { 936, "\xd6\xd0\x87\\", "中嘰" },
        { 949,
            "\xc7\xd1\x81"
            "A",
            "한갂" },
        { 950, "\xa4\xa4\xa5\\", "中功" } };
    for (const auto& [codepage, bytes, text] : cases) {
        EXPECT_EQ(Decoded(codepage, bytes), text) << codepage;
        EXPECT_EQ(EncodedIn(codepage, text), bytes) << codepage;
        EXPECT_EQ(Decoded(codepage, "a\x7f\x1a\\"), "a\x7f\x1a\\") << codepage;
        EXPECT_GE(CFStringGetMaximumSizeForEncoding(CFStringGetLength(Text(text).get()), Codepage(codepage)),
            static_cast<CFIndex>(std::string_view(bytes).size()));
    }
}

TEST(Encoding, CodePagesRefuseWhatTheyLack)
{
    EXPECT_EQ(Decoded(932, "a\x93"), "(null)") << "half a pair";
    EXPECT_EQ(Decoded(936, "\xd6 "), "(null)") << "no second byte";
    EXPECT_EQ(Decoded(1253, "\xd2"), "(null)") << "a byte without a character";
    EXPECT_EQ(EncodedIn(932, "é"), "(null)");
    EXPECT_EQ(EncodedIn(1251, "日я"), "(null)");
    EXPECT_EQ(EncodedIn(950, "中é🍏", '?'), "\xa4\xa4??");
}
