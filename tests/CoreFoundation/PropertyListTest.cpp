#include "StoreTesting.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr CFPropertyListFormat kFormats[]
    = { kCFPropertyListXMLFormat_v1_0, kCFPropertyListBinaryFormat_v1_0 };

Held<CFDataRef> Written(CFPropertyListRef plist, CFPropertyListFormat format)
{
    return Held<CFDataRef>(CFPropertyListCreateData(nullptr, plist, format, 0, nullptr));
}

Held<CFPropertyListRef> Read(std::string_view bytes, CFOptionFlags options = kCFPropertyListImmutable,
    CFPropertyListFormat* format = nullptr)
{
    return Held<CFPropertyListRef>(
        CFPropertyListCreateWithData(nullptr, Data(bytes).get(), options, format, nullptr));
}

void ExpectSurvives(CFTypeRef value, CFPropertyListFormat format)
{
    const Held<CFDataRef> data = Written(value, format);
    ASSERT_TRUE(data) << Taken(CFCopyDescription(value));
    CFPropertyListFormat found {};
    const Held<CFPropertyListRef> back = Read(Bytes(data.get()), kCFPropertyListImmutable, &found);
    ASSERT_TRUE(back) << Bytes(data.get());
    EXPECT_TRUE(CFEqual(back.get(), value)) << Taken(CFCopyDescription(back.get()));
    EXPECT_EQ(found, format);
}

/// Expects no answer and an error of that code with a sentence in it.
void ExpectUnreadable(std::string_view bytes)
{
    CFErrorRef rawError = nullptr;
    const Held<CFPropertyListRef> plist(
        CFPropertyListCreateWithData(nullptr, Data(bytes).get(), 0, nullptr, &rawError));
    EXPECT_FALSE(plist) << bytes.substr(0, 200);
    if (!rawError)
        return;
    const Held<CFErrorRef> error(rawError);
    EXPECT_EQ(CFErrorGetCode(rawError), kCFPropertyListReadCorruptError);
    EXPECT_GT(Taken(CFErrorCopyDescription(rawError)).size(), 10U);
}

void ExpectUnwritable(CFTypeRef plist, CFPropertyListFormat format)
{
    CFErrorRef rawError = nullptr;
    const Held<CFDataRef> data(CFPropertyListCreateData(nullptr, plist, format, 0, &rawError));
    EXPECT_FALSE(data);
    EXPECT_FALSE(CFPropertyListIsValid(plist, format));
    ASSERT_TRUE(rawError);
    const Held<CFErrorRef> error(rawError);
    EXPECT_EQ(CFErrorGetCode(rawError), kCFPropertyListWriteStreamError);
}

std::string Repeated(const std::string& text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string NestedXML(int depth)
{
    return "<plist>" + Repeated("<array>", depth) + Repeated("</array>", depth) + "</plist>";
}

/// A binary property list whose objects are as given; references and offsets take two bytes.
std::string Binary(const std::vector<std::string>& objects)
{
    const auto twoBytes = [](size_t value) {
        return std::string { static_cast<char>(value >> 8), static_cast<char>(value) };
    };
    std::string bytes = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        offsets += twoBytes(bytes.size());
        bytes += object;
    }
    const size_t table = bytes.size();
    return bytes + offsets + std::string(6, '\0') + "\x02\x02" + std::string(6, '\0')
        + twoBytes(objects.size()) + std::string(8, '\0') + std::string(6, '\0') + twoBytes(table);
}

std::string ArrayOf(std::initializer_list<size_t> objects)
{
    std::string result(1, static_cast<char>(0xA0 + objects.size()));
    for (const size_t object : objects)
        result += { static_cast<char>(object >> 8), static_cast<char>(object) };
    return result;
}

/// A chain of arrays, each with the next `times` times, and an empty one at its end.
std::string ChainedBinary(size_t depth, size_t times = 1)
{
    std::vector<std::string> objects;
    for (size_t i = 1; i < depth; ++i)
        objects.push_back(times == 1 ? ArrayOf({ i }) : ArrayOf({ i, i }));
    objects.push_back(ArrayOf({}));
    return Binary(objects);
}

Held<CFMutableDictionaryRef> Pair(CFTypeRef key, CFTypeRef value)
{
    auto dictionary = Dictionary();
    CFDictionarySetValue(dictionary.get(), key, value);
    return dictionary;
}

} // namespace

