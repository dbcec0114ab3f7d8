#include "TestHost.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/Properties.h>
#include <IOKit/Recording.h>
#include <gmock/gmock.h>
#include <registry/RegistryText.h>

#include <map>
#include <sstream>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr std::string_view kSmall = R"(+-o Root  <class IORegistryEntry, id 0x100000100, retain 26>
  | {
  |   "OS Build Version" = "20B29"
  | }
  | 
  +-o J313AP  <class IOPlatformExpertDevice, id 0x100000220, registered, matched, active, busy 0 (65012 ms), retain 32>
    | {
    |   "clock" = <00f2052a>
    |   "compatible" = <"J313AP","Mac">
    |   "one" = 1
    |   "two" = (1,2)
    |   "three" = "3"
    | }
    | 
    +-o disk@1,0  <class IOMedia, id 0x100000221, !registered, !matched, inactive, busy 2, retain 7>
    |   {
    |     "Size" = 251000193024
    |     "Ejectable" = No
    |   }
    |   
    +-o a <b> & "c"  <class IOResources, id 0x100000222, registered, matched, active, busy 0 (0 ms), retain 5>
        {
          "Deep" = {"a"=({"b"=<>},0x1f)}
        }
        
)";

iokit::Recording Read(std::string_view text)
{
    std::optional<iokit::Recording> recording = iokit::ReadRecording(text);
    EXPECT_TRUE(recording.has_value());
    return recording ? std::move(*recording) : iokit::Recording { {}, SIZE_MAX };
}

/// The tree as "Root(A B(C))", with "^" at entries met before.
std::string Shape(const iokit::Registry& registry)
{
    std::string shape;
    const auto enter = [&](const iokit::Visit& visit) {
        const bool isFirst = shape.empty() || shape.back() == '(';
        shape += (isFirst ? "" : " ") + visit.entry.fullName() + (visit.isAgain ? "^" : "");
        shape += visit.isAgain || visit.entry.children().empty() ? "" : "(";
        return true;
    };
    iokit::Walk(registry.root(), enter, [&](const iokit::Entry& entry) {
        const bool isOpen = !entry.children().empty() && shape.back() != '^' && shape.back() != '(';
        shape += isOpen ? ")" : "";
    });
    return shape;
}

std::string Printed(const iokit::Registry& registry, size_t width = 0, bool isFull = false)
{
    RegistryView view;
    view.allProperties = true;
    view.width = width;
    view.boldNames = view.inheritance = view.hexadecimal = isFull;
    std::ostringstream text;
    PrintRegistry(text, registry, view);
    return text.str();
}

/// What a property of an only entry reads as, and how many places could not be read.
std::string Value(const std::string& value)
{
    const iokit::Recording recording
        = Read("+-o Root  <class IORegistryEntry, retain 1>\n    {\n      \"k\" = " + value + "\n    }\n");
    return Property(recording.registry.root(), "k") + '|' + std::to_string(recording.unreadable);
}

TEST(RecordingText, HasEntriesWithTheirFactsAndProperties)
{
    const iokit::Recording recording = Read(kSmall);
    EXPECT_EQ(recording.unreadable, 0U);
    EXPECT_EQ(Shape(recording.registry), "Root(J313AP(disk@1,0 a <b> & \"c\"))");
    const iokit::Entry& root = recording.registry.root();
    EXPECT_EQ(Property(root, "OS Build Version"), "\"20B29\"");
    EXPECT_TRUE(root.id == 0x100000100 && root.retainCount == 26 && !root.service);
    const iokit::Entry& disk = *EntriesOf(recording.registry, "IOStorage").at(0);
    EXPECT_TRUE(
        disk.id == 0x100000221 && disk.retainCount == 7 && disk.name == "disk" && disk.location == "1,0");
    EXPECT_TRUE(!disk.service->registered && !disk.service->matched && !disk.service->active);
    EXPECT_EQ(disk.service->busy, 2U);
    EXPECT_EQ(disk.service->busyTime, std::nullopt);
    EXPECT_EQ(disk.parent()->service->busyTime, 65012000000U);
    EXPECT_EQ(Property(*disk.parent(), "compatible"), R"(<"J313AP","Mac">)");
    EXPECT_EQ(disk.parent(iokit::Plane::DeviceTree), nullptr);
    EXPECT_EQ(disk.parent()->parent(iokit::Plane::DeviceTree), &root);
}

