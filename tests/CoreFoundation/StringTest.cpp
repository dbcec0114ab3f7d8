#include "Values.h"

#include <climits>
#include <cstring>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

Held<CFStringRef> Decoded(std::string_view bytes, CFStringEncoding encoding, bool external = false)
{
    // In a buffer of the exact size, for the address sanitizer to see.
    const std::vector<UInt8> exact(bytes.begin(), bytes.end());
    return Hold(CFStringCreateWithBytes(
        nullptr, exact.data(), static_cast<CFIndex>(exact.size()), encoding, external));
}

std::vector<UInt8> External(CFStringRef string, CFStringEncoding encoding, UInt8 lossByte = 0)
{
    const auto data = Hold(CFStringCreateExternalRepresentation(nullptr, string, encoding, lossByte));
    if (!data)
        return { 'n', 'o', 'n', 'e' };
    const UInt8* bytes = CFDataGetBytePtr(data.get());
    return { bytes, bytes + CFDataGetLength(data.get()) };
}

/// The C string in a buffer of `size` bytes, or "(false)".
std::string CString(CFStringRef string, size_t size, CFStringEncoding encoding)
{
    std::vector<char> buffer(size, '?');
    const bool done = CFStringGetCString(string, buffer.data(), static_cast<CFIndex>(size), encoding);
    if (!done && size > 0) {
        EXPECT_EQ(buffer[0], '\0') << "what failed must not look like text";
    }
    return done ? std::string(buffer.data()) : "(false)";
}

}

TEST(String, ReadsOnlyValidBytesOfAnEncoding)
{
    EXPECT_EQ(Show(Decoded("caf\xc3\xa9 \xf0\x9f\x8d\x8f", kCFStringEncodingUTF8)), "café 🍏");
    for (const char* invalid :
        { "\xff", "\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82", "a\x80" })
        EXPECT_EQ(Decoded(invalid, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(Decoded("\x80", kCFStringEncodingASCII), nullptr);
    EXPECT_EQ(Show(Decoded("\x7f", kCFStringEncodingASCII)), "\x7f");
    EXPECT_EQ(Decoded("abc", kCFStringEncodingUTF16), nullptr);
    EXPECT_EQ(Decoded({ "\0\x11\0\0", 4 }, kCFStringEncodingUTF32BE), nullptr) << "past the last character";
    EXPECT_EQ(Decoded({ "\0\0\xd8\0", 4 }, kCFStringEncodingUTF32BE), nullptr) << "half a pair";
    EXPECT_EQ(Decoded("abc", 0x7fff), nullptr) << "no such encoding";
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 3, kCFStringEncodingUTF8, false), nullptr);
    const UInt8 byte = 'a';
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, &byte, -1, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
}

TEST(String, MacRomanAndLatin1TakeEveryByteThereAndBack)
{
    std::string all;
    for (int byte = 0; byte < 256; byte++)
        all += static_cast<char>(byte);
    for (const auto encoding : { kCFStringEncodingMacRoman, kCFStringEncodingISOLatin1 }) {
        const auto string = Decoded(all, encoding);
        ASSERT_NE(string, nullptr);
        EXPECT_EQ(CFStringGetLength(string.get()), 256);
        EXPECT_THAT(
            External(string.get(), encoding), ElementsAreArray(std::vector<UInt8>(all.begin(), all.end())));
    }
    EXPECT_EQ(Show(Decoded("\x8e\xa8\xdb\xf0\xbd", kCFStringEncodingMacRoman)), "é®€\uf8ffΩ");
    EXPECT_EQ(Show(Decoded("\x80\xe9", kCFStringEncodingWindowsLatin1)), "€é");
}