TEST(PropertyListTest, MalformedInputGivesAnError)
{
    for (const char* bytes : { "", " ", "garbage", "<", "<plist", "<plist/>", "<plist></plist>", "bplist00",
             "bplist", "<plist><true/>", "<plist><string>x</string", "<plist><string>x</array></plist>",
             "<plist><array><true/></plist>", "<plist><true/><true/></plist>",
             "<plist><array>x</array></plist>", "<plist><dict><true/></dict></plist>",
             "<plist><dict><key>a</key></dict></plist>", "<plist><integer>abc</integer></plist>",
             "<plist><integer></integer></plist>", "<plist><integer>18446744073709551616</integer></plist>",
             "<plist><integer>-9223372036854775809</integer></plist>",
             "<plist><integer>010</integer></plist>", "<plist><real>1,5</real></plist>",
             "<plist><date>yesterday</date></plist>", "<plist><date>2023-02-29T00:00:00Z</date></plist>",
             "<plist><data>AAE</data></plist>", "<plist><data>%%%%</data></plist>", "<plist><null/></plist>",
             "<plist><string>&bogus;</string></plist>", "<plist><string>\xFF</string></plist>",
             "<plist><string>&#xD800;</string></plist>", "<plist><!-- <true/></plist>",
             "<!DOCTYPE plist [ <array> ]><plist><true/></plist>" })
        ExpectUnreadable(bytes);
    ExpectUnreadable(std::string_view("<plist><string>a\0b</string></plist>", 35));
    for (const CFPropertyListFormat format : kFormats) {
        const std::string whole = Bytes(Written(NestedArrays(3).get(), format).get());
        const size_t end = whole.find_last_not_of('\n') + 1;
        for (size_t length = 0; length < end; ++length)
            ExpectUnreadable(whole.substr(0, length));
    }
}

TEST(PropertyListTest, HarmlessVariationsOfXMLAreRead)
{
    const char* expected = "a<b>c";
    for (const char* xml :
        { "<string>a&lt;b&#62;c</string>", "<plist><string><![CDATA[a<b>c]]></string></plist>",
            "\xEF\xBB\xBF<?xml version='1.0'?>\r\n<plist >\r\n<string >a&lt;<!-- x "
            "--><![CDATA[b>]]>c</string >\r\n</plist>",
            "<!DOCTYPE plist [<!ELEMENT x (y)>]><!-- <array> --><plist><string>a&lt;b&gt;c</string></plist> "
            "tail" }) {
        const Held<CFPropertyListRef> value = Read(xml);
        ASSERT_TRUE(value) << xml;
        EXPECT_EQ(Show(static_cast<CFStringRef>(value.get())), expected);
    }
}

TEST(PropertyListTest, DeepNestingIsRefusedAndNeverOverflowsTheStack)
{
    EXPECT_TRUE(Read(NestedXML(512)));
    EXPECT_TRUE(Read(ChainedBinary(512)));
    for (const int depth : { 513, 60000 }) {
        ExpectUnreadable(NestedXML(depth));
        ExpectUnreadable(ChainedBinary(static_cast<size_t>(depth) / 3 + 342));
    }
    ExpectUnreadable("<plist>" + Repeated("<dict><key>k</key>", 200000));
    for (const CFPropertyListFormat format : kFormats) {
        ExpectSurvives(NestedArrays(512).get(), format);
        ExpectUnwritable(NestedArrays(513).get(), format);
    }
    EXPECT_TRUE(Held<CFPropertyListRef>(CFPropertyListCreateDeepCopy(nullptr, NestedArrays(512).get(), 0)));
    EXPECT_FALSE(Hold(CFPropertyListCreateDeepCopy(nullptr, NestedArrays(513).get(), 0)));
}

