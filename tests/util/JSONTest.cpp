#include "util/JSON.h"
#include "util/CFRef.h"
#include "util/CFText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr size_t kLimit = 1048576;

CFRef<CFMutableArrayRef> Array(const std::vector<CFTypeRef>& values)
{
    CFRef<CFMutableArrayRef> array(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (CFTypeRef value : values)
        CFArrayAppendValue(array.get(), value);
    return array;
}

CFRef<CFMutableDictionaryRef> Dictionary(CFTypeRef key, CFTypeRef value)
{
    CFRef<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(dictionary.get(), key, value);
    return dictionary;
}

template <class Number> CFRef<CFNumberRef> Numeral(CFNumberType type, Number number)
{
    return CFRef(CFNumberCreate(kCFAllocatorDefault, type, &number));
}

/// The text with its final zero byte taken off; "refused" where there is none.
std::string JSON(CFArrayRef array)
{
    CFDataRef data = nullptr;
    if (!CreateJSON_DataFromArray(array, &data))
        return "refused";
    const CFRef<CFDataRef> owner(data);
    std::string text(
        reinterpret_cast<const char*>(CFDataGetBytePtr(data)), static_cast<size_t>(CFDataGetLength(data)));
    EXPECT_TRUE(text.ends_with('\0'));
    text.pop_back();
    return text;
}

/// An array around an array, this often.
CFRef<CFMutableArrayRef> Nested(size_t levels)
{
    CFRef<CFMutableArrayRef> array = Array({});
    for (size_t i = 1; i < levels; ++i)
        array = Array({ array.get() });
    return array;
}

/// A string of this many letters.
CFRef<CFStringRef> Long(size_t size) { return CFText(std::string(size, 'x')); }

}

TEST(JSONTest, EveryTypeHasItsForm)
{
    const CFRef<CFDateRef> date(CFDateCreate(kCFAllocatorDefault, 0));
    const CFRef<CFDataRef> data(CFDataCreate(kCFAllocatorDefault, nullptr, 0));
    const CFRef<CFMutableArrayRef> array = Array({ CFSTR("a\"\\\n"), CFText("\u00e4\U0001F600").get(),
        kCFBooleanTrue, kCFBooleanFalse, date.get(), Numeral(kCFNumberSInt64Type, INT64_MIN).get(),
        Numeral(kCFNumberCharType, static_cast<char>(-1)).get(), Numeral(kCFNumberDoubleType, 1e300).get(),
        Numeral(kCFNumberFloatType, 0.1F).get(), data.get(), kCFNull, Array({}).get(),
        Dictionary(CFSTR("k"), Array({ CFSTR("") }).get()).get() });
    const std::string huge = JSON(Array({ Numeral(kCFNumberDoubleType, 1e300).get() }).get());
    EXPECT_EQ(huge.size(), 2 + 301 + 7U);
    EXPECT_EQ(JSON(array.get()),
        "[\"a\"\\\n\",\"\u00e4\U0001F600\",true,false,some date,-9223372036854775808,-1,"
            + huge.substr(1, huge.size() - 2) + ",0.100000,,,[],{\"k\":[\"\"]}]");
}

TEST(JSONTest, RealsAreRoundedAsPrintfDoesWithAPoint)
{
    for (const double number : { 0.0, -0.0, 0.5e-6, 1.5e-6, -1e-9, 0.1, 2.675, 1.0000005, 123456.7890125,
             999999.9999996, 1e9, -8388608.0000005, 1e15, 123456789012345.678, HUGE_VAL, 4e-324 }) {
        char expected[400] = {};
        std::snprintf(expected, sizeof expected, "[%f]", number);
        const CFRef<CFMutableArrayRef> array = Array({ Numeral(kCFNumberDoubleType, number).get() });
        EXPECT_EQ(JSON(array.get()), expected);
        if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr) {
            EXPECT_EQ(JSON(array.get()), expected);
        }
        std::setlocale(LC_NUMERIC, "C");
    }
}

TEST(JSONTest, TextsEndWhereTheyEndForC)
{
    const CFRef<CFStringRef> cut = CFText(std::string_view("a\0b", 3));
    const CFRef<CFStringRef> cutWide = CFText(std::string_view("\u00e4\0b", 4));
    const UniChar half = 0xD800;
    const CFRef<CFStringRef> noUTF8(CFStringCreateWithCharacters(kCFAllocatorDefault, &half, 1));
    EXPECT_EQ(JSON(Array({ cut.get(), cutWide.get(), noUTF8.get() }).get()), "[\"a\",\"\u00e4\",\"\"]");
}