TEST(String, ByteOrderMarksCountInExternalTextOnly)
{
    const std::string_view big("\xfe\xff\0A", 4),
        little("\xff\xfe"
               "A\0",
            4);
    EXPECT_EQ(Show(Decoded(big, kCFStringEncodingUTF16, true)), "A");
    EXPECT_EQ(Show(Decoded(little, kCFStringEncodingUTF16, true)), "A");
    EXPECT_EQ(Show(Decoded(big, kCFStringEncodingUTF16BE, true)), "\uFEFFA");
    EXPECT_EQ(CFStringGetLength(Decoded(little, kCFStringEncodingUTF16LE).get()), 2);
    EXPECT_EQ(Show(Decoded("\xef\xbb\xbfhi", kCFStringEncodingUTF8, true)), "hi");
    EXPECT_EQ(Show(Decoded("\xef\xbb\xbfhi", kCFStringEncodingUTF8)), "\uFEFFhi");
    EXPECT_EQ(Show(Decoded({ "\0\0\xfe\xff\0\1\xf3\x4f", 8 }, kCFStringEncodingUTF32, true)), "🍏");
    EXPECT_THAT(External(CFSTR("A"), kCFStringEncodingUTF16), ElementsAre(0xff, 0xfe, 'A', 0));
    EXPECT_THAT(External(CFSTR("A"), kCFStringEncodingUTF16BE), ElementsAre(0, 'A'));
    EXPECT_THAT(External(Text("🍏").get(), kCFStringEncodingUTF32BE), ElementsAre(0, 1, 0xf3, 0x4f));
}

TEST(String, KeepsASurrogateThatStandsAloneButHasNoUtf8ForIt)
{
    const auto alone = Units(u"a\xd83c");
    EXPECT_EQ(CFStringGetLength(alone.get()), 2);
    EXPECT_EQ(CFStringGetCharacterAtIndex(alone.get(), 1), 0xd83c);
    EXPECT_EQ(CString(alone.get(), 100, kCFStringEncodingUTF8), "(false)");
    EXPECT_THAT(External(alone.get(), kCFStringEncodingUTF16LE), ElementsAre('a', 0, 0x3c, 0xd8));
    EXPECT_TRUE(CFEqual(Decoded({ "a\0\x3c\xd8", 4 }, kCFStringEncodingUTF16LE).get(), alone.get()));
}

TEST(String, FillsACBufferOnlyWhenTextAndTerminatorFit)
{
    EXPECT_EQ(CString(CFSTR("0123456789"), 11, kCFStringEncodingASCII), "0123456789");
    EXPECT_EQ(CString(CFSTR("0123456789"), 10, kCFStringEncodingASCII), "(false)");
    EXPECT_EQ(CString(CFSTR(""), 1, kCFStringEncodingUTF8), "");
    EXPECT_EQ(CString(CFSTR(""), 0, kCFStringEncodingUTF8), "(false)");
    EXPECT_EQ(CString(Text("é🍏").get(), 7, kCFStringEncodingUTF8), "é🍏");
    EXPECT_EQ(CString(Text("é🍏").get(), 6, kCFStringEncodingUTF8), "(false)");
    EXPECT_EQ(CString(Text("é").get(), 2, kCFStringEncodingMacRoman), "\x8e");
    EXPECT_EQ(CString(Text("é").get(), 9, kCFStringEncodingASCII), "(false)");
    EXPECT_EQ(CString(CFSTR(""), 9, 0x7fff), "(false)") << "no such encoding";
}

TEST(String, PointsToItsBytesOnlyWhenTheyAreTheEncodings)
{
    EXPECT_STREQ(CFStringGetCStringPtr(CFSTR("plain"), kCFStringEncodingMacRoman), "plain");
    EXPECT_EQ(CFStringGetCStringPtr(CFSTR("plain"), kCFStringEncodingUTF16), nullptr);
    EXPECT_EQ(CFStringGetCStringPtr(Text("é").get(), kCFStringEncodingUTF8), nullptr);
    const auto shortened = Mutable("é!");
    CFStringDelete(shortened.get(), CFRangeMake(0, 1));
    EXPECT_STREQ(CFStringGetCStringPtr(shortened.get(), kCFStringEncodingUTF8), "!");
}

