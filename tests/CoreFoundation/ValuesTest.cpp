#include "Values.h"

#include <climits>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <set>
#include <thread>

namespace {

using testing::ElementsAre;

std::vector<UInt8> Bytes(CFDataRef data)
{
    const UInt8* bytes = CFDataGetBytePtr(data);
    return { bytes, bytes + CFDataGetLength(data) };
}

Held<CFMutableDataRef> MutableData(std::vector<UInt8> bytes, CFIndex capacity = 0)
{
    auto data = Hold(CFDataCreateMutable(nullptr, capacity));
    CFDataAppendBytes(data.get(), bytes.data(), static_cast<CFIndex>(bytes.size()));
    return data;
}

template <class Value> std::pair<bool, Value> ValueOf(const Held<CFNumberRef>& number, CFNumberType type)
{
    Value value {};
    const bool exact = CFNumberGetValue(number.get(), type, &value);
    return { exact, value };
}

template <class Value> std::pair<bool, Value> Exact(Value value) { return { true, value }; }
template <class Value> std::pair<bool, Value> About(Value value) { return { false, value }; }

}

TEST(Objects, AreCountedExactlyWhenManyThreadsShareThem)
{
    const auto string = Text("shared by threads");
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; i++)
        threads.emplace_back([&] {
            for (int round = 0; round < 20000; round++) {
                CFRetain(string.get());
                CFRelease(string.get());
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(Objects, ConstantStringsOfOneTextAreOneObjectInEveryThread)
{
    std::vector<std::set<CFStringRef>> seen(4);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (auto& mine : seen)
        threads.emplace_back([&mine] {
            for (int i = 0; i < 2000; i++)
                mine.insert(__CFStringMakeConstantString(("constant " + std::to_string(i % 50)).c_str()));
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(seen[0].size(), 50U);
    for (const auto& other : seen)
        EXPECT_EQ(other, seen[0]);
}

TEST(Objects, ConstantsSurviveAnyNumberOfReleases)
{
    const CFTypeRef constants[]
        = { CFSTR("survivor"), kCFBooleanTrue, kCFNull, kCFAllocatorNull, kCFNumberNaN };
    for (CFTypeRef constant : constants) {
        const CFIndex count = CFGetRetainCount(constant);
        for (int i = 0; i < 3; i++)
            CFRelease(constant); // NOLINT(clang-analyzer-osx.cocoa.RetainCount): too often on purpose
        CFRetain(constant);
        EXPECT_EQ(CFGetRetainCount(constant), count);
    }
    EXPECT_EQ(Show(CFSTR("survivor")), "survivor");
}

TEST(Objects, OfDifferentTypesAreNeverEqual)
{
    const auto one = Number(SInt64 { 1 });
    EXPECT_FALSE(CFEqual(one.get(), kCFBooleanTrue));
    EXPECT_FALSE(CFEqual(Text("1").get(), one.get()));
    EXPECT_TRUE(CFEqual(one.get(), Number(1.0).get()));
}

TEST(ObjectsDeathTest, FaultsOfTheProgramEndItWithAMessage)
{
    // NOLINTBEGIN(clang-analyzer-osx.coreFoundation.CFRetainRelease): these are the faults
    EXPECT_DEATH(CFRelease(nullptr), "CFRelease: called with null");
    EXPECT_DEATH(CFRetain(nullptr), "CFRetain: called with null");
    // NOLINTEND(clang-analyzer-osx.coreFoundation.CFRetainRelease)
    EXPECT_DEATH((void)CFStringGetLength(static_cast<CFStringRef>(CFTypeRef(kCFNull))), "needs an object");
    EXPECT_DEATH((void)CFArrayGetCount(nullptr), "CFArrayGetCount");
    EXPECT_DEATH(CFStringAppend(const_cast<CFMutableStringRef>(CFSTR("constant")), CFSTR("x")), "immutable");
    EXPECT_DEATH((void)CFStringGetCharacterAtIndex(CFSTR("abc"), 3), "out of bounds");
    const auto data = Hold(CFDataCreate(nullptr, nullptr, 0));
    UInt8 byte = 0;
    EXPECT_DEATH(CFDataGetBytes(data.get(), CFRangeMake(LONG_MAX, LONG_MAX), &byte), "range out of bounds");
    EXPECT_DEATH(CFDataSetLength(const_cast<CFMutableDataRef>(data.get()), 1), "immutable");
}

TEST(Objects, TypesHaveNames)
{
    EXPECT_EQ(Show(Hold(CFCopyTypeIDDescription(CFStringGetTypeID()))), "CFString");
    EXPECT_EQ(Show(Hold(CFCopyTypeIDDescription(CFURLGetTypeID()))), "CFURL");
    EXPECT_EQ(Show(Hold(CFCopyTypeIDDescription(CFErrorGetTypeID()))), "CFError");
    EXPECT_EQ(CFCopyTypeIDDescription(100000), nullptr);
}

TEST(Data, WithoutCopyingPointsToTheCallersBytesAndFreesOnlyWhatItShould)
{
    const UInt8 stack[] = { 1, 2, 3 };
    const auto borrowed = Hold(CFDataCreateWithBytesNoCopy(nullptr, stack, 3, kCFAllocatorNull));
    EXPECT_EQ(CFDataGetBytePtr(borrowed.get()), stack);
    auto* heap = static_cast<UInt8*>(CFAllocatorAllocate(nullptr, 3, 0)); // a leak unless the data frees it
    std::copy_n(stack, 3, heap);
    const auto adopted = Hold(CFDataCreateWithBytesNoCopy(nullptr, heap, 3, kCFAllocatorMalloc));
    EXPECT_TRUE(CFEqual(adopted.get(), borrowed.get()));
    EXPECT_EQ(CFHash(adopted.get()), CFHash(borrowed.get()));
}

TEST(Data, RefusesImpossibleSizes)
{
    const UInt8 byte = 0;
    EXPECT_EQ(CFDataCreate(nullptr, &byte, -1), nullptr);
    EXPECT_EQ(CFDataCreate(nullptr, nullptr, 1), nullptr);
    EXPECT_EQ(CFDataCreateWithBytesNoCopy(nullptr, &byte, -1, kCFAllocatorNull), nullptr);
    EXPECT_DEATH(CFDataSetLength(MutableData({}).get(), LONG_MAX), "memory cannot hold|AddressSanitizer");
    EXPECT_DEATH(
        CFDataIncreaseLength(MutableData({ 1 }).get(), LONG_MAX), "memory cannot hold|AddressSanitizer");
}

TEST(Data, GrowsToItsCapacityAndNoFurther)
{
    const auto data = MutableData({ 1, 2, 3 }, 4);
    CFDataIncreaseLength(data.get(), 1);
    EXPECT_THAT(Bytes(data.get()), ElementsAre(1, 2, 3, 0));
    EXPECT_DEATH(CFDataIncreaseLength(data.get(), 1), "capacity");
}

TEST(Data, ReplacesBytesAtBothEndsAndWithBytesOfItsOwn)
{
    const auto data = MutableData({ 1, 2, 3, 4 });
    const UInt8 more[] = { 9, 8, 7 };
    CFDataReplaceBytes(data.get(), CFRangeMake(0, 1), more, 3);
    EXPECT_THAT(Bytes(data.get()), ElementsAre(9, 8, 7, 2, 3, 4));
    CFDataReplaceBytes(data.get(), CFRangeMake(3, 3), more, 1);
    EXPECT_THAT(Bytes(data.get()), ElementsAre(9, 8, 7, 9));
    CFDataAppendBytes(data.get(), CFDataGetBytePtr(data.get()), 4);
    EXPECT_THAT(Bytes(data.get()), ElementsAre(9, 8, 7, 9, 9, 8, 7, 9));
    for (CFIndex length = 8; length < 1000; length *= 2) // sooner or later the bytes must move to grow
        CFDataAppendBytes(data.get(), CFDataGetBytePtr(data.get()), length);
    EXPECT_EQ(CFDataGetBytePtr(data.get())[1023], 9);
    CFDataDeleteBytes(data.get(), CFRangeMake(0, 1024));
    EXPECT_EQ(CFDataGetLength(data.get()), 0);
}

TEST(Data, CopiesStayWhenTheOriginalChanges)
{
    const auto original = MutableData({ 1, 2 });
    const auto copy = Hold(CFDataCreateCopy(nullptr, original.get()));
    EXPECT_TRUE(CFEqual(copy.get(), original.get()));
    CFDataGetMutableBytePtr(original.get())[0] = 5;
    EXPECT_THAT(Bytes(copy.get()), ElementsAre(1, 2));
    const auto again = Hold(CFDataCreateCopy(nullptr, copy.get()));
    EXPECT_EQ(again, copy) << "immutable data need no copy";
}

TEST(Number, SaysWhetherATypeHoldsTheValue)
{
    const auto big = Number(SInt64 { 0x123456789abcdef0 });
    EXPECT_EQ(ValueOf<SInt64>(big, kCFNumberSInt64Type), Exact(SInt64 { 0x123456789abcdef0 }));
    EXPECT_EQ(ValueOf<SInt32>(big, kCFNumberSInt32Type), About(static_cast<SInt32>(0x9abcdef0)));
    EXPECT_EQ(ValueOf<double>(big, kCFNumberDoubleType).first, false);
    EXPECT_EQ(ValueOf<signed char>(Number(SInt64 { -128 }), kCFNumberCharType), Exact<signed char>(-128));
    EXPECT_EQ(ValueOf<signed char>(Number(SInt64 { 128 }), kCFNumberCharType), About<signed char>(-128));
    EXPECT_EQ(ValueOf<int>(Number(2.5), kCFNumberIntType), About(2));
    EXPECT_EQ(ValueOf<int>(Number(-2.0), kCFNumberIntType), Exact(-2));
    EXPECT_EQ(ValueOf<float>(Number(0.1), kCFNumberFloatType), About(0.1F));
    EXPECT_EQ(ValueOf<float>(Number(0.5), kCFNumberFloatType), Exact(0.5F));
    const auto last = std::numeric_limits<SInt64>::max();
    EXPECT_EQ(ValueOf<double>(Number(last), kCFNumberDoubleType), About(0x1p63));
}

TEST(Number, ApproximatesWhatNoIntegerHolds)
{
    EXPECT_EQ(
        ValueOf<SInt64>(Number(0x1p63), kCFNumberSInt64Type), About(std::numeric_limits<SInt64>::max()));
    EXPECT_EQ(
        ValueOf<SInt64>(Number(-0x1p63), kCFNumberSInt64Type), Exact(std::numeric_limits<SInt64>::min()));
    EXPECT_EQ(ValueOf<SInt16>(Number(-1e300), kCFNumberSInt16Type), About<SInt16>(-32768));
    EXPECT_EQ(ValueOf<int>(Number(std::nan("")), kCFNumberIntType), About(0));
    EXPECT_EQ(ValueOf<int>(Number(HUGE_VAL), kCFNumberIntType), About(std::numeric_limits<int>::max()));
}

TEST(Number, KeepsTheKindItWasMadeWith)
{
    const auto small = Number(kCFNumberShortType, short { -5 });
    EXPECT_EQ(CFNumberGetType(small.get()), kCFNumberSInt16Type);
    EXPECT_EQ(CFNumberGetByteSize(small.get()), 2);
    EXPECT_FALSE(CFNumberIsFloatType(small.get()));
    const auto real = Number(kCFNumberFloatType, 1.5F);
    EXPECT_EQ(CFNumberGetType(real.get()), kCFNumberFloat32Type);
    EXPECT_TRUE(CFNumberIsFloatType(real.get()));
    int value = 0;
    for (const CFIndex unknown : { 0, 17, -1 })
        EXPECT_EQ(CFNumberCreate(nullptr, static_cast<CFNumberType>(unknown), &value), nullptr) << unknown;
}

TEST(Number, ComparesExactlyAcrossTypesAndHashesAlikeWhenEqual)
{
    // As doubles these two would be the same.
    const auto odd = Number(SInt64 { 9007199254740993 });
    const auto even = Number(9007199254740992.0);
    EXPECT_EQ(CFNumberCompare(odd.get(), even.get(), nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(CFNumberCompare(even.get(), odd.get(), nullptr), kCFCompareLessThan);
    EXPECT_EQ(CFNumberCompare(Number(SInt64 { -3 }).get(), Number(-2.5).get(), nullptr), kCFCompareLessThan);
    EXPECT_EQ(
        CFNumberCompare(Number(SInt64 { -2 }).get(), Number(-2.5).get(), nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(
        CFNumberCompare(Number(SInt64 { 5 }).get(), kCFNumberPositiveInfinity, nullptr), kCFCompareLessThan);
    EXPECT_EQ(CFNumberCompare(kCFNumberNaN, kCFNumberNegativeInfinity, nullptr), kCFCompareLessThan);
    EXPECT_TRUE(CFEqual(kCFNumberNaN, Number(std::nan("1")).get()));
    const auto seven = Number(kCFNumberSInt8Type, SInt8 { 7 });
    EXPECT_TRUE(CFEqual(seven.get(), Number(7.0).get()));
    EXPECT_EQ(CFHash(seven.get()), CFHash(Number(7.0).get()));
    EXPECT_EQ(CFHash(Number(0.0).get()), CFHash(Number(-0.0).get()));
}

TEST(Date, CountsFromTheYear2001)
{
    const double unixTime = CFAbsoluteTimeGetCurrent() + kCFAbsoluteTimeIntervalSince1970;
    EXPECT_NEAR(unixTime, static_cast<double>(time(nullptr)), 5);
    const auto early = Hold(CFDateCreate(nullptr, -1.5)), late = Hold(CFDateCreate(nullptr, 2));
    EXPECT_EQ(CFDateGetTimeIntervalSinceDate(late.get(), early.get()), 3.5);
    EXPECT_EQ(CFDateCompare(early.get(), late.get(), nullptr), kCFCompareLessThan);
    EXPECT_TRUE(CFEqual(late.get(), Hold(CFDateCreate(nullptr, 2)).get()));
}

TEST(UUID, TextAndBytesAgreeBothWays)
{
    const auto uuid = Hold(CFUUIDCreateFromString(nullptr, CFSTR("c12a7328-F81F-11D2-BA4B-00A0C93EC93B")));
    ASSERT_NE(uuid, nullptr);
    EXPECT_EQ(Show(Hold(CFUUIDCreateString(nullptr, uuid.get()))), "C12A7328-F81F-11D2-BA4B-00A0C93EC93B");
    const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(uuid.get());
    EXPECT_EQ(bytes.byte0, 0xc1);
    EXPECT_EQ(bytes.byte15, 0x3b);
    EXPECT_TRUE(CFEqual(uuid.get(), Hold(CFUUIDCreateFromUUIDBytes(nullptr, bytes)).get()));
}

TEST(UUID, RefusesTextOfAnyOtherForm)
{
    for (const char* text : { "", "C12A7328", "C12A7328-F81F-11D2-BA4B-00A0C93EC93",
             "C12A7328F81F-11D2-BA4B-00A0C93EC93B-", "G12A7328-F81F-11D2-BA4B-00A0C93EC93B",
             "{12A7328-F81F-11D2-BA4B-00A0C93EC93B}", "C12A7328-F81F-11D2-BA4B-00A0C93EC93B0" })
        EXPECT_EQ(CFUUIDCreateFromString(nullptr, Text(text).get()), nullptr) << text;
}

TEST(UUID, RandomOnesAreVersion4AndDiffer)
{
    std::set<std::string> seen;
    for (int i = 0; i < 100; i++) {
        const std::string text = Show(Hold(CFUUIDCreateString(nullptr, Hold(CFUUIDCreate(nullptr)).get())));
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 100U);
}

TEST(UUID, ConstantsOfTheSameBytesAreOneObject)
{
    const auto constant = [](UInt8 last) {
        return CFUUIDGetConstantUUIDWithBytes(
            nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, last);
    };
    EXPECT_EQ(constant(16), constant(16));
    EXPECT_FALSE(CFEqual(constant(16), constant(17)));
}

TEST(Error, DescribesItselfByItsUserInfoElseByDomainAndCode)
{
    const auto plain = Hold(CFErrorCreate(nullptr, kCFErrorDomainOSStatus, -43, nullptr));
    EXPECT_EQ(CFErrorGetCode(plain.get()), -43);
    EXPECT_TRUE(CFEqual(CFErrorGetDomain(plain.get()), kCFErrorDomainOSStatus));
    EXPECT_EQ(CFDictionaryGetCount(Hold(CFErrorCopyUserInfo(plain.get())).get()), 0);
    EXPECT_THAT(Show(Hold(CFErrorCopyDescription(plain.get()))), testing::HasSubstr("error -43"));
    const void* key = kCFErrorLocalizedDescriptionKey;
    const void* value = CFSTR("It rains.");
    const auto info = Hold(CFDictionaryCreate(
        nullptr, &key, &value, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const auto told = Hold(CFErrorCreate(nullptr, kCFErrorDomainPOSIX, 2, info.get()));
    EXPECT_EQ(Show(Hold(CFErrorCopyDescription(told.get()))), "It rains.");
}
