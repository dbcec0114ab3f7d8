#include "Values.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr auto kNoCase = kCFCompareCaseInsensitive;
constexpr auto kNumbers = kCFCompareNumerically;
constexpr auto kBackwards = kCFCompareBackwards;
constexpr auto kAnchored = kCFCompareAnchored;

CFIndex Find(const char* text, const char* wanted, CFStringCompareFlags options = 0)
{
    return CFStringFind(Text(text).get(), Text(wanted).get(), options).location;
}

std::string Split(const char* text, const char* separator)
{
    return List(
        Hold(CFStringCreateArrayBySeparatingStrings(nullptr, Text(text).get(), Text(separator).get())).get());
}

}

TEST(StringCompare, OrdersByUnitsOrIgnoringCaseOrByTheValueOfDigits)
{
    const struct {
        const char *first, *second;
        int order;
        CFStringCompareFlags options;
    } cases[] = { { "abc", "abd", -1, 0 }, { "abc", "ab", 1, 0 }, { "", "", 0, 0 }, { "é", "z", 1, 0 },
        { "Z", "a", -1, 0 }, { "Z", "a", 1, kNoCase }, { "Straße ÉΣ𐐀", "sTRAßE éς𐐨", 0, kNoCase },
        { "1.9", "1.10", 1, 0 }, { "1.9", "1.10", -1, kNumbers }, { "a007", "a7", 0, kNumbers },
        { "99999999999999999999998", "99999999999999999999999", -1, kNumbers }, { "0", "", 1, kNumbers },
        { "v10B", "V9a", 1, CFStringCompareFlags(kNumbers | kNoCase) } };
    for (const auto& [first, second, order, options] : cases)
        EXPECT_EQ(CFStringCompare(Text(first).get(), Text(second).get(), options), order)
            << first << ", " << second;
}

TEST(StringFind, FindsFromEitherEndAndAnchoredWithinTheRange)
{
    EXPECT_EQ(Find("banana", "an"), 1);
    EXPECT_EQ(Find("banana", "an", kBackwards), 3);
    EXPECT_EQ(Find("banana", "an", kAnchored), kCFNotFound);
    EXPECT_EQ(Find("BaNANA", "nana", kAnchored | kBackwards | kNoCase), 2);
    EXPECT_EQ(Find("🍏é", "é"), 2) << "positions count units";
    EXPECT_EQ(Find("abc", ""), kCFNotFound);
    EXPECT_EQ(Find("", "a"), kCFNotFound);
    EXPECT_EQ(Find("aé", "longer than it"), kCFNotFound);
    CFRange found { -5, -5 };
    EXPECT_FALSE(CFStringFindWithOptions(CFSTR("banana"), CFSTR("nan"), CFRangeMake(0, 4), 0, &found));
    EXPECT_EQ(found.location, -5);
    EXPECT_TRUE(CFStringFindWithOptions(CFSTR("banana"), CFSTR("an"), CFRangeMake(2, 4), 0, &found));
    EXPECT_EQ(found.location, 3);
    EXPECT_DEATH(
        (void)CFStringFindWithOptions(CFSTR("abc"), CFSTR("a"), CFRangeMake(2, 2), 0, nullptr), "range");
    EXPECT_FALSE(CFStringHasPrefix(CFSTR("/de"), CFSTR("/dev/")));
    EXPECT_TRUE(CFStringHasSuffix(CFSTR("a.plist"), CFSTR(".plist")));
}

TEST(StringSplit, GivesEveryPartAndJoinsThemAgain)
{
    EXPECT_EQ(Split("a|b||c", "|"), "a,b,,c,");
    EXPECT_EQ(Split("|", "|"), ",,");
    EXPECT_EQ(Split("", "|"), ",");
    EXPECT_EQ(Split("aXXXb", "XX"), "a,Xb,");
    EXPECT_EQ(Split("é→b", "→"), "é,b,");
    EXPECT_EQ(Split("abc", ""), "abc,");
    EXPECT_EQ(
        Taken(CFStringCreateByCombiningStrings(nullptr, Array({ "a", "é" }).get(), CFSTR(" + "))), "a + é");
}

TEST(StringReplace, ReplacesEachPlaceOnce)
{
    const struct {
        const char *text, *wanted, *replacement, *result;
        CFIndex count;
        CFStringCompareFlags options;
    } cases[] = { { "aaa", "a", "aa", "aaaaaa", 3, 0 }, { "aaa", "aa", "b", "ba", 1, 0 },
        { "aaa", "aa", "b", "ab", 1, kBackwards }, { "x%20y", "%20", "é", "xéy", 1, 0 },
        { "aXbx", "x", "", "ab", 2, kNoCase }, { "aaa", "a", "b", "baa", 1, kAnchored },
        { "abc", "", "x", "abc", 0, 0 },
        { "éaÉbé", "É", "e", "eaebe", 3, CFStringCompareFlags(kNoCase | kBackwards) } };
    for (const auto& [text, wanted, replacement, result, count, options] : cases) {
        const auto string = Mutable(text);
        const CFRange all { 0, CFStringGetLength(string.get()) };
        EXPECT_EQ(
            CFStringFindAndReplace(string.get(), Text(wanted).get(), Text(replacement).get(), all, options),
            count);
        EXPECT_EQ(Show(string), result);
    }
    const auto string = Mutable("abab");
    EXPECT_EQ(CFStringFindAndReplace(string.get(), CFSTR("ab"), string.get(), CFRangeMake(1, 3), 0), 1);
    EXPECT_EQ(Show(string), "ababab") << "only within the range, and by the text as it was";
}

TEST(StringTrim, TakesFromBothEndsOnly)
{
    const std::pair<const char*, const char*> cases[]
        = { { " \t\r\n\u00a0a b\u3000 \n", "a b" }, { " \n ", "" }, { "", "" } };
    for (const auto& [text, trimmed] : cases) {
        const auto string = Mutable(text);
        CFStringTrimWhitespace(string.get());
        EXPECT_EQ(Show(string), trimmed);
    }
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
    const std::pair<const char*, SInt32> integers[] = { { "  -12abc", -12 }, { "+7", 7 }, { "abc", 0 },
        { "", 0 }, { "99999999999999999999", 2147483647 }, { "-99999999999999999999", -2147483647 - 1 } };
    for (const auto& [text, value] : integers)
        EXPECT_EQ(CFStringGetIntValue(Text(text).get()), value) << text;
    const std::pair<const char*, double> doubles[] = { { "\u00a01.5e3kg", 1500 }, { "-.25", -0.25 },
        { "1e999", HUGE_VAL }, { "0x10", 0 }, { "inf", 0 } };
    for (const auto& [text, value] : doubles)
        EXPECT_EQ(CFStringGetDoubleValue(Text(text).get()), value) << text;
}
