#include "util/CFRef.h"
#include "util/CFText.h"
#include "util/StringConversions.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>

namespace {

/// What a function writes into a buffer of exactly this capacity, for the address sanitizer to see; it has to end it.
std::string Written(const std::function<void(char*, size_t)>& write, size_t capacity = 64)
{
    std::string buffer(capacity, 'x');
    write(buffer.data(), capacity);
    EXPECT_NE(buffer.find('\0'), std::string::npos);
    return buffer.substr(0, buffer.find('\0'));
}

std::string SizeText(uint64_t bytes)
{
    return Written(
        [bytes](char* buffer, size_t capacity) { ConvertUInt64ToSizeString(bytes, buffer, capacity); });
}

std::string Read(const std::string& text)
{
    uint64_t bytes = 77;
    if (!ConvertSizeStringToUInt64(text.c_str(), &bytes))
        return bytes == 77 ? "no" : "written to";
    return std::to_string(bytes);
}

/// The user's locale and time zone, until the object goes.
class Place {
public:
    Place(const char* locale, const char* zone)
    {
        setenv("LC_ALL", locale, 1);
        setenv("TZ", zone, 1);
        tzset();
    }
    ~Place()
    {
        unsetenv("LC_ALL");
        unsetenv("TZ");
        tzset();
    }
};

}

TEST(SizeTextTest, HasThreeDigitsInTheLargestUnit)
{
    const uint64_t k = 1024;
    for (const auto& [bytes, text] : { std::pair { uint64_t { 0 }, "0.00 KB" }, { 1023999, "999 KB" },
             { 1024000, "0.98 MB" }, { 10 * k - 1, "10.00 KB" }, { 10 * k, "10.0 KB" },
             { 100 * k - 1, "100.0 KB" }, { 100 * k, "100 KB" }, { 1048575999, "999 MB" },
             { 1048576000, "0.98 GB" }, { 1073741824000, "0.98 TB" }, { 1099511627775999, "999 TB" },
             { 1099511627776000, " -" }, { UINT64_MAX, " -" } })
        EXPECT_EQ(SizeText(bytes), text) << bytes;

    int32_t power = -1;
    EXPECT_EQ(Written(
                  [&](char* buffer, size_t capacity) {
                      ConvertUInt64ToSizeSizeStringAndPowerOfTen(5 << 20, buffer, capacity, &power);
                  },
                  3),
        "5.");
    EXPECT_EQ(power, 6);
    ConvertUInt64ToSizeSizeStringAndPowerOfTen(UINT64_MAX, nullptr, 0, &power);
    EXPECT_EQ(power, 0);
    ConvertUInt64ToSizeSizeStringAndPowerOfTen(1, nullptr, 10, nullptr);
}

TEST(SizeTextTest, IsReadWithUnitsOfPowersOfTwo)
{
    for (const auto& [text, bytes] :
        { std::pair { "0x10", "16" }, { "2kb", "2048" }, { "3xb", "no" }, { "1.5GB", "1073741824" },
            { "7", "7" }, { "1Mb", "1048576" }, { "1tB", "1099511627776" }, { "2PB", "2251799813685248" },
            { "b", "no" }, { "kb", "0" }, { "", "0" }, { "0xFFFFFFFFFFFFFFFFF", "18446744073709551615" },
            { "0xkb", "0" }, { "-1", "18446744073709551615" }, { "12 kb", "12288" }, { "5 b", "no" } })
        EXPECT_EQ(Read(text), bytes) << text;
    EXPECT_EQ(Read(std::string(254, '0') + "7kb"), "7168");
    EXPECT_EQ(Read(std::string(255, '0') + "7kb"), "no");
    EXPECT_EQ(Read(std::string(300, '0') + "7"), "7") << "no limit without a unit";
    EXPECT_FALSE(ConvertSizeStringToUInt64(nullptr, nullptr));
}

TEST(NumberTextTest, GroupsHexadecimalsAndTimesHaveTheirForms)
{
    for (const auto& [value, text] : { std::pair { uint64_t { 0 }, "0" }, { 999, "999" }, { 1000, "1,000" },
             { 1234567, "1,234,567" }, { UINT64_MAX, "18,446,744,073,709,551,615" } })
        EXPECT_EQ(
            Written([v = value](char* b, size_t c) { ConvertUInt64ToStringWithCommas(v, b, c); }, 27), text);
    for (const auto& [seconds, text] : { std::pair { 0U, "00:00:00" }, { 3661U, "01:01:01" },
             { 3599999U, "999:59:59" }, { 3600000U, "--:--:--" }, { UINT32_MAX, "--:--:--" } })
        EXPECT_EQ(
            Written(
                [s = seconds](char* b, size_t c) { ConvertSecondsToHoursMinutesSecondsString(s, b, c); }, 10),
            text);

    const std::array<uint8_t, 8> bytes { 0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF };
    EXPECT_EQ(Written([&](char* b, size_t) { ConvertUInt64ToHexString(bytes.data(), b, false); }, 17),
        "EFCDAB8967452301");
    EXPECT_EQ(Written([&](char* b, size_t) { ConvertUInt64ToHexString(bytes.data(), b, true); }, 24),
        "EF CD AB 89 67 45 23 01");
    EXPECT_EQ(Written([&](char* b, size_t) { ConvertWWN_DataToHexString(bytes.data(), b); }, 24),
        "01 23 45 67 89 AB CD EF");
}

