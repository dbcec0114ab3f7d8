#include "Values.h"

#include <climits>
#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

Held<CFStringRef> Decoded(std::string_view bytes, CFStringEncoding encoding, bool external = false)
{
    // In a buffer of the exact size, for the address sanitizer to see.
    const std::vector<UInt8> exact(bytes.begin(), bytes.end());
    return Hold(CFStringCreateWithBytes(
        nullptr, exact.data(), static_cast<CFIndex>(exact.size()), encoding, external));
}

std::string External(const Held<CFStringRef>& string, CFStringEncoding encoding, UInt8 lossByte = 0)
{
    const auto data = Hold(CFStringCreateExternalRepresentation(nullptr, string.get(), encoding, lossByte));
    return Bytes(data.get());
}

/// The C string in a buffer of `size` bytes, or "(false)".
std::string CString(const Held<CFStringRef>& string, size_t size, CFStringEncoding encoding)
{
    std::vector<char> buffer(size, '?');
    if (CFStringGetCString(string.get(), buffer.data(), static_cast<CFIndex>(size), encoding))
        return buffer.data();
    EXPECT_TRUE(buffer.empty() || buffer[0] == '\0') << "what failed must not look like text";
    return "(false)";
}

}

TEST(String, ReadsOnlyValidBytesOfAnEncoding)
{
    EXPECT_EQ(Show(Decoded("caf\xc3\xa9 \xf0\x9f\x8d\x8f", kCFStringEncodingUTF8)), "café 🍏");
    const std::pair<std::string_view, CFStringEncoding> invalid[] = { { "\xff", kCFStringEncodingUTF8 },
        { "\xc3", kCFStringEncodingUTF8 }, { "\xc0\xaf", kCFStringEncodingUTF8 },
        { "\xed\xa0\x80", kCFStringEncodingUTF8 }, { "\xf4\x90\x80\x80", kCFStringEncodingUTF8 },
        { "\xe2\x82", kCFStringEncodingUTF8 }, { "a\x80", kCFStringEncodingUTF8 },
        { "\x80", kCFStringEncodingASCII }, { "abc", kCFStringEncodingUTF16 }, { "abc", 0x7fff },
        { "\0\x11\0\0"sv, kCFStringEncodingUTF32BE }, { "\0\0\xd8\0"sv, kCFStringEncodingUTF32BE } };
    for (const auto& [bytes, encoding] : invalid)
        EXPECT_EQ(Decoded(bytes, encoding), nullptr) << bytes << " in " << encoding;
    const UInt8 byte = 'a';
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 3, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, &byte, -1, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
}

TEST(String, MacRomanAndLatin1TakeEveryByteThereAndBack)
{
    std::string all;
    for (int byte = 0; byte < 256; byte++)
        all += static_cast<char>(byte);
    for (const auto encoding : { kCFStringEncodingMacRoman, kCFStringEncodingISOLatin1 })
        EXPECT_EQ(External(Decoded(all, encoding), encoding), all);
    EXPECT_EQ(Show(Decoded("\x8e\xa8\xdb\xf0\xbd", kCFStringEncodingMacRoman)), "é®€\uf8ffΩ");
    EXPECT_EQ(Show(Decoded("\x80\xe9", kCFStringEncodingWindowsLatin1)), "€é");
}

TEST(String, ByteOrderMarksCountInExternalTextOnly)
{
    EXPECT_EQ(Show(Decoded("\xfe\xff\0A"sv, kCFStringEncodingUTF16, true)), "A");
    EXPECT_EQ(Show(Decoded("\xff\xfe\x41\0"sv, kCFStringEncodingUTF16, true)), "A");
    EXPECT_EQ(Show(Decoded("\xfe\xff\0A"sv, kCFStringEncodingUTF16BE, true)), "\uFEFFA");
    EXPECT_EQ(Show(Decoded("\xef\xbb\xbfhi", kCFStringEncodingUTF8, true)), "hi");
    EXPECT_EQ(Show(Decoded("\xef\xbb\xbfhi", kCFStringEncodingUTF8)), "\uFEFFhi");
    EXPECT_EQ(Show(Decoded("\0\0\xfe\xff\0\1\xf3\x4f"sv, kCFStringEncodingUTF32, true)), "🍏");
    EXPECT_EQ(External(Text("A"), kCFStringEncodingUTF16), "\xff\xfe\x41\0"sv);
    EXPECT_EQ(External(Text("A"), kCFStringEncodingUTF16BE), "\0A"sv);
    EXPECT_EQ(External(Text("🍏"), kCFStringEncodingUTF32BE), "\0\1\xf3\x4f"sv);
}

