#include "Values.h"

#include <gmock/gmock.h>
#include <map>
#include <random>

namespace {

using testing::ElementsAre;

Held<CFMutableArrayRef> Array(std::initializer_list<const char*> texts)
{
    auto array = Hold(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    for (const char* text : texts)
        CFArrayAppendValue(array.get(), Text(text).get());
    return array;
}

std::vector<std::string> Show(CFArrayRef array)
{
    std::vector<std::string> texts;
    for (CFIndex i = 0; i < CFArrayGetCount(array); i++)
        texts.push_back(::Show(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, i))));
    return texts;
}

CFRange All(CFArrayRef array) { return { 0, CFArrayGetCount(array) }; }

Held<CFMutableDictionaryRef> Dictionary()
{
    return Hold(CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

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
    EXPECT_THAT(Show(array.get()), ElementsAre("A", "b", "c", "d"));
    CFArrayExchangeValuesAtIndices(array.get(), 0, 3);
    CFArrayRemoveValueAtIndex(array.get(), 3);
    CFArrayRemoveValueAtIndex(array.get(), 0);
    EXPECT_THAT(Show(array.get()), ElementsAre("b", "c"));
    CFArrayAppendArray(array.get(), array.get(), All(array.get()));
    EXPECT_THAT(Show(array.get()), ElementsAre("b", "c", "b", "c"));
    CFArrayRemoveAllValues(array.get());
    EXPECT_EQ(CFArrayGetCount(array.get()), 0);
    EXPECT_DEATH(CFArrayRemoveValueAtIndex(array.get(), 0), "out of bounds");
    EXPECT_DEATH(CFArraySetValueAtIndex(array.get(), 1, CFSTR("x")), "out of bounds");
}

TEST(Array, SetsAValueThatItAloneKeepsAlive)
{
    const auto array = Array({ "only owner" });
    CFArraySetValueAtIndex(array.get(), 0, CFArrayGetValueAtIndex(array.get(), 0));
    EXPECT_THAT(Show(array.get()), ElementsAre("only owner"));
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
    EXPECT_THAT(Show(array.get()), ElementsAre("z", "a", "A", "b", "B"));
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

TEST(Array, OfPlainPointersComparesAddresses)
{
    const int numbers[] = { 1, 1 };
    const auto array = Hold(CFArrayCreateMutable(nullptr, 0, nullptr));
    CFArrayAppendValue(array.get(), &numbers[0]);
    CFArrayAppendValue(array.get(), nullptr);
    EXPECT_FALSE(CFArrayContainsValue(array.get(), All(array.get()), &numbers[1]));
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), All(array.get()), nullptr), 1);
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

TEST(Dictionary, AgreesWithAnOrdinaryMapThroughManyChanges)
{
    const auto dictionary = Dictionary();
    std::map<SInt64, SInt64> expected;
    // Few enough keys that removing meets runs of neighbours, and the count passes 8 both ways.
    std::mt19937 random(7); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same changes every time
    for (int i = 0; i < 20000; i++) {
        const auto limit = SInt64 { i < 10000 ? 600 : 12 };
        const SInt64 key = static_cast<SInt64>(random()) % limit;
        if (random() % 5 < 2) {
            expected.erase(key);
            CFDictionaryRemoveValue(dictionary.get(), Number(key).get());
        } else {
            expected[key] = i;
            CFDictionarySetValue(dictionary.get(), Number(key).get(), Number(SInt64 { i }).get());
        }
        if (i % 100 == 0 && i >= 10000 && i < 10600)
            CFDictionaryRemoveAllValues(dictionary.get()), expected.clear();
        ASSERT_EQ(CFDictionaryGetCount(dictionary.get()), static_cast<CFIndex>(expected.size()));
        if (i % 500 != 0)
            continue;
        for (SInt64 wanted = 0; wanted < limit; wanted++) {
            const void* found = CFDictionaryGetValue(dictionary.get(), Number(wanted).get());
            ASSERT_EQ(found != nullptr, expected.contains(wanted));
            if (found) {
                ASSERT_TRUE(CFEqual(found, Number(expected[wanted]).get()));
            }
        }
    }
}

TEST(Dictionary, WithManyKeysGivesAllOfThemOnce)
{
    const auto dictionary = Dictionary();
    for (SInt64 i = 0; i < 50000; i++)
        CFDictionaryAddValue(dictionary.get(), Text("key " + std::to_string(i)).get(), Number(i).get());
    const auto copy = Hold(CFDictionaryCreateCopy(nullptr, dictionary.get()));
    std::vector<const void*> keys(50000), values(50000);
    CFDictionaryGetKeysAndValues(copy.get(), keys.data(), values.data());
    std::set<std::string> seen;
    for (size_t i = 0; i < keys.size(); i++) {
        seen.insert(Show(static_cast<CFStringRef>(keys[i])));
        ASSERT_EQ(CFDictionaryGetValue(copy.get(), keys[i]), values[i]);
    }
    EXPECT_EQ(seen.size(), 50000U);
    EXPECT_TRUE(CFEqual(copy.get(), dictionary.get()));
}

TEST(Dictionary, FindsKeysWhoseHashesAllCollide)
{
    const CFDictionaryKeyCallBacks colliding { 0, nullptr, nullptr, nullptr, nullptr,
        [](const void*) -> CFHashCode { return 42; } };
    const auto dictionary = Hold(CFDictionaryCreateMutable(nullptr, 0, &colliding, nullptr));
    const char objects[201] = {};
    const auto pointer = [&](size_t value) -> const void* { return &objects[value]; };
    for (size_t i = 1; i <= 100; i++)
        CFDictionarySetValue(dictionary.get(), pointer(i), pointer(i * 2));
    for (size_t i = 1; i <= 100; i += 3)
        CFDictionaryRemoveValue(dictionary.get(), pointer(i));
    for (size_t i = 1; i <= 100; i++)
        EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), pointer(i)), i % 3 == 1 ? nullptr : pointer(i * 2));
}

TEST(Dictionary, EqualityIgnoresTheOrderOfKeys)
{
    const void* forwards[] = { CFSTR("a"), CFSTR("b") };
    const void* backwards[] = { CFSTR("b"), CFSTR("a") };
    const auto make = [](const void** keys, const void** values) {
        return Hold(CFDictionaryCreate(
            nullptr, keys, values, 2, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    };
    EXPECT_TRUE(CFEqual(make(forwards, forwards).get(), make(backwards, backwards).get()));
    EXPECT_EQ(CFHash(make(forwards, forwards).get()), CFHash(make(backwards, backwards).get()));
    EXPECT_FALSE(CFEqual(make(forwards, forwards).get(), make(forwards, backwards).get()));
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
