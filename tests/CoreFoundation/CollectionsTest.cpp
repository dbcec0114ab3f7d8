#include "Values.h"

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

namespace {

CFRange All(CFArrayRef array) { return { 0, CFArrayGetCount(array) }; }

int liveValues = 0;
const void* CountIn(CFAllocatorRef, const void* value)
{
    liveValues++;
    return value;
}
void CountOut(CFAllocatorRef, const void*) { liveValues--; }

}

TEST(Array, InsertsReplacesAndRemovesAtBothEnds)
{
    const auto array = Array({ "b" });
    CFArrayInsertValueAtIndex(array.get(), 0, CFSTR("a"));
    CFArrayInsertValueAtIndex(array.get(), 2, CFSTR("c"));
    CFArraySetValueAtIndex(array.get(), 3, CFSTR("d"));
    CFArraySetValueAtIndex(array.get(), 0, CFSTR("A"));
    EXPECT_EQ(List(array.get()), "A,b,c,d,");
    CFArraySetValueAtIndex(array.get(), 1, CFArrayGetValueAtIndex(array.get(), 1)); // it alone keeps it alive
    CFArrayExchangeValuesAtIndices(array.get(), 0, 3);
    CFArrayRemoveValueAtIndex(array.get(), 3);
    CFArrayRemoveValueAtIndex(array.get(), 0);
    EXPECT_EQ(List(array.get()), "b,c,");
    CFArrayAppendArray(array.get(), array.get(), All(array.get()));
    EXPECT_EQ(List(array.get()), "b,c,b,c,");
    EXPECT_DEATH(CFArrayRemoveValueAtIndex(array.get(), 4), "out of bounds");
    EXPECT_DEATH(CFArraySetValueAtIndex(array.get(), 5, CFSTR("x")), "out of bounds");
}

TEST(Array, FindsEqualValuesWithinTheRangeOnly)
{
    const auto array = Array({ "x", "y", "x", "z", "x" });
    const auto x = Text("x");
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), CFRangeMake(1, 4), x.get()), 2);
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array.get(), CFRangeMake(0, 4), x.get()), 2);
    EXPECT_EQ(CFArrayGetCountOfValue(array.get(), CFRangeMake(1, 4), x.get()), 2);
    EXPECT_FALSE(CFArrayContainsValue(array.get(), CFRangeMake(3, 1), x.get()));
    EXPECT_EQ(CFArrayGetLastIndexOfValue(array.get(), CFRangeMake(5, 0), x.get()), kCFNotFound);
}

TEST(Array, SortsTheRangeStably)
{
    const auto array = Array({ "z", "b", "B", "a", "A" });
    const auto ignoringCase = [](const void* first, const void* second, void*) {
        return CFStringCompare(
            static_cast<CFStringRef>(first), static_cast<CFStringRef>(second), kCFCompareCaseInsensitive);
    };
    CFArraySortValues(array.get(), CFRangeMake(1, 4), ignoringCase, nullptr);
    EXPECT_EQ(List(array.get()), "z,a,A,b,B,");
}

TEST(Array, OfMutableAndImmutableKindsAreEqualByContent)
{
    const auto array = Array({ "a", "b" });
    const auto copy = Hold(CFArrayCreateCopy(nullptr, array.get()));
    EXPECT_TRUE(CFEqual(array.get(), copy.get()));
    EXPECT_EQ(CFHash(array.get()), CFHash(copy.get()));
    CFArrayAppendValue(array.get(), CFSTR("c"));
    EXPECT_FALSE(CFEqual(array.get(), copy.get()));
    EXPECT_EQ(CFArrayGetCount(copy.get()), 2);
    EXPECT_DEATH(CFArrayAppendValue(const_cast<CFMutableArrayRef>(copy.get()), CFSTR("c")), "immutable");
    EXPECT_DEATH(CFArrayAppendValue(array.get(), nullptr), "null");
    EXPECT_EQ(CFArrayCreate(nullptr, nullptr, -1, nullptr), nullptr);
}

TEST(Collections, CallTheirOwnersRetainAndReleaseOncePerValue)
{
    const CFArrayCallBacks counting { 0, CountIn, CountOut, nullptr, nullptr };
    const CFDictionaryKeyCallBacks countingKeys { 0, CountIn, CountOut, nullptr, nullptr, nullptr };
    const CFDictionaryValueCallBacks countingValues { 0, CountIn, CountOut, nullptr, nullptr };
    const char objects[2] = {};
    const void *one = &objects[0], *two = &objects[1];
    {
        const auto array = Hold(CFArrayCreateMutable(nullptr, 0, &counting));
        CFArrayAppendValue(array.get(), one);
        CFArraySetValueAtIndex(array.get(), 0, two);
        const auto copy = Hold(CFArrayCreateCopy(nullptr, array.get()));
        EXPECT_EQ(liveValues, 2);
        const auto dictionary = Hold(CFDictionaryCreateMutable(nullptr, 0, &countingKeys, &countingValues));
        CFDictionarySetValue(dictionary.get(), one, one);
        CFDictionarySetValue(dictionary.get(), one, two); // the key stays, the value changes
        CFDictionaryAddValue(dictionary.get(), one, one); // nothing
        EXPECT_EQ(liveValues, 4);
        CFDictionaryRemoveValue(dictionary.get(), one);
        EXPECT_EQ(liveValues, 2);
        CFDictionarySetValue(dictionary.get(), two, two);
    }
    EXPECT_EQ(liveValues, 0);
}

