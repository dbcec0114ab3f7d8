#include "StoreTesting.h"

#include <clocale>
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

Held<CFPropertyListRef> ReadXML(const std::string& element)
{
    return Read(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + element + "</plist>\n");
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

std::string NestedBinary(size_t depth)
{
    std::vector<std::string> objects;
    for (size_t i = 1; i < depth; ++i)
        objects.push_back(ArrayOf({ i }));
    objects.push_back(ArrayOf({}));
    return Binary(objects);
}

Held<CFMutableArrayRef> NestedArrays(int depth)
{
    Held<CFMutableArrayRef> outer = Array();
    for (int i = 1; i < depth; ++i) {
        Held<CFMutableArrayRef> next = Array();
        CFArrayAppendValue(next.get(), outer.get());
        outer = std::move(next);
    }
    return outer;
}

} // namespace

TEST(PropertyListTest, EveryKindOfValueSurvivesInBothFormats)
{
    const double date = 342702671;
    const Held<CFDateRef> dateValue(CFDateCreate(nullptr, date));
    const Held<CFMutableArrayRef> list = Array();
    const Held<CFMutableDictionaryRef> whole = Dictionary();
    for (const std::string_view text :
        { "", "plain", "a < b & \"c\" > 'd'", "Gr\u00FC\u00DFe \u65E5\u672C\u8A9E \U0001F600",
            " \t\n spaces \n ", "one\rtwo\r\nthree", "]]>", "\u0085\u2028" }) {
        CFArrayAppendValue(list.get(), Text(text).get());
        CFDictionarySetValue(whole.get(), Text(text).get(), kCFBooleanFalse);
    }
    for (const SInt64 number : { SInt64 { 0 }, SInt64 { 1 }, SInt64 { -1 }, SInt64 { 255 }, SInt64 { -128 },
             SInt64 { 65536 }, SInt64 { INT32_MIN }, SInt64 { INT64_MAX }, SInt64 { INT64_MIN } })
        CFArrayAppendValue(list.get(), Integer(number).get());
    for (const double number : { 0.5, -1.0 / 3, 1e300, 5e-324, std::numeric_limits<double>::infinity() })
        CFArrayAppendValue(list.get(), Number(number).get());
    for (const std::string_view bytes : { std::string_view(), std::string_view("\0\xFF\x10", 3) })
        CFArrayAppendValue(list.get(), Data(bytes).get());
    CFArrayAppendValue(list.get(), kCFBooleanTrue);
    CFArrayAppendValue(list.get(), dateValue.get());
    CFArrayAppendValue(list.get(), Array().get());
    CFDictionarySetValue(whole.get(), CFSTR("list"), list.get());
    CFDictionarySetValue(whole.get(), CFSTR("empty"), Dictionary().get());
    for (const CFPropertyListFormat format : kFormats)
        ExpectSurvives(whole.get(), format);
    ExpectSurvives(Text("a string alone").get(), kCFPropertyListXMLFormat_v1_0);
}

TEST(PropertyListTest, CarriageReturnsAreEscapedForOtherReadersOfXML)
{
    const std::string xml = Bytes(Written(CFSTR("one\r\ntwo"), kCFPropertyListXMLFormat_v1_0).get());
    EXPECT_NE(xml.find("one&#13;\ntwo"), std::string::npos) << xml;
}

TEST(PropertyListTest, NegativeAndUnsignedIntegersAreToldApart)
{
    const Held<CFPropertyListRef> list = ReadXML(
        "<array><integer>-1</integer><integer>18446744073709551615</integer><integer>0x7F</integer></array>");
    ASSERT_TRUE(list);
    const auto* array = static_cast<CFArrayRef>(list.get());
    EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(array, 0), Integer(-1).get()));
    EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(array, 1), Number(18446744073709551615.0).get()));
    EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(array, 2), Integer(127).get()));

    const std::string wide = "\x14" + std::string(8, '\0') + std::string(8, '\xFF');
    const Held<CFPropertyListRef> binary
        = Read(Binary({ ArrayOf({ 1, 2 }), wide, "\x13" + std::string(8, '\xFF') }));
    ASSERT_TRUE(binary);
    const auto* pair = static_cast<CFArrayRef>(binary.get());
    EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(pair, 0), Number(18446744073709551615.0).get()));
    EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(pair, 1), Integer(-1).get()));
}