TEST(RecordingText, IsPrintedAsItWas)
{
    const iokit::Recording recording = Read(kSmall);
    std::string expected(kSmall);
    expected.replace(expected.find("0x1f)"), 4, "31");
    EXPECT_EQ(Printed(recording.registry), expected);
    const iokit::Recording again = Read(Printed(recording.registry, 0, true));
    EXPECT_EQ(again.unreadable, 0U);
    EXPECT_EQ(Printed(again.registry), expected);
}

TEST(RecordingText, ReadsEachKindOfValue)
{
    for (const char* text : { R"("")", R"("say "hi", {you}")", R"(" padded   ")", "18446744073709551516",
             "Yes", "No", "<>", "<0a0bff>", "<\"en\">", "()", "{}",
             R"({"a"="x","b"={"c"=(1,No)},"d"=<"e","f">})", R"(("it's "quoted", isn't it",<00>))",
             R"({"k"="he said "no"","l"=1})", "{\"a b\"=\"(x)\",\"c,d\"=\"}\"}" })
        EXPECT_EQ(Value(text), std::string(text) + "|0") << text;
    EXPECT_EQ(Value("0xff") + Value("[1,\"a\"]"), "255|0(1,\"a\")|0");
    EXPECT_EQ(Value("\"a\xff\xfe z\xc3\xa4\""), "\"a\xEF\xBF\xBD\xEF\xBF\xBD z\xc3\xa4\"|0");
}

TEST(RecordingText, LeavesOutWhatIsNoValueAndKeepsWhatIsAroundIt)
{
    for (const char* text :
        { "<--->", "12a", "0x", "99999999999999999999", "Maybe", "<0a0>", "\"", "<\"a", "x(1)" })
        EXPECT_EQ(Value(text), "|1") << text;
    EXPECT_EQ(Value(R"({"a"=1,"b"=oops,"c"=3})"), R"({"a"=1,"c"=3}|1)");
    EXPECT_EQ(Value(R"((1,<0g>,"x",--,{"k"=2}))"), R"((1,"x",{"k"=2})|2)");
    EXPECT_EQ(Value(R"({"a"=(1,2))"), R"({"a"=(1,2)}|1)");
    EXPECT_EQ(Value(R"(({"a"=Yes},{"b"=12)"), R"(({"a"=Yes},{})|1)");
}

TEST(RecordingText, TakesNamesAndLocationsApart)
{
    const auto names = [](const std::string& heading) {
        const iokit::Recording recording = Read("+-o " + heading + "  <class IOMedia, retain 1>\n");
        const iokit::Entry& entry = *recording.registry.root().children().at(0);
        return entry.name + '|' + entry.location;
    };
    EXPECT_EQ(names("PCI0@0"), "PCI0|0");
    EXPECT_EQ(names("me@home@1B,0,1"), "me@home|1B,0,1");
    EXPECT_EQ(names("me@home") + names("@1") + names("x@"), "me@home|@1|x@|");
    EXPECT_EQ(names("Odd  <class name@5"), "Odd  <class name|5");
}

TEST(RecordingText, LearnsClassesFromTheirInheritance)
{
    iokit::Recording recording
        = Read("+-o a  <class Disk:AcmeMedia:IOMedia:IOStorage:IOService, id 0x1, registered, matched, "
               "active, busy 0 (0 ms), retain 3>\n"
               "+-o b  <class Disk, id 0x2, registered, matched, active, busy 0, retain 3>\n"
               "+-o c  <class Plain, id 0x3, retain 1>\n"
               "+-o d  <class Unknown, id 0x4, registered, matched, active, busy 0, retain 1>\n");
    EXPECT_EQ(recording.unreadable, 0U);
    EXPECT_EQ(EntriesOf(recording.registry, "IOMedia").size(), 2U);
    EXPECT_EQ(EntriesOf(recording.registry, "IOService").size(), 3U);
    std::string endless = "+-o a  <class A0, id 0x1, retain 1>\n";
    for (int i = 1; i < 20000; ++i)
        endless += "+-o a  <class A" + std::to_string(i) + ":A" + std::to_string(i - 1) + ", id 0x"
            + std::to_string(i + 1) + ", retain 1>\n";
    recording = Read(endless);
    EXPECT_EQ(EntriesOf(recording.registry, "IORegistryEntry").size(), 20001U);
    for (const iokit::Entry& entry : recording.registry.entries()) {
        const iokit::Class* last = entry.objectClass;
        for (int i = 0; last != nullptr && i < 100; ++i)
            last = last->super;
        ASSERT_EQ(last, nullptr) << entry.objectClass->name;
    }
}