TEST(String, GivesWholeCharactersIntoABufferOfAnySize)
{
    const auto string = Text("aé🍏z"); // 1 + 2 + 4 + 1 bytes, 5 units
    const CFRange all { 0, 5 };
    const CFIndex expectedUnits[] = { 0, 1, 1, 2, 2, 2, 2, 4, 5 };
    const CFIndex expectedBytes[] = { 0, 1, 1, 3, 3, 3, 3, 7, 8 };
    for (CFIndex size = 0; size <= 8; size++) {
        std::vector<UInt8> buffer(
            static_cast<size_t>(size) + 1); // one more, so that its address is never null
        CFIndex used = -1;
        EXPECT_EQ(
            CFStringGetBytes(string.get(), all, kCFStringEncodingUTF8, 0, false, buffer.data(), size, &used),
            expectedUnits[size]);
        EXPECT_EQ(used, expectedBytes[size]);
        EXPECT_EQ(buffer.back(), 0);
    }
    // A range that ends within a pair holds half a character, which UTF-8 lacks.
    CFIndex used = 0;
    const auto firstThree = [&](UInt8 lossByte) {
        return CFStringGetBytes(
            string.get(), CFRangeMake(0, 3), kCFStringEncodingUTF8, lossByte, false, nullptr, 0, &used);
    };
    EXPECT_EQ(firstThree(0), 2);
    EXPECT_EQ(firstThree('?'), 3);
    EXPECT_EQ(used, 4);
}

TEST(String, PutsTheLossByteInPlaceOfWhatAnEncodingLacks)
{
    EXPECT_THAT(External(Text("a🍏é").get(), kCFStringEncodingASCII, '?'), ElementsAre('a', '?', '?'));
    EXPECT_THAT(External(Text("aé").get(), kCFStringEncodingASCII), ElementsAre('n', 'o', 'n', 'e'));
    CFIndex used = 0;
    UInt8 buffer[8];
    EXPECT_EQ(CFStringGetBytes(
                  Text("aéb").get(), CFRangeMake(0, 3), kCFStringEncodingASCII, 0, false, buffer, 8, &used),
        1);
    EXPECT_EQ(used, 1);
}

TEST(String, MaximumSizesAreEnoughForEveryText)
{
    for (const auto encoding :
        { kCFStringEncodingUTF8, kCFStringEncodingUTF16, kCFStringEncodingUTF32, kCFStringEncodingMacRoman })
        for (const char* text : { "", "€€€", "🍏🍏", "abc" }) {
            const auto string = Text(text);
            const CFIndex units = CFStringGetLength(string.get());
            CFIndex used = 0;
            CFStringGetBytes(string.get(), CFRangeMake(0, units), encoding, '?', true, nullptr, 0, &used);
            EXPECT_LE(used, CFStringGetMaximumSizeForEncoding(units, encoding));
        }
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(LONG_MAX, kCFStringEncodingUTF8), kCFNotFound);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(LONG_MAX / 3 + 1, kCFStringEncodingUTF8), kCFNotFound);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(3, 0x7fff), kCFNotFound);
}

TEST(String, HoldsNullCharactersButMakesNoFileNameOfThem)
{
    const auto string = Text({ "\xc3\xa9\0b", 4 });
    EXPECT_EQ(CFStringGetLength(string.get()), 3);
    EXPECT_EQ(Show(string), std::string("\xc3\xa9\0b", 4));
    EXPECT_FALSE(CFEqual(string.get(), Text("é").get()));
    char buffer[16];
    EXPECT_FALSE(CFStringGetFileSystemRepresentation(string.get(), buffer, sizeof buffer));
}

TEST(String, FileNamesKeepTheirBytes)
{
    for (const char* name : { "caf\xc3\xa9", "cafe\xcc\x81" }) {
        const auto string = Hold(CFStringCreateWithFileSystemRepresentation(nullptr, name));
        std::vector<char> buffer(std::strlen(name) + 1);
        EXPECT_TRUE(CFStringGetFileSystemRepresentation(
            string.get(), buffer.data(), static_cast<CFIndex>(buffer.size())));
        EXPECT_STREQ(buffer.data(), name);
        EXPECT_FALSE(CFStringGetFileSystemRepresentation(
            string.get(), buffer.data(), static_cast<CFIndex>(buffer.size()) - 1));
        EXPECT_GE(CFStringGetMaximumSizeOfFileSystemRepresentation(string.get()),
            static_cast<CFIndex>(buffer.size()));
    }
    EXPECT_EQ(CFStringCreateWithFileSystemRepresentation(nullptr, "latin\xe9"), nullptr);
}

