#include "Values.h"

#include <cmath>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

int Compare(const char* first, const char* second, CFStringCompareFlags options = 0)
{
    return static_cast<int>(CFStringCompare(Text(first).get(), Text(second).get(), options));
}

CFIndex Find(const char* text, const char* wanted, CFStringCompareFlags options = 0)
{
    return CFStringFind(Text(text).get(), Text(wanted).get(), options).location;
}

std::vector<std::string> Split(const char* text, const char* separator)
{
    const auto array
        = Hold(CFStringCreateArrayBySeparatingStrings(nullptr, Text(text).get(), Text(separator).get()));
    std::vector<std::string> parts;
    for (CFIndex i = 0; i < CFArrayGetCount(array.get()); i++)
        parts.push_back(Show(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array.get(), i))));
    return parts;
}

std::string Replaced(const char* text, const char* wanted, const char* replacement, CFIndex count,
    CFStringCompareFlags options = 0)
{
    const auto string = Mutable(text);
    const CFRange all { 0, CFStringGetLength(string.get()) };
    EXPECT_EQ(CFStringFindAndReplace(string.get(), Text(wanted).get(), Text(replacement).get(), all, options),
        count);
    return Show(string);
}

}

TEST(StringCompare, OrdersByUnits)
{
    EXPECT_EQ(Compare("abc", "abd"), -1);
    EXPECT_EQ(Compare("abc", "ab"), 1);
    EXPECT_EQ(Compare("", ""), 0);
    EXPECT_EQ(Compare("é", "z"), 1);
    EXPECT_EQ(Compare("Z", "a"), -1);
}

TEST(StringCompare, IgnoresCaseInEveryScript)
{
    EXPECT_EQ(Compare("Straße ÉΣ𐐀", "sTRAßE éς𐐨", kCFCompareCaseInsensitive), 0);
    EXPECT_EQ(Compare("Z", "a", kCFCompareCaseInsensitive), 1);
}

TEST(StringCompare, OrdersRunsOfDigitsByValue)
{
    EXPECT_EQ(Compare("1.9", "1.10", kCFCompareNumerically), -1);
    EXPECT_EQ(Compare("1.9", "1.10"), 1);
    EXPECT_EQ(Compare("a007", "a7", kCFCompareNumerically), 0);
    EXPECT_EQ(Compare("99999999999999999999998", "99999999999999999999999", kCFCompareNumerically), -1);
    EXPECT_EQ(Compare("v10B", "V9a", kCFCompareNumerically | kCFCompareCaseInsensitive), 1);
    EXPECT_EQ(Compare("0", "", kCFCompareNumerically), 1);
}

TEST(StringFind, FindsFromEitherEndAndAnchored)
{
    EXPECT_EQ(Find("banana", "an"), 1);
    EXPECT_EQ(Find("banana", "an", kCFCompareBackwards), 3);
    EXPECT_EQ(Find("banana", "an", kCFCompareAnchored), kCFNotFound);
    EXPECT_EQ(
        Find("BaNANA", "nana", kCFCompareAnchored | kCFCompareBackwards | kCFCompareCaseInsensitive), 2);
    EXPECT_EQ(Find("🍏é", "é"), 2) << "positions count units";
    EXPECT_EQ(Find("abc", "é"), kCFNotFound);
    EXPECT_EQ(Find("abc", ""), kCFNotFound);
    EXPECT_EQ(Find("", "a"), kCFNotFound);
    EXPECT_EQ(Find("aé", "longer than it"), kCFNotFound);
}

TEST(StringFind, StaysWithinTheRange)
{
    CFRange found { -5, -5 };
    EXPECT_FALSE(CFStringFindWithOptions(CFSTR("banana"), CFSTR("nan"), CFRangeMake(0, 4), 0, &found));
    EXPECT_EQ(found.location, -5);
    EXPECT_TRUE(CFStringFindWithOptions(CFSTR("banana"), CFSTR("an"), CFRangeMake(2, 4), 0, &found));
    EXPECT_EQ(found.location, 3);
    EXPECT_DEATH(
        (void)CFStringFindWithOptions(CFSTR("abc"), CFSTR("a"), CFRangeMake(2, 2), 0, nullptr), "range");
}

TEST(StringFind, KnowsPrefixAndSuffix)
{
    EXPECT_TRUE(CFStringHasPrefix(CFSTR("/dev/disk2"), CFSTR("/dev/")));
    EXPECT_FALSE(CFStringHasPrefix(CFSTR("/de"), CFSTR("/dev/")));
    EXPECT_TRUE(CFStringHasSuffix(CFSTR("a.plist"), CFSTR(".plist")));
    EXPECT_FALSE(CFStringHasSuffix(CFSTR("a.plist.old"), CFSTR(".plist")));
}