TEST(PropertyListTest, DatesKeepWhatTheirFormatHolds)
{
    for (const double at : { 0.0, -0.75, 86400.123456789, 63113904000.0, -12622780800.5 }) {
        const Held<CFDateRef> date(CFDateCreate(nullptr, at));
        ExpectSurvives(date.get(), kCFPropertyListBinaryFormat_v1_0);
        const Held<CFDateRef> whole(CFDateCreate(nullptr, std::floor(at)));
        const Held<CFDataRef> xml = Written(date.get(), kCFPropertyListXMLFormat_v1_0);
        ASSERT_TRUE(xml);
        const Held<CFPropertyListRef> back = Read(Bytes(xml.get()));
        EXPECT_TRUE(back && CFEqual(back.get(), whole.get())) << Bytes(xml.get());
    }
    for (const double at : { -63114076800.0, 1e18, std::nan("") }) {
        const Held<CFDateRef> date(CFDateCreate(nullptr, at));
        ExpectUnwritable(date.get(), kCFPropertyListXMLFormat_v1_0);
        if (!std::isfinite(at))
            ExpectUnwritable(date.get(), kCFPropertyListBinaryFormat_v1_0);
    }
    ExpectUnreadable(Binary({ "\x33" + std::string(8, '\xFF') }));
}

TEST(PropertyListTest, EqualDictionariesAreWrittenAlike)
{
    const Held<CFMutableDictionaryRef> forward = Dictionary();
    const Held<CFMutableDictionaryRef> backward = Dictionary();
    for (int i = 0; i < 700; ++i) {
        CFDictionarySetValue(forward.get(), Text("key" + std::to_string(i)).get(), Integer(i).get());
        CFDictionarySetValue(
            backward.get(), Text("key" + std::to_string(699 - i)).get(), Integer(699 - i).get());
    }
    for (const CFPropertyListFormat format : kFormats)
        EXPECT_EQ(Bytes(Written(forward.get(), format).get()), Bytes(Written(backward.get(), format).get()));
    const std::string xml = Bytes(Written(forward.get(), kCFPropertyListXMLFormat_v1_0).get());
    EXPECT_LT(xml.find(">key1<"), xml.find(">key2<"));
}

TEST(PropertyListTest, TextThatTheFormatCannotHoldIsRefused)
{
    const UniChar half = 0xD800;
    const Held<CFStringRef> halfPair(CFStringCreateWithCharacters(nullptr, &half, 1));
    const Held<CFStringRef> withNull = Text(std::string_view("a\0b", 3));
    const auto asKey = [](CFStringRef key) {
        Held<CFMutableDictionaryRef> dictionary = Dictionary();
        CFDictionarySetValue(dictionary.get(), key, kCFBooleanTrue);
        return dictionary;
    };
    for (const CFPropertyListFormat format : kFormats) {
        ExpectUnwritable(halfPair.get(), format);
        ExpectUnwritable(withNull.get(), format);
        ExpectUnwritable(asKey(halfPair.get()).get(), format);
        ExpectUnwritable(asKey(withNull.get()).get(), format);
    }
    for (const char* text : { "bell \a", "\x1B[0m", "\uFFFE", "x\uFFFF", "Gr\u00FC\u00DFe\x01" }) {
        ExpectUnwritable(Text(text).get(), kCFPropertyListXMLFormat_v1_0);
        ExpectUnwritable(asKey(Text(text).get()).get(), kCFPropertyListXMLFormat_v1_0);
        ExpectSurvives(Text(text).get(), kCFPropertyListBinaryFormat_v1_0);
    }
}

TEST(PropertyListTest, WhatIsNoPropertyListIsRefused)
{
    const Held<CFMutableArrayRef> array = Array();
    CFArrayAppendValue(array.get(), kCFNull);
    const Held<CFMutableDictionaryRef> dictionary = Dictionary();
    CFDictionarySetValue(dictionary.get(), Integer(1).get(), kCFBooleanTrue);
    for (const CFTypeRef wrong :
        std::initializer_list<CFTypeRef> { kCFNull, array.get(), dictionary.get(), nullptr }) {
        for (const CFPropertyListFormat format : kFormats)
            ExpectUnwritable(wrong, format);
        EXPECT_FALSE(Hold(CFPropertyListCreateDeepCopy(nullptr, wrong, kCFPropertyListImmutable)));
    }
    ExpectUnwritable(kCFBooleanTrue, kCFPropertyListOpenStepFormat);
}

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
    EXPECT_TRUE(Read(NestedBinary(512)));
    for (const int depth : { 513, 60000 }) {
        ExpectUnreadable(NestedXML(depth));
        ExpectUnreadable(NestedBinary(static_cast<size_t>(depth) / 3 + 342));
    }
    ExpectUnreadable("<plist>" + Repeated("<dict><key>k</key>", 200000));
    for (const CFPropertyListFormat format : kFormats) {
        ExpectSurvives(NestedArrays(512).get(), format);
        ExpectUnwritable(NestedArrays(513).get(), format);
    }
    EXPECT_TRUE(Held<CFPropertyListRef>(CFPropertyListCreateDeepCopy(nullptr, NestedArrays(512).get(), 0)));
    EXPECT_FALSE(Hold(CFPropertyListCreateDeepCopy(nullptr, NestedArrays(513).get(), 0)));
}