TEST(JSONTest, WhatHasNoTextIsRefused)
{
    CFDataRef data = nullptr;
    EXPECT_FALSE(CreateJSON_DataFromArray(nullptr, &data) || CreateJSON_DataFromDictionary(nullptr, &data));
    EXPECT_FALSE(CreateJSON_DataFromArray(Array({}).get(), nullptr));
    EXPECT_FALSE(CreateJSON_DataFromDictionary(Dictionary(kCFBooleanTrue, kCFBooleanTrue).get(), &data));
    EXPECT_EQ(JSON(Array({ Dictionary(kCFBooleanTrue, CFSTR("")).get() }).get()), "refused");
    EXPECT_EQ(data, nullptr);
}

TEST(JSONTest, LevelsMayBeManyButNotWithinThemselves)
{
    const size_t most = (kLimit - 1) / 2;
    EXPECT_TRUE(JSON(Nested(most).get()) == std::string(most, '[') + std::string(most, ']'));
    EXPECT_EQ(JSON(Nested(most + 2).get()), "refused");

    const CFRef<CFMutableArrayRef> inner = Array({ CFSTR("x") });
    const CFRef<CFMutableArrayRef> middle = Array({ inner.get() });
    const CFRef<CFMutableArrayRef> outer = Array({ middle.get(), middle.get() });
    EXPECT_EQ(JSON(outer.get()), "[[[\"x\"]],[[\"x\"]]]") << "twice is not within itself";
    CFArrayAppendValue(inner.get(), middle.get());
    EXPECT_EQ(JSON(outer.get()), "refused");
    EXPECT_EQ(JSON(Array({ Array({ Array({ middle.get() }).get() }).get() }).get()), "refused");
    CFArrayRemoveAllValues(inner.get()); // else they would keep each other
}

TEST(JSONTest, AnOuterTextIsCutAndAnInnerOneThatDoesNotFitIsRefused)
{
    // ["xxx"] is the letters and four more; with the zero byte behind it, it takes the whole limit.
    const size_t fitting = kLimit - 1 - 4;
    EXPECT_EQ(JSON(Array({ Long(fitting).get() }).get()).size(), kLimit - 1);
    EXPECT_EQ(JSON(Array({ Long(fitting + 1).get() }).get()).size(), kLimit - 1) << "without the bracket";
    EXPECT_EQ(JSON(Array({ Long(kLimit).get() }).get()), "[\"\"]")
        << "a text that does not fit is left out whole";

    EXPECT_EQ(JSON(Array({ Array({ Long(fitting - 2).get() }).get() }).get()).size(), kLimit - 1);
    EXPECT_EQ(JSON(Array({ Array({ Long(fitting).get() }).get() }).get()), "refused")
        << "with the outer bracket too long";
    const CFRef<CFMutableArrayRef> full = Array({ Long(fitting).get() });
    EXPECT_EQ(JSON(Array({ full.get(), full.get(), full.get() }).get()), "refused");
    EXPECT_EQ(JSON(Array({ Long(600000).get(), Array({ Long(600000).get() }).get() }).get()), "refused")
        << "the inner text fits into its own level";
}

TEST(JSONTest, ValuesAreAppendedToATextOfTheSameLimit)
{
    std::vector<char> text(kLimit, 0); // exactly, for the address sanitizer to see
    EXPECT_TRUE(ConvertObjectToJSON(nullptr, text.data()));
    EXPECT_TRUE(ConvertObjectToJSON(CFSTR("x"), text.data()));
    EXPECT_TRUE(ConvertObjectToJSON(Array({ kCFBooleanTrue }).get(), text.data()));
    EXPECT_STREQ(text.data(), "null\"x\"[true]");
    EXPECT_FALSE(ConvertObjectToJSON(Array({ Long(kLimit - 10).get() }).get(), text.data()));
    EXPECT_EQ(std::string(text.data()).size(), 13U);
    EXPECT_TRUE(ConvertObjectToJSON(Long(kLimit - 20).get(), text.data()));
    EXPECT_TRUE(ConvertObjectToJSON(CFSTR("does not fit any more"), text.data()));
    EXPECT_EQ(std::string(text.data()).size(), kLimit - 3);
    EXPECT_TRUE(ConvertObjectToJSON(nullptr, text.data())) << "cut";
    EXPECT_TRUE(ConvertObjectToJSON(CFSTR("x"), text.data())) << "nothing fits";
    EXPECT_FALSE(ConvertObjectToJSON(Array({}).get(), text.data()));
    EXPECT_EQ(std::string(text.data()).size(), kLimit - 1);
    EXPECT_TRUE(std::string(text.data()).ends_with("\"\"nu"));
    EXPECT_FALSE(ConvertObjectToJSON(nullptr, nullptr));
}