TEST(String, KeepsASurrogateThatStandsAloneButHasNoUtf8ForIt)
{
    const auto alone = Units(u"a\xd83c");
    EXPECT_EQ(CFStringGetCharacterAtIndex(alone.get(), 1), 0xd83c);
    EXPECT_EQ(CString(alone, 100, kCFStringEncodingUTF8), "(false)");
    EXPECT_EQ(External(alone, kCFStringEncodingUTF16LE), "a\0\x3c\xd8"sv);
    EXPECT_TRUE(CFEqual(Decoded("a\0\x3c\xd8"sv, kCFStringEncodingUTF16LE).get(), alone.get()));
}

TEST(String, FillsACBufferOnlyWhenTextAndTerminatorFit)
{
    EXPECT_EQ(CString(Text("0123456789"), 11, kCFStringEncodingASCII), "0123456789");
    EXPECT_EQ(CString(Text("0123456789"), 10, kCFStringEncodingASCII), "(false)");
    EXPECT_EQ(CString(Text(""), 1, kCFStringEncodingUTF8), "");
    EXPECT_EQ(CString(Text(""), 0, kCFStringEncodingUTF8), "(false)");
    EXPECT_EQ(CString(Text("é🍏"), 7, kCFStringEncodingUTF8), "é🍏");
    EXPECT_EQ(CString(Text("é🍏"), 6, kCFStringEncodingUTF8), "(false)");
    EXPECT_EQ(CString(Text("é"), 2, kCFStringEncodingMacRoman), "\x8e");
    EXPECT_EQ(CString(Text("é"), 9, kCFStringEncodingASCII), "(false)");
    EXPECT_EQ(CString(Text(""), 9, 0x7fff), "(false)") << "no such encoding";
}

TEST(String, PointsToItsBytesOnlyWhenTheyAreTheEncodings)
{
    EXPECT_EQ(CFStringGetCStringPtr(CFSTR("plain"), kCFStringEncodingUTF16), nullptr);
    EXPECT_EQ(CFStringGetCStringPtr(Text("é").get(), kCFStringEncodingUTF8), nullptr);
    const auto shortened = Mutable("é!");
    CFStringDelete(shortened.get(), CFRangeMake(0, 1));
    EXPECT_STREQ(CFStringGetCStringPtr(shortened.get(), kCFStringEncodingUTF8), "!");
}

TEST(String, GivesWholeCharactersIntoABufferOfAnySize)
{
    const auto string = Text("aé🍏z"); // 1 + 2 + 4 + 1 bytes, 5 units
    const CFIndex expectedUnits[] = { 0, 1, 1, 2, 2, 2, 2, 4, 5 };
    const CFIndex expectedBytes[] = { 0, 1, 1, 3, 3, 3, 3, 7, 8 };
    CFIndex used = -1;
    const auto get = [&](CFIndex units, UInt8 lossByte, UInt8* buffer, CFIndex size) {
        return CFStringGetBytes(
            string.get(), CFRangeMake(0, units), kCFStringEncodingUTF8, lossByte, false, buffer, size, &used);
    };
    for (CFIndex size = 0; size <= 8; size++) {
        std::vector<UInt8> buffer(static_cast<size_t>(size) + 1); // one more: its address is never null
        EXPECT_EQ(get(5, 0, buffer.data(), size), expectedUnits[size]);
        EXPECT_EQ(used, expectedBytes[size]);
        EXPECT_EQ(buffer.back(), 0);
    }
    EXPECT_EQ(get(3, 0, nullptr, 0), 2) << "half a pair at the end";
    EXPECT_EQ(get(3, '?', nullptr, 0), 3);
    EXPECT_EQ(used, 4);
    EXPECT_EQ(External(Text("a🍏é"), kCFStringEncodingASCII, '?'), "a??");
    EXPECT_EQ(External(Text("aé"), kCFStringEncodingASCII), "(null)");
}

