#include "settings/NumVersion.h"

#include "tests/support/TestVolume.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace {

std::optional<uint32_t> Parsed(const char* text)
{
    uint32_t version = 0xDEADBEEF;
    if (ConvertStringToNumVersion(text, &version))
        return version;
    EXPECT_EQ(version, 0xDEADBEEF) << "a refused text must not write: " << text;
    return std::nullopt;
}

std::string Formatted(uint32_t version, bool space = false, size_t size = 16)
{
    std::vector<char> buffer(size, 'x');
    ConvertNumVersionToString(version, buffer.data(), buffer.size(), space);
    EXPECT_EQ(buffer.back(), '\0');
    return buffer.data();
}

}

TEST(NumVersion, TextBecomesTheWholeThatOrdersVersions)
{
    const struct {
        const char* text;
        uint32_t whole;
    } cases[] = {
        { "1.0", 0x01008000 },
        { "2.1.3", 0x02138000 },
        { "10.15.2", 0x10F28000 },
        { "99.15.15", 0x99FF8000 },
        { "1.2b3", 0x01206003 },
        { "1.2 b3", 0x01206003 },
        { "1.2 d12", 0x0120200C },
        { "1.2.0", 0x01208000 },
        { "1.2b0", 0x01206000 },
        { "1.0b255", 0x010060FF },
        { "1.0b0129", 0x0100600C },
        { "1.2.3 7", 0x01238000 },
        { "1.123", 0x01C08000 },
        { "1.2 ", 0x01208000 },
        { "1.2b3x", 0x01206003 },
        { "1.2.3 7x", 0x01238000 },
    };
    for (const auto& each : cases)
        EXPECT_EQ(Parsed(each.text), each.whole) << each.text;
    EXPECT_LT(*Parsed("1.2d5"), *Parsed("1.2a1"));
    EXPECT_LT(*Parsed("1.2b255"), *Parsed("1.2"));
    EXPECT_LT(*Parsed("9.15.15"), *Parsed("10.0"));
}

TEST(NumVersion, TextsThatAreNoVersionAreRefused)
{
    for (const char* text : { "", "1", "1.", ".5", "123.1", "1.16", "1.20", "1.2.16", "1.2.", "1.2.x", "1.2x",
             "1.2  b3", "1.2b", "1.0b256", "1.0b999", "1.0bb1", "x1.0", " 1.0", "1,0", "-1.0", "1.\xC3\xA9" })
        EXPECT_EQ(Parsed(text), std::nullopt) << '"' << text << '"';
    EXPECT_EQ(Parsed(nullptr), std::nullopt);
}

TEST(NumVersion, WholesAreWrittenAsInstalledSoftwareWritesThem)
{
    EXPECT_EQ(Formatted(0x01008000), "1.0");
    EXPECT_EQ(Formatted(0x10F28000), "10.15.2");
    EXPECT_EQ(Formatted(0x12C00000), "12.12");
    EXPECT_EQ(Formatted(0x01206003), "1.2b3");
    EXPECT_EQ(Formatted(0x01206003, true), "1.2 b3");
    EXPECT_EQ(Formatted(0x01208005), "1.2");
    EXPECT_EQ(Formatted(0x01206069), "1.2b15") << "105 loses its tens digit";
    EXPECT_EQ(Formatted(0x012060C8), "1.2b20") << "200 does too";
    EXPECT_EQ(Formatted(0x012060FA), "1.2b250");
    EXPECT_EQ(Formatted(0x99FF60FF, true), "99.15.15 b255");
}

TEST(NumVersion, WholesWithoutATextGiveNone)
{
    for (const uint32_t whole : { 0x01201005U, 0x0A008000U, 0xA0008000U, 0xFFFFFFFFU, 0x1A206001U })
        EXPECT_EQ(Formatted(whole), "") << std::hex << whole;
}

TEST(NumVersion, TextIsCutToTheBufferAndTheRestIsZero)
{
    EXPECT_EQ(Formatted(0x10F26003, false, 5), "10.1");
    EXPECT_EQ(Formatted(0x10F26003, false, 1), "");
    std::vector<char> wide(40, 'x');
    ConvertNumVersionToString(0x01008000, wide.data(), wide.size(), false);
    EXPECT_EQ(std::string(wide.begin() + 3, wide.end()), std::string(37, '\0'));
    ConvertNumVersionToString(0x01008000, nullptr, 0, false);
}

TEST(BundleVersion, ReadsOnlyAVersionTextOfTheBundle)
{
    const TestVolume volume;
    const auto path = volume.root() / "Library/Extensions/Some.kext";
    const auto versionOf = [&path](const std::string& plist) {
        TestVolume::write(path / "Contents/Info.plist", plist);
        return BundleVersion("/Library/Extensions/Some.kext");
    };
    const auto dictionary = [](const std::string& value) {
        return "<plist version=\"1.0\"><dict><key>CFBundleShortVersionString</key><string>9.9</string>"
               "<key>CFBundleVersion</key>"
            + value + "</dict></plist>";
    };
    EXPECT_EQ(versionOf(dictionary("<string>1.2b3</string>")), 0x01206003U);
    EXPECT_EQ(versionOf(dictionary("<string>1.2.3 456789012</string>")), 0x01238000U) << "15 characters fit";
    EXPECT_EQ(versionOf(dictionary("<string>1.2.3 4567890123</string>")), 0U) << "16 do not";
    EXPECT_EQ(versionOf(dictionary("<integer>2</integer>")), 0U);
    EXPECT_EQ(versionOf(dictionary("<string>1.2\xC3\xA9</string>")), 0U);
    EXPECT_EQ(versionOf("<plist version=\"1.0\"><dict/></plist>"), 0U);
    EXPECT_EQ(versionOf("not a property list"), 0U);
    EXPECT_EQ(BundleVersion("/Library/Extensions/Missing.kext"), 0U);
    EXPECT_EQ(BundleVersion(""), 0U);
    EXPECT_EQ(BundleVersion(nullptr), 0U);
}