TEST(DateTextTest, FollowsTheUsersLocaleAndTimeZone)
{
    const uint32_t moment = 815000000; // 2026-10-29 20:53:20 UTC
    const auto medium = [](char* b, size_t c) { ConvertAbsoluteSecondsToMediumDateString(moment, b, c); };
    const auto shorter = [](char* b, size_t c) { ConvertAbsoluteSecondsToShortDateString(moment, b, c); };
    {
        const Place berlin("de_DE.UTF-8", "Europe/Berlin");
        EXPECT_EQ(Written(medium), "29.10.2026, 21:53:20");
        EXPECT_EQ(Written(shorter), "2026.10.29 21:53:20");
        EXPECT_EQ(Written(shorter, 20), "2026.10.29 21:53:20");
        EXPECT_EQ(Written(shorter, 19), "") << "it does not fit";
    }
    {
        const Place tokyo("ja_JP.UTF-8", "Asia/Tokyo");
        EXPECT_EQ(Written(medium), "2026/10/30 5:53:20");
        EXPECT_EQ(Written(shorter), "2026.10.30 05:53:20");
    }
}

TEST(DiskTextTest, NamesTheBus)
{
    const auto text = [](DiskIdent ident, bool withLUN) {
        return Written([&](char* b, size_t c) { ConvertDiskIdentToString(&ident, b, c, withLUN); });
    };
    EXPECT_EQ(text({ 2, 0, 1, 2 }, true), "SATA bus 0, id 1, lun 2");
    EXPECT_EQ(text({ 7, -1, 1, 2 }, false), "Fibre Channel bus -1, id 1");
    EXPECT_EQ(text({ 9, 3, 1, 2 }, false), "USB3 bus 3, id 1");
    for (const int32_t unknown : { 1, 10, 0, INT32_MIN, INT32_MAX })
        EXPECT_EQ(text({ unknown, 0, 0, 0 }, false), "Unknown Bus Type bus 0, id 0");
    const DiskIdent ident { INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN };
    EXPECT_EQ(
        Written([&](char* b, size_t c) { ConvertDiskIdentToString(&ident, b, c, true); }, 8), "Unknown");
}

TEST(ComparisonTest, DataAndTextsAreComparedAsCTexts)
{
    const CFRef<CFDataRef> data(
        CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>("Apple"), 5)); // no zero
    const CFRef<CFDataRef> none(CFDataCreate(kCFAllocatorDefault, nullptr, 0));
    EXPECT_TRUE(CompareCFTypeRefToString(data.get(), "Apple", false)
        && CompareCFTypeRefToString(data.get(), "ppl", true));
    EXPECT_FALSE(CompareCFTypeRefToString(data.get(), "ppl", false)
        || CompareCFTypeRefToString(data.get(), "Apples", true));
    EXPECT_TRUE(CompareCFTypeRefToString(CFSTR("Apple"), "Apple", false)
        && CompareCFTypeRefToString(none.get(), "", false));
    const CFRef<CFStringRef> longest = CFText(std::string(255, 'x'));
    const CFRef<CFStringRef> tooLong = CFText(std::string(256, 'x'));
    EXPECT_TRUE(CompareCFTypeRefToString(longest.get(), "xx", true));
    EXPECT_FALSE(CompareCFTypeRefToString(tooLong.get(), "xx", true)
        || CompareCFTypeRefToString(CFText("\u00e4").get(), "", true));
    EXPECT_FALSE(CompareCFTypeRefToString(kCFBooleanTrue, "", true)
        || CompareCFTypeRefToString(nullptr, "", true) || CompareCFTypeRefToString(CFSTR(""), nullptr, true));
}

TEST(BlanksTest, AreStrippedAndTextsAppended)
{
    for (const auto& [text, stripped] :
        { std::pair { "  a b  ", "a b" }, { "a", "a" }, { "   ", "" }, { "", "" }, { "\ta ", "\ta" } }) {
        std::string buffer = text;
        EXPECT_STREQ(StripSpaces(buffer.data()), stripped) << '"' << text << '"';
    }
    EXPECT_EQ(StripSpaces(nullptr), nullptr);

    std::array<char, 8> destination {};
    size_t length = 0;
    CatStrings(destination.data(), "  ab  ", destination.size(), &length, true);
    CatStrings(destination.data(), "    ", destination.size(), &length, true);
    CatStrings(destination.data(), " c ", destination.size(), &length, false);
    EXPECT_EQ(length, 5U);
    destination[7] = 'x'; // is not written to: room for the zero that the caller adds
    CatStrings(destination.data(), "defgh", destination.size(), &length, false);
    EXPECT_EQ(std::string(destination.data(), destination.size()), "ab c dex");
    CatStrings(destination.data(), "more", destination.size(), &length, false);
    EXPECT_EQ(length, 7U);
}
