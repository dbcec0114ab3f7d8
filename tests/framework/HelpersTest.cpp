#include "tests/support/TestVolume.h"
#include "ui/framework/LaunchMarker.h"
#include "ui/framework/ObjectHelpers.h"
#include "util/CFText.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

template <class Number> CFRef<CFNumberRef> NumberObject(CFNumberType type, Number number)
{
    return CFRef(CFNumberCreate(kCFAllocatorDefault, type, &number));
}

CFRef<CFMutableStringRef> MutableText(CFStringRef text)
{
    return CFRef(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text));
}

CFRef<CFMutableArrayRef> ArrayOf(CFTypeRef object)
{
    CFRef<CFMutableArrayRef> array(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(array.get(), object);
    return array;
}

CFRef<CFMutableDictionaryRef> DictionaryOf(CFStringRef firstKey, CFStringRef secondKey)
{
    CFRef<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(dictionary.get(), firstKey, CFSTR("x"));
    CFDictionarySetValue(dictionary.get(), secondKey, CFSTR("x"));
    return dictionary;
}

/// Keeps the markers off the host's /tmp.
class LaunchMarkerTest : public ::testing::Test {
protected:
    LaunchMarkerTest() { fs::create_directory(volume.root() / "tmp"); }

    fs::path marker() const { return volume.root() / "tmp/zek-framework-test-marker"; }
    bool isFirst(uint32_t expectedValue) const
    {
        uint32_t value = 77;
        const bool first = FirstLaunch(marker().filename(), &value);
        EXPECT_EQ(value, expectedValue);
        return first;
    }

    TestVolume volume;
};

}

TEST(ObjectHelpersTest, ObjectsAreEqualWhenTheyDescribeThemselvesAlike)
{
    EXPECT_FALSE(AreObjectsEqual(nullptr, nullptr));
    EXPECT_FALSE(AreObjectsEqual(CFSTR("1"), nullptr));
    EXPECT_FALSE(AreObjectsEqual(nullptr, CFSTR("1")));
    const auto one = NumberObject(kCFNumberSInt32Type, 1);
    EXPECT_TRUE(AreObjectsEqual(CFSTR("1"), one.get()));
    EXPECT_TRUE(AreObjectsEqual(kCFBooleanTrue, one.get()));
    EXPECT_TRUE(AreObjectsEqual(CFSTR("0.5"), NumberObject(kCFNumberDoubleType, 0.5).get()));
    EXPECT_FALSE(AreObjectsEqual(CFSTR("2"), one.get()));
    EXPECT_TRUE(AreObjectsEqual(
        DictionaryOf(CFSTR("a"), CFSTR("b")).get(), DictionaryOf(CFSTR("b"), CFSTR("a")).get()));
    EXPECT_FALSE(AreObjectsEqual(
        DictionaryOf(CFSTR("a"), CFSTR("b")).get(), DictionaryOf(CFSTR("a"), CFSTR("c")).get()));
    EXPECT_TRUE(AreObjectsEqual(ArrayOf(one.get()).get(), ArrayOf(CFSTR("1")).get()));
    EXPECT_FALSE(AreObjectsEqual(ArrayOf(CFSTR("1")).get(), ArrayOf(CFSTR("1, 1")).get()));
    const auto data = [](std::string bytes) {
        return CFRef(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()), 1000));
    };
    const std::string zeros(1000, '\0');
    EXPECT_TRUE(AreObjectsEqual(data(zeros).get(), data(zeros).get()));
    EXPECT_FALSE(AreObjectsEqual(data(zeros).get(), data(std::string(zeros).replace(500, 1, "x")).get()));
}

TEST(ObjectHelpersTest, CopiesAreIndependentToTheDepthAskedFor)
{
    const CFRef<CFMutableStringRef> inner = MutableText(CFSTR("text"));
    const CFRef<CFMutableArrayRef> outer = ArrayOf(ArrayOf(inner.get()).get());
    CFArrayAppendValue(outer.get(), inner.get());
    const CFRef<CFMutableArrayRef> shallow = CopyArrayAndObjects(outer.get());
    const CFRef<CFTypeRef> deep = DeepCopyObject(outer.get());
    const auto deepArray = CFDynamicCast<CFArrayRef>(deep.get(), CFArrayGetTypeID());
    ASSERT_EQ(CFArrayGetCount(shallow.get()), 2);
    ASSERT_EQ(CFArrayGetCount(deepArray), 2);
    CFStringAppend(inner.get(), CFSTR(" changed"));
    const auto element = [](CFArrayRef array, CFIndex index) { return CFArrayGetValueAtIndex(array, index); };
    EXPECT_TRUE(CFEqual(element(shallow.get(), 1), CFSTR("text"))) << "each element is copied";
    EXPECT_EQ(element(static_cast<CFArrayRef>(element(shallow.get(), 0)), 0), inner.get())
        << "what it holds is not";
    EXPECT_TRUE(CFEqual(element(deepArray, 1), CFSTR("text")));
    EXPECT_TRUE(CFEqual(element(static_cast<CFArrayRef>(element(deepArray, 0)), 0), CFSTR("text")));
    CFArrayAppendValue(shallow.get(), CFSTR("more"));
    EXPECT_EQ(CFArrayGetCount(CopyArrayAndObjects(nullptr).get()), 0);
}

TEST(ObjectHelpersTest, WhatCannotBeArchivedHasNoDeepCopy)
{
    EXPECT_FALSE(DeepCopyObject(nullptr));
    EXPECT_FALSE(DeepCopyObject(ArrayOf(kCFNull).get()));
}

TEST_F(LaunchMarkerTest, AMarkerHoldsFourBytesThatEverybodyMayRewrite)
{
    EXPECT_TRUE(isFirst(0));
    SetFirstLaunch(marker().filename(), 0xFE345678);
    EXPECT_EQ(TestVolume::read(marker()), "\xFE\x34\x56\x78");
    EXPECT_EQ(fs::status(marker()).permissions(), fs::perms(0666));
    EXPECT_FALSE(isFirst(0xFE345678));
    EXPECT_FALSE(FirstLaunch(marker().filename()));
    for (const char* const bad : { "", "123", "12345" }) {
        TestVolume::write(marker(), bad);
        EXPECT_TRUE(isFirst(0)) << bad;
    }
    SetFirstLaunch(marker().filename(), 5);
    EXPECT_FALSE(isFirst(5)) << "a longer one is replaced";
}

TEST_F(LaunchMarkerTest, NamesThatNoMarkerCanHaveFailSilently)
{
    SetFirstLaunch("m\u00e4rker", 1);
    SetFirstLaunch("no/such/folder", 1);
    SetFirstLaunch(std::string(2000, 'x'), 1);
    EXPECT_TRUE(fs::is_empty(volume.root() / "tmp"));
    fs::create_symlink(volume.root() / "other", marker());
    SetFirstLaunch(marker().filename(), 1);
    EXPECT_FALSE(fs::exists(volume.root() / "other")) << "anybody could have put the link there";
    fs::remove(marker());
    mkfifo(marker().c_str(), 0666);
    EXPECT_TRUE(isFirst(0));
    fs::remove(marker());
    fs::create_directory(marker());
    SetFirstLaunch(marker().filename(), 1);
    EXPECT_TRUE(isFirst(0));
}
