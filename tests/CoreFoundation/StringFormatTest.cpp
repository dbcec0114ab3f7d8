#include "Values.h"

#include <algorithm>
#include <climits>
#include <clocale>
#include <gtest/gtest.h>

namespace {

template <class... Arguments> std::string Format(const char* format, Arguments... arguments)
{
    return Taken(CFStringCreateWithFormat(nullptr, nullptr, Text(format).get(), arguments...));
}

}

TEST(StringFormat, PrintsNumbersAsPrintfDoes)
{
    EXPECT_EQ(Format("%d %i %u %5d|%-5d|%05d|%+d", -1, INT_MIN, UINT_MAX, 42, 42, 42, 42),
        "-1 -2147483648 4294967295    42|42   |00042|+42");
    EXPECT_EQ(
        Format("%ld %lld %lu %llu %qd %zu", LONG_MIN, LLONG_MAX, ULONG_MAX, ULLONG_MAX, -5LL, sizeof(int)),
        "-9223372036854775808 9223372036854775807 18446744073709551615 18446744073709551615 -5 4");
    EXPECT_EQ(Format("%x %X %#x %o %08X %hhu %hd", 255, 255, 255, 8, 0xbeefU, 300, 70000),
        "ff FF 0xff 10 0000BEEF 44 4464");
    EXPECT_EQ(Format("%f %.2f %lf %g %e %8.3f|", 1.5, 2.005, 0.25, 1e10, 12345.678, 3.14159),
        "1.500000 2.00 0.250000 1e+10 1.234568e+04    3.142|");
    EXPECT_EQ(Format("%.1Lf", 2.5L), "2.5");
    EXPECT_EQ(Format("%*d|%-*d|%.*f", 4, 7, 4, 7, 1, 2.25), "   7|7   |2.2");
    EXPECT_EQ(Format("%D %U %O", -1, -1, 8), "-1 4294967295 10");
}

TEST(StringFormat, PrintsObjectsAndTextsWithWidthAndPrecision)
{
    EXPECT_EQ(Format("%@|%5@|%-5@|%.2@", CFSTR("é🍏"), CFSTR("ab"), CFSTR("ab"), CFSTR("abcdef")),
        "é🍏|   ab|ab   |ab");
    EXPECT_EQ(Format("%@ %@", Integer(-42).get(), kCFBooleanTrue), "-42 1");
    EXPECT_EQ(Format("%@ %s", static_cast<CFStringRef>(nullptr), static_cast<const char*>(nullptr)),
        "(null) (null)");
    EXPECT_EQ(Format("%s %c%c", "caf\x8e", 'x', 0x8e), "café xé") << "C strings are in Mac OS Roman";
    const UniChar units[] = { 'h', 0xe9, 0 };
    EXPECT_EQ(Format("%S %C", units, 0xe9), "hé é");
    const char unterminated[] = { 'a', 'b', 'c' };
    EXPECT_EQ(Format("%.3s|%5.1s|", unterminated, unterminated), "abc|    a|");
}

TEST(StringFormat, ShowsNumberObjectsInTheFewestDigitsThatReadBack)
{
    EXPECT_EQ(Format("%@ %@ %@", Number(0.1).get(), Number(-2.0).get(), Number(100000000.0).get()),
        "0.1 -2 100000000");
    EXPECT_EQ(Format("%@ %@", Number(kCFNumberFloatType, 0.1F).get(), Number(1e300).get()), "0.1 1e+300");
    EXPECT_EQ(Format("%@", Number(0x1.fffffffffffffp+1023).get()), "1.7976931348623157e+308");
}

TEST(StringFormat, WritesAPointWhateverTheLocale)
{
    // Not every machine has a locale with a comma, so one is looked for.
    const char* withComma[] = { "de_DE.UTF-8", "fr_FR.UTF-8", "es_ES.UTF-8", "nl_NL.UTF-8", "ru_RU.UTF-8" };
    if (std::ranges::none_of(withComma, [](const char* name) { return setlocale(LC_ALL, name); }))
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(Format("%.1f %@", 1.5, Number(1.5).get()), "1.5 1.5");
    EXPECT_EQ(CFStringGetDoubleValue(CFSTR("1.5")), 1.5);
    setlocale(LC_ALL, "C");
}

TEST(StringFormat, TakesArgumentsByPosition)
{
    EXPECT_EQ(Format("%2$@ of %1$@", CFSTR("this"), CFSTR("that")), "that of this");
    EXPECT_EQ(Format("%3$d %1$@ %2$.1f %1$@", CFSTR("x"), 2.5, 7), "7 x 2.5 x");
    EXPECT_EQ(Format("%2$d", CFSTR("never shown"), 5), "5") << "an argument left out keeps its place";
    EXPECT_EQ(Format("%1$*2$d|", 7, 4), "   7|");
}

TEST(StringFormat, LeavesWhatIsNoConversionAsItIsAndBoundsWidths)
{
    EXPECT_EQ(Format("100%% %p %", static_cast<void*>(nullptr)), "100% 0x0 %");
    EXPECT_EQ(Format("%y %é %5"), "%y %é %5");
    EXPECT_EQ(Format("%99$d %0$d"), "%99$d %0$d") << "such arguments cannot be there";
    EXPECT_EQ(Format("%2000000000d", 1).size(), 65535U);
    EXPECT_EQ(Format("%*@", INT_MIN, CFSTR("x")).size(), 65535U);
    const auto string = Mutable("a");
    CFStringAppendFormat(string.get(), nullptr, CFSTR("-%@-%d"), string.get(), 1);
    EXPECT_EQ(Show(string), "a-a-1") << "a string may be its own argument";
}