TEST(RecordingText, GoesOnInFurtherLinesWhereATextHasThem)
{
    const iokit::Recording recording
        = Read("+-o Root  <class IORegistryEntry, retain 1>\r\n    {\r\n      \"Hardware\" = \"vendorid: "
               "0x14e4\r\n"
               "deviceid: 0x43a0\r\n\r\n{\r\n\"\r\n      \"List\" = (1,\"two\r\nlines\",3)\r\n"
               "      \"Open\" = \"never ends\r\nlost\r\n      \"Last\" = 4\r\n    }\r\n");
    const iokit::Entry& root = recording.registry.root();
    EXPECT_EQ(cf::TextOf(root.property("Hardware")), "vendorid: 0x14e4\ndeviceid: 0x43a0\n\n{\n");
    EXPECT_EQ(
        Property(root, "List") + Property(root, "Open") + Property(root, "Last"), "(1,\"two\nlines\",3)4");
    EXPECT_GT(recording.unreadable, 0U);
}

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

TEST(RecordingText, IsTheSameInWhateverWayItWasKept)
{
    const std::string plain(kSmall);
    const std::string expected = Printed(Read(plain).registry);
    const std::string page = Replaced(
        Replaced(Replaced(Replaced(plain, "&", "&amp;"), "<", "&lt;"), ">", "&#62;"), "\"", "&quot;");
    const std::string bold
        = Replaced(Replaced(Replaced(plain, "+-o ", "+-o \033[1m"), "@1,0  ", "\033(B\033[m@1,0  "), "P  <",
            "P\033[0m  <");
    for (const std::string& kept :
        { "\xEF\xBB\xBF" + plain, Replaced(plain, "\n", "\r\n"), page, "<html><pre>" + page, bold,
            "mac:~ me$ ioreg -l | cat\nIOService:\n" + plain, plain.substr(0, plain.size() - 1) }) {
        const iokit::Recording recording = Read(kept);
        EXPECT_EQ(recording.unreadable, 0U) << kept;
        EXPECT_EQ(Printed(recording.registry), expected) << kept;
    }
}

TEST(RecordingText, OfOldSystemsAndOfSubtreesGetsARootAndNumbers)
{
    const iokit::Recording recording
        = Read("+-o A  <class IOMedia, registered, matched, active, busy 0, retain count 6>\n"
               "| +-o B  <class IOMedia, id 0x100000101, retain count 5>\n"
               "\n+-o C@1  <class Other, retain 4>\n    {\n      \"k\" = 1\n    }\n\n");
    EXPECT_EQ(recording.unreadable, 0U);
    EXPECT_EQ(Shape(recording.registry), "Root(A(B) C@1)");
    std::vector<uint64_t> ids;
    for (const iokit::Entry& entry : recording.registry.entries())
        ids.push_back(entry.id);
    EXPECT_THAT(ids, ElementsAre(0x100000100, 0x100000102, 0x100000101, 0x100000103));
    EXPECT_EQ(recording.registry.entries()[1].retainCount, 6U);
}

TEST(RecordingText, JoinsWhatHasSeveralParents)
{
    const auto entry = [](int level, const std::string& name, int id) {
        return std::string(static_cast<size_t>(level) * 2, ' ') + "+-o " + name + "  <class IOMedia, id 0x"
            + std::to_string(id) + ", retain 1>\n";
    };
    const std::string head = entry(0, "A", 1) + entry(1, "X", 7) + entry(2, "Y", 8);
    const iokit::Recording joined
        = Read(head + entry(0, "B", 2) + entry(1, "X", 7) + entry(2, "Y", 8) + entry(1, "C", 3));
    EXPECT_EQ(Shape(joined.registry), "Root(A(X(Y)) B(X^ C))");
    EXPECT_EQ(joined.unreadable, 0U);
    // Below itself, with another name, or once more below the same parent: some number is wrong.
    const iokit::Recording wrong
        = Read(head + entry(3, "X", 7) + entry(1, "Z", 8) + entry(1, "X", 7) + entry(0, "A", 1));
    EXPECT_EQ(Shape(wrong.registry), "Root(A(X(Y(X)) Z X) A)");
    EXPECT_EQ(wrong.unreadable, 4U);
}