TEST(Dictionary, AddsSetsReplacesAndRemovesAsAsked)
{
    const auto dictionary = Dictionary();
    CFDictionaryReplaceValue(dictionary.get(), CFSTR("key"), CFSTR("absent"));
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
    CFDictionaryAddValue(dictionary.get(), CFSTR("key"), CFSTR("first"));
    CFDictionaryAddValue(dictionary.get(), Text("key").get(), CFSTR("second"));
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), Text("key").get()), CFSTR("first"));
    CFDictionaryReplaceValue(dictionary.get(), CFSTR("key"), CFSTR("third"));
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("key")), CFSTR("third"));
    CFDictionarySetValue(
        dictionary.get(), CFSTR("key"), CFDictionaryGetValue(dictionary.get(), CFSTR("key")));
    EXPECT_TRUE(CFDictionaryContainsValue(dictionary.get(), Text("third").get()));
    CFDictionaryRemoveValue(dictionary.get(), CFSTR("key"));
    CFDictionaryRemoveValue(dictionary.get(), CFSTR("key"));
    const void* untouched = kCFNull;
    EXPECT_FALSE(CFDictionaryGetValueIfPresent(dictionary.get(), CFSTR("key"), &untouched));
    EXPECT_EQ(untouched, kCFNull);
}

TEST(Dictionary, CopiesStringKeysWhereAskedTo)
{
    const auto dictionary = Hold(CFDictionaryCreateMutable(
        nullptr, 0, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const auto key = Mutable("before");
    CFDictionarySetValue(dictionary.get(), key.get(), kCFBooleanTrue);
    CFStringAppend(key.get(), CFSTR(" and after"));
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("before")), kCFBooleanTrue);
    EXPECT_FALSE(CFDictionaryContainsKey(dictionary.get(), key.get()));
}

TEST(Dictionary, AgreesWithAnOrdinaryMapThroughManyChanges)
{
    const CFDictionaryKeyCallBacks colliding { 0, kCFTypeDictionaryKeyCallBacks.retain,
        kCFTypeDictionaryKeyCallBacks.release, nullptr, kCFTypeDictionaryKeyCallBacks.equal,
        [](const void*) -> CFHashCode { return 42; } };
    // Few enough keys that removing meets runs of neighbours, and the count passes 8 both ways.
    const std::pair<SInt64, const CFDictionaryKeyCallBacks*> kinds[]
        = { { 600, &kCFTypeDictionaryKeyCallBacks }, { 12, &kCFTypeDictionaryKeyCallBacks },
              { 60, &colliding } };
    std::mt19937 random(7); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same changes every time
    for (const auto& [limit, keyCallBacks] : kinds) {
        const auto dictionary
            = Hold(CFDictionaryCreateMutable(nullptr, 0, keyCallBacks, &kCFTypeDictionaryValueCallBacks));
        std::map<SInt64, SInt64> expected;
        for (int i = 0; i < 10000; i++) {
            const SInt64 key = static_cast<SInt64>(random()) % limit;
            if (random() % 5 < 2) {
                expected.erase(key);
                CFDictionaryRemoveValue(dictionary.get(), Integer(key).get());
            } else {
                expected[key] = i;
                CFDictionarySetValue(dictionary.get(), Integer(key).get(), Integer(i).get());
            }
            if (i % 1000 == 99)
                CFDictionaryRemoveAllValues(dictionary.get()), expected.clear();
            ASSERT_EQ(CFDictionaryGetCount(dictionary.get()), static_cast<CFIndex>(expected.size()));
            for (SInt64 wanted = 0; i % 500 == 0 && wanted < limit; wanted++) {
                const void* found = CFDictionaryGetValue(dictionary.get(), Integer(wanted).get());
                ASSERT_EQ(found != nullptr, expected.contains(wanted));
                ASSERT_TRUE(!found || CFEqual(found, Integer(expected[wanted]).get()));
            }
        }
    }
}

TEST(Dictionary, WithManyKeysGivesAllOfThemOnceAndEqualsOneFilledTheOtherWay)
{
    constexpr SInt64 count = 50000;
    const auto forwards = Dictionary(), backwards = Dictionary();
    for (SInt64 i = 0; i < count; i++) {
        const SInt64 back = count - 1 - i;
        CFDictionaryAddValue(forwards.get(), Text("key " + std::to_string(i)).get(), Integer(i).get());
        CFDictionaryAddValue(backwards.get(), Text("key " + std::to_string(back)).get(), Integer(back).get());
    }
    const auto copy = Hold(CFDictionaryCreateCopy(nullptr, forwards.get()));
    std::vector<const void*> keys(count), values(count);
    CFDictionaryGetKeysAndValues(copy.get(), keys.data(), values.data());
    for (size_t i = 0; i < keys.size(); i++)
        ASSERT_EQ(CFDictionaryGetValue(copy.get(), keys[i]), values[i]);
    EXPECT_EQ(std::set<const void*>(keys.begin(), keys.end()).size(), keys.size());
    EXPECT_TRUE(CFEqual(copy.get(), backwards.get()));
    EXPECT_EQ(CFHash(copy.get()), CFHash(backwards.get()));
    CFDictionarySetValue(backwards.get(), CFSTR("key 7"), CFSTR("other"));
    EXPECT_FALSE(CFEqual(copy.get(), backwards.get()));
}