TEST(PropertyListTest, ContainersThatHoldThemselvesAreRefused)
{
    ExpectUnreadable(Binary({ ArrayOf({ 0 }) }));
    ExpectUnreadable(Binary({ ArrayOf({ 1, 1 }), ArrayOf({ 2 }), ArrayOf({ 0 }) }));
    const Held<CFMutableArrayRef> array = Array();
    CFArrayAppendValue(array.get(), array.get());
    CFArrayAppendValue(array.get(), array.get());
    for (const CFPropertyListFormat format : kFormats)
        ExpectUnwritable(array.get(), format);
    EXPECT_FALSE(Hold(CFPropertyListCreateDeepCopy(nullptr, array.get(), kCFPropertyListImmutable)));
    CFArrayRemoveAllValues(array.get());
}

TEST(PropertyListTest, SharedObjectsOfABinaryListAreBounded)
{
    std::vector<std::string> objects;
    for (size_t i = 1; i <= 40; ++i)
        objects.push_back(ArrayOf({ i, i }));
    objects.push_back(ArrayOf({}));
    ExpectUnreadable(Binary(objects));
    // A little sharing is how writers save space.
    const Held<CFPropertyListRef> shared = Read(Binary({ ArrayOf({ 1, 1, 2 }), ArrayOf({ 2 }), "\x51x" }));
    ASSERT_TRUE(shared);
    EXPECT_EQ(CFArrayGetCount(static_cast<CFArrayRef>(shared.get())), 3);
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

TEST(PropertyListTest, OptionsDecideWhatMayBeChanged)
{
    const std::string xml
        = "<plist><dict><key>list</key><array><string>a</string><data>AAEC</data></array></dict></plist>";
    const Held<CFPropertyListRef> original = Read(xml);
    const auto changeContainers = [](CFPropertyListRef plist) {
        auto* dictionary = static_cast<CFMutableDictionaryRef>(const_cast<void*>(plist));
        auto* list = static_cast<CFMutableArrayRef>(
            const_cast<void*>(CFDictionaryGetValue(dictionary, CFSTR("list"))));
        CFArrayAppendValue(list, kCFBooleanTrue);
        CFDictionarySetValue(dictionary, CFSTR("more"), kCFBooleanTrue);
        return list;
    };
    const auto changeLeaves = [](CFMutableArrayRef list) {
        CFStringAppend(
            static_cast<CFMutableStringRef>(const_cast<void*>(CFArrayGetValueAtIndex(list, 0))), CFSTR("b"));
        CFDataSetLength(static_cast<CFMutableDataRef>(const_cast<void*>(CFArrayGetValueAtIndex(list, 1))), 9);
    };
    for (const CFOptionFlags options :
        { kCFPropertyListMutableContainers, kCFPropertyListMutableContainersAndLeaves }) {
        const Held<CFPropertyListRef> read = Read(xml, options);
        const Held<CFPropertyListRef> copy(CFPropertyListCreateDeepCopy(nullptr, original.get(), options));
        for (const CFPropertyListRef plist : { read.get(), copy.get() }) {
            CFMutableArrayRef list = changeContainers(plist);
            if (options == kCFPropertyListMutableContainersAndLeaves)
                changeLeaves(list);
        }
        EXPECT_TRUE(CFEqual(read.get(), copy.get()));
    }
    EXPECT_TRUE(CFEqual(original.get(), Read(xml).get()));
}

TEST(PropertyListTest, ReferencesOfArchivesBecomeDictionaries)
{
    const Held<CFPropertyListRef> value = Read(Binary({ std::string("\x80\x07") }));
    ASSERT_TRUE(value);
    const void* number = CFDictionaryGetValue(static_cast<CFDictionaryRef>(value.get()), CFSTR("CF$UID"));
    EXPECT_TRUE(number && CFEqual(number, Integer(7).get()));
}