TEST(String, FreesContentsThatItWasToTakeOver)
{
    char* adopted = strdup("adopted"); // a leak unless the string frees it
    EXPECT_EQ(Show(Hold(CFStringCreateWithCStringNoCopy(
                  nullptr, adopted, kCFStringEncodingUTF8, kCFAllocatorMalloc))),
        "adopted");
    char onStack[] = "not adopted";
    EXPECT_EQ(Show(Hold(CFStringCreateWithCStringNoCopy(
                  nullptr, onStack, kCFStringEncodingUTF8, kCFAllocatorNull))),
        onStack);
    char* refused = strdup("\xff"); // still the caller's
    EXPECT_EQ(CFStringCreateWithCStringNoCopy(nullptr, refused, kCFStringEncodingUTF8, kCFAllocatorMalloc),
        nullptr);
    free(refused);
}

TEST(String, EqualTextsAreEqualHoweverTheyCameToBe)
{
    const auto grown = Mutable("é");
    CFStringAppend(grown.get(), CFSTR("tude"));
    CFStringReplace(grown.get(), CFRangeMake(0, 1), CFSTR("e"));
    EXPECT_TRUE(CFEqual(grown.get(), CFSTR("etude")));
    EXPECT_EQ(CFHash(grown.get()), CFHash(CFSTR("etude")));
    EXPECT_TRUE(CFEqual(CFSTR("é"), Units(u"é").get()));
    EXPECT_FALSE(CFEqual(CFSTR("é"), Text("e\u0301").get())) << "two spellings are two texts";
}

TEST(String, CopiesAreIndependentOfAMutableOriginal)
{
    const auto original = Mutable("first");
    const auto copy = Hold(CFStringCreateCopy(nullptr, original.get()));
    CFStringReplaceAll(original.get(), CFSTR("second"));
    EXPECT_EQ(Show(copy), "first");
    EXPECT_EQ(Hold(CFStringCreateCopy(nullptr, copy.get())), copy) << "an immutable string needs no copy";
}

TEST(String, AppendsEveryKindOfTextIncludingItself)
{
    const auto string = Mutable("a");
    const UniChar pair[] = { 0xd83c, 0xdf4f };
    CFStringAppendCharacters(string.get(), pair, 1);
    CFStringAppendCharacters(string.get(), pair + 1, 1); // the halves make a whole
    CFStringAppendCString(string.get(), "\x8e", kCFStringEncodingMacRoman);
    CFStringAppendCString(string.get(), "\xff", kCFStringEncodingUTF8); // invalid, nothing
    CFStringAppend(string.get(), string.get());
    EXPECT_EQ(Show(string), "a🍏éa🍏é");
    CFStringInsert(string.get(), 0, CFSTR("<"));
    CFStringInsert(string.get(), CFStringGetLength(string.get()), CFSTR(">"));
    CFStringDelete(string.get(), CFRangeMake(1, 4));
    EXPECT_EQ(Show(string), "<a🍏é>");
}

TEST(String, GrowsToItsMaximumLengthAndNoFurther)
{
    const auto string = Hold(CFStringCreateMutable(nullptr, 3));
    CFStringAppend(string.get(), CFSTR("abc"));
    CFStringReplace(string.get(), CFRangeMake(0, 1), CFSTR("X"));
    EXPECT_EQ(Show(string), "Xbc");
    EXPECT_DEATH(CFStringAppend(string.get(), CFSTR("d")), "grows past");
}

TEST(String, GivesSubstringsAndUnitsOfExactRanges)
{
    const auto string = Text("0é🍏9");
    EXPECT_EQ(Show(Hold(CFStringCreateWithSubstring(nullptr, string.get(), CFRangeMake(1, 3)))), "é🍏");
    EXPECT_EQ(Show(Hold(CFStringCreateWithSubstring(nullptr, string.get(), CFRangeMake(5, 0)))), "");
    std::vector<UniChar> units(2);
    CFStringGetCharacters(string.get(), CFRangeMake(3, 2), units.data());
    EXPECT_THAT(units, ElementsAre(0xdf4f, '9'));
    EXPECT_DEATH(
        Hold(CFStringCreateWithSubstring(nullptr, string.get(), CFRangeMake(4, 2))), "range out of bounds");
    EXPECT_DEATH(Hold(CFStringCreateWithSubstring(nullptr, string.get(), CFRangeMake(1, LONG_MAX))),
        "range out of bounds");
}