TEST(String, MaximumSizesAreEnoughForEveryText)
{
    for (const auto encoding :
        { kCFStringEncodingUTF8, kCFStringEncodingUTF16, kCFStringEncodingUTF32, kCFStringEncodingMacRoman })
        for (const char* text : { "", "€€€", "🍏🍏", "abc" }) {
            const CFIndex units = CFStringGetLength(Text(text).get());
            EXPECT_LE(External(Text(text), encoding, '?').size(),
                static_cast<size_t>(CFStringGetMaximumSizeForEncoding(units, encoding)) + 4); // with a mark
        }
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(LONG_MAX / 3 + 1, kCFStringEncodingUTF8), kCFNotFound);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(3, 0x7fff), kCFNotFound);
}

TEST(String, FileNamesKeepTheirBytesAndHoldNoNullCharacter)
{
    for (const char* name : { "caf\xc3\xa9", "cafe\xcc\x81" }) {
        const auto string = Hold(CFStringCreateWithFileSystemRepresentation(nullptr, name));
        std::vector<char> buffer(std::strlen(name) + 1);
        const auto size = static_cast<CFIndex>(buffer.size());
        EXPECT_TRUE(CFStringGetFileSystemRepresentation(string.get(), buffer.data(), size));
        EXPECT_STREQ(buffer.data(), name);
        EXPECT_FALSE(CFStringGetFileSystemRepresentation(string.get(), buffer.data(), size - 1));
        EXPECT_GE(CFStringGetMaximumSizeOfFileSystemRepresentation(string.get()), size);
    }
    EXPECT_EQ(CFStringCreateWithFileSystemRepresentation(nullptr, "latin\xe9"), nullptr);
    const auto withNull = Text("\xc3\xa9\0b"sv);
    EXPECT_EQ(Show(withNull), "\xc3\xa9\0b"sv);
    char buffer[16];
    EXPECT_FALSE(CFStringGetFileSystemRepresentation(withNull.get(), buffer, sizeof buffer));
}

TEST(String, FreesContentsThatItWasToTakeOver)
{
    const auto noCopy = [](const char* text, CFAllocatorRef owner) {
        return Taken(CFStringCreateWithCStringNoCopy(nullptr, text, kCFStringEncodingUTF8, owner));
    };
    EXPECT_EQ(noCopy(strdup("adopted"), kCFAllocatorMalloc), "adopted"); // a leak unless the string frees it
    EXPECT_EQ(noCopy("not adopted", kCFAllocatorNull), "not adopted");
    char* refused = strdup("\xff"); // still the caller's
    EXPECT_EQ(noCopy(refused, kCFAllocatorMalloc), "(null)");
    free(refused);
}

TEST(String, EqualTextsAreEqualHoweverTheyCameToBe)
{
    const auto grown = Mutable("é");
    CFStringAppend(grown.get(), CFSTR("tude"));
    const auto copy = Hold(CFStringCreateCopy(nullptr, grown.get()));
    CFStringReplace(grown.get(), CFRangeMake(0, 1), CFSTR("e"));
    EXPECT_EQ(Show(copy), "étude") << "a copy stays when the original changes";
    EXPECT_TRUE(CFEqual(grown.get(), CFSTR("etude")));
    EXPECT_EQ(CFHash(grown.get()), CFHash(CFSTR("etude")));
    EXPECT_TRUE(CFEqual(CFSTR("é"), Units(u"é").get()));
    EXPECT_FALSE(CFEqual(CFSTR("é"), Text("e\u0301").get())) << "two spellings are two texts";
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
    CFStringDelete(string.get(), CFRangeMake(1, 4));
    EXPECT_EQ(Show(string), "<a🍏é");
    const auto limited = Hold(CFStringCreateMutable(nullptr, 1));
    CFStringAppend(limited.get(), CFSTR("a"));
    EXPECT_DEATH(CFStringAppend(limited.get(), CFSTR("d")), "grows past");
}

TEST(String, GivesSubstringsAndUnitsOfExactRanges)
{
    const auto string = Text("0é🍏9");
    const auto part = [&](CFIndex at, CFIndex length) {
        return Taken(CFStringCreateWithSubstring(nullptr, string.get(), CFRangeMake(at, length)));
    };
    EXPECT_EQ(part(1, 3), "é🍏");
    EXPECT_EQ(part(5, 0), "");
    std::vector<UniChar> units(2);
    CFStringGetCharacters(string.get(), CFRangeMake(3, 2), units.data());
    EXPECT_EQ(units, (std::vector<UniChar> { 0xdf4f, '9' }));
    EXPECT_DEATH(part(4, 2), "range out of bounds");
    EXPECT_DEATH(part(1, LONG_MAX), "range out of bounds");
}