TEST(PropertyListTest, MalformedBinaryObjectsAreRefused)
{
    const std::string big("\x5F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10);
    for (const std::string& object :
        { big, std::string("\x5F"), std::string("\x53xy"), std::string("\x21xx"), std::string("\x70"),
            std::string(1, '\x00'), ArrayOf({ 9 }), std::string("\x14") + std::string(16, '\xFF'),
            std::string("\x51\xE9"), std::string("\x61\xD8\x00", 3), std::string("\x61\xDC\x00", 3),
            std::string("\x53x\0y", 4), std::string("\x61\0\0", 3), std::string("\xA3\0\1", 3) })
        ExpectUnreadable(Binary({ object }));
    ExpectUnreadable(Binary({ std::string("\xD1\0\1\0\1", 5), "\x10\x01" }));
}

TEST(PropertyListTest, EveryKindOfValueSurvivesInBothFormats)
{
    const auto list = Array({ "", "plain", "a < b & \"c\" > 'd'", "Gr\u00FC\u00DFe \u65E5 \U0001F600",
        " \t\n spaces \n ", "one\rtwo\r\nthree", "]]>", "\u0085\u2028" });
    const auto whole = Dictionary();
    for (CFIndex i = 0; i < CFArrayGetCount(list.get()); ++i)
        CFDictionarySetValue(whole.get(), CFArrayGetValueAtIndex(list.get(), i), kCFBooleanFalse);
    for (const SInt64 number : { SInt64 { 0 }, SInt64 { 255 }, SInt64 { -128 }, SInt64 { 65536 },
             SInt64 { INT32_MIN }, SInt64 { INT64_MAX }, SInt64 { INT64_MIN } })
        CFArrayAppendValue(list.get(), Integer(number).get());
    for (const double number : { 0.5, -1.0 / 3, 1e300, 5e-324, std::numeric_limits<double>::infinity() })
        CFArrayAppendValue(list.get(), Number(number).get());
    for (const std::string_view bytes : { std::string_view(), std::string_view("\0\xFF\x10", 3) })
        CFArrayAppendValue(list.get(), Data(bytes).get());
    CFArrayAppendValue(list.get(), Hold(CFDateCreate(nullptr, 342702671)).get());
    CFArrayAppendValue(list.get(), Array().get());
    CFDictionarySetValue(whole.get(), CFSTR("list"), list.get());
    CFDictionarySetValue(whole.get(), CFSTR("empty"), Dictionary().get());
    const auto backwards = Dictionary();
    const CFIndex count = CFDictionaryGetCount(whole.get());
    std::vector<const void*> keys(static_cast<size_t>(count));
    CFDictionaryGetKeysAndValues(whole.get(), keys.data(), nullptr);
    std::for_each(keys.rbegin(), keys.rend(), [&](const void* key) {
        CFDictionarySetValue(backwards.get(), key, CFDictionaryGetValue(whole.get(), key));
    });
    for (const CFPropertyListFormat format : kFormats) {
        ExpectSurvives(whole.get(), format);
        EXPECT_EQ(Bytes(Written(whole.get(), format).get()), Bytes(Written(backwards.get(), format).get()))
            << "equal dictionaries are written alike";
    }
    const std::string xml = Bytes(Written(whole.get(), kCFPropertyListXMLFormat_v1_0).get());
    EXPECT_NE(xml.find("one&#13;two&#13;\nthree"), std::string::npos) << "for other readers of XML";
}

TEST(PropertyListTest, NegativeAndUnsignedIntegersAreToldApart)
{
    const std::string wide = "\x14" + std::string(8, '\0') + std::string(8, '\xFF');
    for (const auto& list :
        { Read("<plist><array><integer>-1</integer><integer>18446744073709551615</integer>"
               "<integer>0x7F</integer></array></plist>"),
            Read(Binary({ ArrayOf({ 1, 2, 3 }), "\x13" + std::string(8, '\xFF'), wide, "\x10\x7F" })) }) {
        ASSERT_TRUE(list);
        const auto expected = Array();
        for (const auto& number : { Integer(-1), Number(18446744073709551615.0), Integer(127) })
            CFArrayAppendValue(expected.get(), number.get());
        EXPECT_TRUE(CFEqual(list.get(), expected.get())) << Taken(CFCopyDescription(list.get()));
    }
    const auto reference = Read(Binary({ "\x80\x07" }));
    EXPECT_TRUE(reference && CFEqual(reference.get(), Pair(CFSTR("CF$UID"), Integer(7).get()).get()));
}

TEST(PropertyListTest, DatesKeepWhatTheirFormatHolds)
{
    const auto date = [](double at) { return Hold(CFDateCreate(nullptr, at)); };
    for (const double at : { 0.0, -0.75, 86400.123456789, 63113904000.0, -12622780800.5 }) {
        ExpectSurvives(date(at).get(), kCFPropertyListBinaryFormat_v1_0);
        const auto back = Read(Bytes(Written(date(at).get(), kCFPropertyListXMLFormat_v1_0).get()));
        EXPECT_TRUE(back && CFEqual(back.get(), date(std::floor(at)).get())) << at;
    }
    for (const double at : { -63114076800.0, 1e18, std::nan("") })
        ExpectUnwritable(date(at).get(), kCFPropertyListXMLFormat_v1_0);
    ExpectUnwritable(date(std::nan("")).get(), kCFPropertyListBinaryFormat_v1_0);
    ExpectUnreadable(Binary({ "\x33" + std::string(8, '\xFF') }));
}

TEST(PropertyListTest, WhatTheFormatCannotHoldIsRefused)
{
    const auto halfPair = Units(u"\xD800"), withNull = Text(std::string_view("a\0b", 3));
    const auto array = Array();
    CFArrayAppendValue(array.get(), kCFNull);
    const auto wrongKey = Pair(Integer(1).get(), kCFBooleanTrue);
    const auto halfKey = Pair(halfPair.get(), kCFBooleanTrue), nullKey = Pair(withNull.get(), kCFBooleanTrue);
    const auto itself = Array();
    CFArrayAppendValue(itself.get(), itself.get());
    CFArrayAppendValue(itself.get(), itself.get());
    for (const CFPropertyListFormat format : kFormats)
        for (const CFTypeRef wrong : std::initializer_list<CFTypeRef> { halfPair.get(), withNull.get(),
                 halfKey.get(), nullKey.get(), kCFNull, array.get(), wrongKey.get(), itself.get(), nullptr })
            ExpectUnwritable(wrong, format);
    for (const CFTypeRef wrong : std::initializer_list<CFTypeRef> { array.get(), itself.get(), nullptr })
        EXPECT_FALSE(Hold(CFPropertyListCreateDeepCopy(nullptr, wrong, kCFPropertyListImmutable)));
    CFArrayRemoveAllValues(itself.get());
    ExpectUnwritable(kCFBooleanTrue, kCFPropertyListOpenStepFormat);
    for (const char* text : { "bell \a", "\x1B[0m", "\uFFFE", "x\uFFFF", "Gr\u00FC\u00DFe\x01" }) {
        ExpectUnwritable(Text(text).get(), kCFPropertyListXMLFormat_v1_0);
        ExpectUnwritable(Pair(Text(text).get(), kCFBooleanTrue).get(), kCFPropertyListXMLFormat_v1_0);
        ExpectSurvives(Text(text).get(), kCFPropertyListBinaryFormat_v1_0);
    }
}

TEST(PropertyListTest, ObjectsOfABinaryListMayBeSharedWithinBoundsButNotHoldThemselves)
{
    ExpectUnreadable(Binary({ ArrayOf({ 0 }) }));
    ExpectUnreadable(Binary({ ArrayOf({ 1, 1 }), ArrayOf({ 2 }), ArrayOf({ 0 }) }));
    ExpectUnreadable(ChainedBinary(41, 2));
    // A little sharing is how writers save space.
    const auto shared = Read(Binary({ ArrayOf({ 1, 1, 1 }), "\x51x" }));
    EXPECT_TRUE(shared && CFEqual(shared.get(), Array({ "x", "x", "x" }).get()));
}

TEST(PropertyListTest, OptionsDecideWhatMayBeChanged)
{
    const std::string xml = "<plist><array><string>a</string><data>AAEC</data></array></plist>";
    const auto original = Read(xml);
    for (const CFOptionFlags options :
        { kCFPropertyListMutableContainers, kCFPropertyListMutableContainersAndLeaves }) {
        const auto read = Read(xml, options);
        const auto copy = Hold(CFPropertyListCreateDeepCopy(nullptr, original.get(), options));
        for (const CFPropertyListRef plist : { read.get(), copy.get() }) {
            auto* list = static_cast<CFMutableArrayRef>(const_cast<void*>(plist));
            CFArrayAppendValue(list, kCFBooleanTrue);
            if (options == kCFPropertyListMutableContainers)
                continue;
            const auto leaf
                = [list](CFIndex i) { return const_cast<void*>(CFArrayGetValueAtIndex(list, i)); };
            CFStringAppend(static_cast<CFMutableStringRef>(leaf(0)), CFSTR("b"));
            CFDataSetLength(static_cast<CFMutableDataRef>(leaf(1)), 9);
        }
        EXPECT_TRUE(CFEqual(read.get(), copy.get()));
    }
    EXPECT_TRUE(CFEqual(original.get(), Read(xml).get()));
}