TEST(StringSplit, GivesEveryPartAndJoinsThemAgain)
{
    EXPECT_THAT(Split("a,b,,c", ","), ElementsAre("a", "b", "", "c"));
    EXPECT_THAT(Split(",", ","), ElementsAre("", ""));
    EXPECT_THAT(Split("", ","), ElementsAre(""));
    EXPECT_THAT(Split("aXXXb", "XX"), ElementsAre("a", "Xb"));
    EXPECT_THAT(Split("é→b", "→"), ElementsAre("é", "b"));
    EXPECT_THAT(Split("abc", ""), ElementsAre("abc"));
    const auto parts = Hold(CFStringCreateArrayBySeparatingStrings(nullptr, CFSTR("a,b,é"), CFSTR(",")));
    EXPECT_EQ(Show(Hold(CFStringCreateByCombiningStrings(nullptr, parts.get(), CFSTR(" + ")))), "a + b + é");
}

TEST(StringReplace, ReplacesEachPlaceOnce)
{
    EXPECT_EQ(Replaced("aaa", "a", "aa", 3), "aaaaaa");
    EXPECT_EQ(Replaced("aaa", "aa", "b", 1), "ba");
    EXPECT_EQ(Replaced("aaa", "aa", "b", 1, kCFCompareBackwards), "ab");
    EXPECT_EQ(Replaced("x%20y", "%20", "é", 1), "xéy");
    EXPECT_EQ(Replaced("aXbx", "x", "", 2, kCFCompareCaseInsensitive), "ab");
    EXPECT_EQ(Replaced("aaa", "a", "b", 1, kCFCompareAnchored), "baa");
    EXPECT_EQ(Replaced("abc", "", "x", 0), "abc");
    EXPECT_EQ(Replaced("éaÉbé", "É", "e", 3, kCFCompareCaseInsensitive | kCFCompareBackwards), "eaebe");
    const auto string = Mutable("abab");
    EXPECT_EQ(CFStringFindAndReplace(string.get(), CFSTR("ab"), string.get(), CFRangeMake(1, 3), 0), 1);
    EXPECT_EQ(Show(string), "ababab") << "only within the range, and by the text as it was";
}

TEST(StringTrim, TakesFromBothEndsOnly)
{
    const auto trimmed = [](const char* text) {
        const auto string = Mutable(text);
        CFStringTrimWhitespace(string.get());
        return Show(string);
    };
    EXPECT_EQ(trimmed(" \t\r\n\u00a0a b\u3000 \n"), "a b");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed(""), "");
    const auto string = Mutable("xyxyabxycxy");
    CFStringTrim(string.get(), CFSTR("xy"));
    EXPECT_EQ(Show(string), "abxyc");
    CFStringTrim(string.get(), string.get());
    EXPECT_EQ(Show(string), "");
}

TEST(StringCase, MapsLettersThatChangeTheLength)
{
    const auto string = Mutable("Straße ΑΣ");
    CFStringUppercase(string.get(), nullptr);
    EXPECT_EQ(Show(string), "STRASSE ΑΣ");
    CFStringLowercase(string.get(), nullptr);
    EXPECT_EQ(Show(string), "strasse ας") << "the last sigma has a form of its own";
}

TEST(StringNumber, ReadsTheNumberAtTheFront)
{
    const auto intOf = [](const char* text) { return CFStringGetIntValue(Text(text).get()); };
    EXPECT_EQ(intOf("  -12abc"), -12);
    EXPECT_EQ(intOf("+7"), 7);
    EXPECT_EQ(intOf("abc"), 0);
    EXPECT_EQ(intOf(""), 0);
    EXPECT_EQ(intOf("99999999999999999999"), 2147483647);
    EXPECT_EQ(intOf("-99999999999999999999"), -2147483647 - 1);
    const auto doubleOf = [](const char* text) { return CFStringGetDoubleValue(Text(text).get()); };
    EXPECT_EQ(doubleOf("\u00a01.5e3kg"), 1500);
    EXPECT_EQ(doubleOf("-.25"), -0.25);
    EXPECT_EQ(doubleOf("1e999"), HUGE_VAL);
    EXPECT_EQ(doubleOf("0x10"), 0);
    EXPECT_EQ(doubleOf("inf"), 0);
}