/// All properties by their keys, each of which one entry alone has, in their text form.
std::map<std::string, std::string> PropertiesOf(const iokit::Registry& registry)
{
    std::map<std::string, std::string> all;
    for (const iokit::Entry& entry : registry.entries()) {
        std::vector<const void*> keys(static_cast<size_t>(CFDictionaryGetCount(entry.properties.get())));
        CFDictionaryGetKeysAndValues(entry.properties.get(), keys.data(), nullptr);
        for (const void* key : keys)
            all[cf::TextOf(key)] = Property(entry, cf::TextOf(key).c_str());
    }
    return all;
}

TEST(RecordingText, CutAtAWidthKeepsOnlyWhatIsWhole)
{
    iokit::Recording whole = Read(kSmall);
    whole.registry.root().properties
        = iokit::Properties().text("\xc3\xa4\xc3\xb6", "\xc3\xbc \"long\" one").number("n", 12345).take();
    const auto expected = PropertiesOf(whole.registry);
    const std::string text = Printed(whole.registry);
    for (size_t width = 20; width < 100; ++width) {
        const iokit::Recording cut = Read(Printed(whole.registry, width));
        EXPECT_GT(cut.unreadable, 0U) << width;
        for (const auto& [key, value] : PropertiesOf(cut.registry)) {
            const std::string containers = "({";
            const bool isPart = containers.find(value.front()) != std::string::npos;
            EXPECT_TRUE(expected.contains(key) && (isPart || expected.at(key) == value))
                << width << ' ' << key << value;
        }
    }
    const std::string narrow = "+-o Root\n  +-o ab\n";
    EXPECT_EQ(Read(narrow + "      | \n").unreadable, Read(narrow).unreadable + 1);
    const iokit::Recording cut = Read("+-o Root  <class IORegistryEnt\n    {\n"
                                      "      \"List\" = (\"one\",22,33333\n"
                                      "      \"A long number\" = 123456\n"
                                      "      \"A longer flag \" = Yes\n"
                                      "      \"A text\" = \"is: \"quoted\"\n    }\n");
    EXPECT_EQ(PropertiesOf(cut.registry),
        (std::map<std::string, std::string> { { "List", "(\"one\",22)" }, { "A longer flag ", "Yes" } }));
}

TEST(RecordingText, LosesOnlyWhatIsDamaged)
{
    const auto whole = PropertiesOf(Read(kSmall).registry);
    for (size_t at = kSmall.find('\n'); at < kSmall.size(); ++at) {
        for (const char c : { '"', '\n', ' ', '\xff', '}' }) {
            std::string damaged(kSmall);
            damaged[at] = c;
            const auto left = PropertiesOf(Read(damaged).registry);
            const auto isLost = [&](const auto& one) { return !left.contains(one.first); };
            EXPECT_LE(std::count_if(whole.begin(), whole.end(), isLost), kSmall[at] == '\n' ? 5 : 2)
                << at << ' ' << c;
        }
        const auto start = PropertiesOf(Read(kSmall.substr(0, at)).registry);
        EXPECT_LE(start.size(), whole.size());
    }
    EXPECT_FALSE(iokit::ReadRecording("").has_value());
    EXPECT_FALSE(iokit::ReadRecording("nothing of +-o the kind\n<xml>").has_value());
}

TEST(RecordingText, MayBeNestedWithoutEnd)
{
    const std::string deep(100000, '(');
    const std::string deepPairs = Replaced(deep, "(", "{\"a\"=");
    EXPECT_THAT(Value(deep + std::string(deep.size(), ')')), testing::EndsWith(")|1"));
    EXPECT_THAT(Value(deep), testing::EndsWith(")|2"));
    EXPECT_THAT(Value("(1," + deepPairs), HasSubstr("(1,{\"a\"={\"a\"={"));
    std::string entries;
    for (size_t level = 0; level < 3000; ++level)
        entries += std::string(2 * level, ' ') + "+-o a  <class IOMedia, retain 1>\n";
    EXPECT_EQ(Read(entries).registry.entries().size(), 3001U);
}
}
