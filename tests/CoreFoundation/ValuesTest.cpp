#include "Values.h"

#include <climits>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <set>

namespace {

Held<CFMutableDataRef> MutableData(std::string_view bytes, CFIndex capacity = 0)
{
    return Hold(CFDataCreateMutableCopy(nullptr, capacity, Data(bytes).get()));
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
    InThreads([&](size_t) {
        for (int round = 0; round < 20000; round++) {
            CFRetain(string.get());
            CFRelease(string.get());
        }
    });
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(Objects, ConstantStringsOfOneTextAreOneObjectInEveryThread)
{
    std::vector<std::set<CFStringRef>> seen(4);
    InThreads([&](size_t mine) {
        for (int i = 0; i < 2000; i++)
            seen[mine].insert(__CFStringMakeConstantString(("constant " + std::to_string(i % 50)).c_str()));
    });
    EXPECT_EQ(seen[0].size(), 50U);
    for (const auto& other : seen)
        EXPECT_EQ(other, seen[0]);
}

TEST(Objects, ConstantsSurviveAnyNumberOfReleases)
{
    for (CFTypeRef constant : { CFTypeRef(CFSTR("survivor")), CFTypeRef(kCFBooleanTrue),
             CFTypeRef(kCFAllocatorNull), CFTypeRef(kCFNumberNaN) }) {
        const CFIndex count = CFGetRetainCount(constant);
        for (int i = 0; i < 3; i++)
            CFRelease(constant); // NOLINT(clang-analyzer-osx.cocoa.RetainCount): too often on purpose
        EXPECT_EQ(CFGetRetainCount(constant), count);
    }
    EXPECT_EQ(Show(CFSTR("survivor")), "survivor");
}

TEST(ObjectsDeathTest, FaultsOfTheProgramEndItWithAMessage)
{
    // NOLINTNEXTLINE(clang-analyzer-osx.coreFoundation.CFRetainRelease): this is the fault
    EXPECT_DEATH(CFRelease(nullptr), "CFRelease: called with null");
    EXPECT_DEATH((void)CFStringGetLength(static_cast<CFStringRef>(CFTypeRef(kCFNull))), "needs an object");
    EXPECT_DEATH(CFStringAppend(const_cast<CFMutableStringRef>(CFSTR("constant")), CFSTR("x")), "immutable");
    EXPECT_DEATH((void)CFStringGetCharacterAtIndex(CFSTR("abc"), 3), "out of bounds");
    const auto data = Data("");
    UInt8 byte = 0;
    EXPECT_DEATH(CFDataGetBytes(data.get(), CFRangeMake(LONG_MAX, LONG_MAX), &byte), "range out of bounds");
    EXPECT_DEATH(CFDataSetLength(const_cast<CFMutableDataRef>(data.get()), 1), "immutable");
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

TEST(Data, RefusesImpossibleSizesAndGrowsNoFurtherThanItsCapacity)
{
    const UInt8 byte = 0;
    EXPECT_EQ(CFDataCreate(nullptr, &byte, -1), nullptr);
    EXPECT_EQ(CFDataCreate(nullptr, nullptr, 1), nullptr);
    const auto data = MutableData("abc", 4);
    CFDataIncreaseLength(data.get(), 1);
    EXPECT_EQ(Bytes(data.get()), std::string("abc\0", 4));
    EXPECT_DEATH(CFDataIncreaseLength(data.get(), 1), "capacity");
    EXPECT_DEATH(
        CFDataIncreaseLength(MutableData("a").get(), LONG_MAX), "memory cannot hold|AddressSanitizer");
}

TEST(Data, ReplacesBytesAtBothEndsAndWithBytesOfItsOwn)
{
    const auto data = MutableData("1234");
    const auto* more = reinterpret_cast<const UInt8*>("987");
    CFDataReplaceBytes(data.get(), CFRangeMake(0, 1), more, 3);
    EXPECT_EQ(Bytes(data.get()), "987234");
    CFDataReplaceBytes(data.get(), CFRangeMake(3, 3), more, 1);
    EXPECT_EQ(Bytes(data.get()), "9879");
    const auto copy = Hold(CFDataCreateCopy(nullptr, data.get()));
    for (CFIndex length = 4; length < 1000; length *= 2) // sooner or later the bytes must move to grow
        CFDataAppendBytes(data.get(), CFDataGetBytePtr(data.get()), length);
    EXPECT_EQ(Bytes(data.get()).substr(1016), "98799879");
    CFDataDeleteBytes(data.get(), CFRangeMake(0, 1024));
    EXPECT_EQ(CFDataGetLength(data.get()), 0);
    EXPECT_EQ(Bytes(copy.get()), "9879") << "a copy stays when the original changes";
}

TEST(Number, SaysWhetherATypeHoldsTheValueAndElseApproximatesIt)
{
    const auto big = Integer(0x123456789abcdef0);
    EXPECT_EQ(ValueOf<SInt64>(big, kCFNumberSInt64Type), Exact(SInt64 { 0x123456789abcdef0 }));
    EXPECT_EQ(ValueOf<SInt32>(big, kCFNumberSInt32Type), About(static_cast<SInt32>(0x9abcdef0)));
    EXPECT_EQ(ValueOf<signed char>(Integer(-128), kCFNumberCharType), Exact<signed char>(-128));
    EXPECT_EQ(ValueOf<signed char>(Integer(128), kCFNumberCharType), About<signed char>(-128));
    EXPECT_EQ(ValueOf<int>(Number(2.5), kCFNumberIntType), About(2));
    EXPECT_EQ(ValueOf<int>(Number(-2.0), kCFNumberIntType), Exact(-2));
    EXPECT_EQ(ValueOf<float>(Number(0.1), kCFNumberFloatType), About(0.1F));
    using Limits = std::numeric_limits<SInt64>;
    EXPECT_EQ(ValueOf<double>(Integer(Limits::max()), kCFNumberDoubleType), About(0x1p63));
    EXPECT_EQ(ValueOf<SInt64>(Number(0x1p63), kCFNumberSInt64Type), About(Limits::max()));
    EXPECT_EQ(ValueOf<SInt64>(Number(-0x1p63), kCFNumberSInt64Type), Exact(Limits::min()));
    EXPECT_EQ(ValueOf<SInt16>(Number(-1e300), kCFNumberSInt16Type), About<SInt16>(-32768));
    EXPECT_EQ(ValueOf<int>(Number(std::nan("")), kCFNumberIntType), About(0));
    EXPECT_EQ(CFNumberGetByteSize(Number(kCFNumberShortType, short { -5 }).get()), 2);
    EXPECT_TRUE(CFNumberIsFloatType(Number(kCFNumberFloatType, 1.5F).get()));
    for (const CFIndex unknown : { 0, 17, -1 })
        EXPECT_EQ(Number(static_cast<CFNumberType>(unknown), 1), nullptr) << unknown;
}

TEST(Number, ComparesExactlyAcrossTypesAndHashesAlikeWhenEqual)
{
    // As doubles the first two would be the same.
    const std::pair<Held<CFNumberRef>, Held<CFNumberRef>> ascending[]
        = { { Number(9007199254740992.0), Integer(9007199254740993) }, { Integer(-3), Number(-2.5) },
              { Number(-2.5), Integer(-2) }, { Integer(5), Number(HUGE_VAL) },
              { Number(std::nan("")), Number(-HUGE_VAL) } };
    for (const auto& [less, more] : ascending) {
        EXPECT_EQ(CFNumberCompare(less.get(), more.get(), nullptr), kCFCompareLessThan);
        EXPECT_EQ(CFNumberCompare(more.get(), less.get(), nullptr), kCFCompareGreaterThan);
    }
    EXPECT_TRUE(CFEqual(kCFNumberNaN, Number(std::nan("1")).get()));
    const auto seven = Number(kCFNumberSInt8Type, SInt8 { 7 });
    EXPECT_TRUE(CFEqual(seven.get(), Number(7.0).get()));
    EXPECT_EQ(CFHash(seven.get()), CFHash(Number(7.0).get()));
    EXPECT_EQ(CFHash(Number(0.0).get()), CFHash(Number(-0.0).get()));
    EXPECT_FALSE(CFEqual(Integer(1).get(), kCFBooleanTrue)) << "of another type";
    EXPECT_FALSE(CFEqual(Text("1").get(), Integer(1).get())) << "of another type";
}

TEST(Date, CountsFromTheYear2001)
{
    const double unixTime = CFAbsoluteTimeGetCurrent() + kCFAbsoluteTimeIntervalSince1970;
    EXPECT_NEAR(unixTime, static_cast<double>(time(nullptr)), 5);
    const auto early = Hold(CFDateCreate(nullptr, -1.5)), late = Hold(CFDateCreate(nullptr, 2));
    EXPECT_EQ(CFDateGetTimeIntervalSinceDate(late.get(), early.get()), 3.5);
    EXPECT_EQ(CFDateCompare(early.get(), late.get(), nullptr), kCFCompareLessThan);
}

TEST(UUID, IsReadFromTextOfItsOwnFormOnly)
{
    const auto uuid = Hold(CFUUIDCreateFromString(nullptr, CFSTR("c12a7328-F81F-11D2-BA4B-00A0C93EC93B")));
    ASSERT_NE(uuid, nullptr);
    EXPECT_EQ(Taken(CFUUIDCreateString(nullptr, uuid.get())), "C12A7328-F81F-11D2-BA4B-00A0C93EC93B");
    const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(uuid.get());
    EXPECT_EQ(bytes.byte0, 0xc1);
    EXPECT_EQ(bytes.byte15, 0x3b);
    EXPECT_TRUE(CFEqual(uuid.get(), Hold(CFUUIDCreateFromUUIDBytes(nullptr, bytes)).get()));
    for (const char* text :
        { "", "C12A7328", "C12A7328-F81F-11D2-BA4B-00A0C93EC93", "C12A7328F81F-11D2-BA4B-00A0C93EC93B-",
            "G12A7328-F81F-11D2-BA4B-00A0C93EC93B", "C12A7328-F81F-11D2-BA4B-00A0C93EC93B0" })
        EXPECT_EQ(CFUUIDCreateFromString(nullptr, Text(text).get()), nullptr) << text;
}

TEST(UUID, RandomOnesDifferAndConstantsOfTheSameBytesAreOneObject)
{
    std::set<std::string> seen;
    for (int i = 0; i < 100; i++) {
        const std::string text = Taken(CFUUIDCreateString(nullptr, Hold(CFUUIDCreate(nullptr)).get()));
        EXPECT_TRUE(text[14] == '4' && std::string("89AB").find(text[19]) != std::string::npos) << text;
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 100U);
    const auto constant = [](UInt8 last) {
        return CFUUIDGetConstantUUIDWithBytes(
            nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, last);
    };
    EXPECT_EQ(constant(16), constant(16));
    EXPECT_NE(constant(16), constant(17));
}

TEST(Error, DescribesItselfByItsUserInfoElseByDomainAndCode)
{
    const auto plain = Hold(CFErrorCreate(nullptr, kCFErrorDomainOSStatus, -43, nullptr));
    EXPECT_EQ(CFDictionaryGetCount(Hold(CFErrorCopyUserInfo(plain.get())).get()), 0);
    EXPECT_THAT(Taken(CFErrorCopyDescription(plain.get())), testing::HasSubstr("error -43"));
    const auto info = Dictionary();
    CFDictionarySetValue(info.get(), kCFErrorLocalizedDescriptionKey, CFSTR("It rains."));
    const auto told = Hold(CFErrorCreate(nullptr, kCFErrorDomainPOSIX, 2, info.get()));
    EXPECT_EQ(Taken(CFErrorCopyDescription(told.get())), "It rains.");
}
