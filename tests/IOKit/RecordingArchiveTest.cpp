#include "TestHost.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/Properties.h>
#include <IOKit/Recording.h>
#include <gmock/gmock.h>
#include <registry/RegistryArchive.h>

#include <sstream>

#include "tests/support/TemporaryFolder.h"

using testing::HasSubstr;

namespace {

std::string Document(const std::string& content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST "
           "1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n"
        + content + "</plist>\n";
}

std::string EntryXML(const std::string& name, const std::string& more)
{
    return "<dict><key>IOObjectClass</key><string>IOMedia</string><key>IORegistryEntryName</key><string>"
        + name + "</string>" + more + "</dict>\n";
}

iokit::Recording Read(const std::string& text)
{
    std::optional<iokit::Recording> recording = iokit::ReadRecording(text);
    EXPECT_TRUE(recording.has_value()) << text;
    return recording ? std::move(*recording) : iokit::Recording { {}, SIZE_MAX };
}

std::string Archive(const iokit::Registry& registry)
{
    RegistryView view;
    view.allProperties = true;
    std::ostringstream text;
    EXPECT_TRUE(PrintRegistryArchive(text, registry, view));
    return text.str();
}

std::string Value(const std::string& element)
{
    const iokit::Recording recording = Read(Document(EntryXML("a", "<key>k</key>" + element)));
    return Property(*recording.registry.root().children().at(0), "k") + '|'
        + std::to_string(recording.unreadable);
}

iokit::Registry Sample()
{
    iokit::Registry registry;
    iokit::Entry& computer = registry.add(registry.root(), "IOPlatformExpertDevice", "Computer", "", nullptr);
    iokit::Properties nested;
    nested.number("IORegistryEntryChildren", 0xfffffffffffffff0)
        .plainText("empty", "")
        .textData("data", "x<&>");
    iokit::Entry& disk = registry.add(computer, "IOMedia", "d\xc3\xafsk", "1,0",
        iokit::Properties()
            .text("BSD Name", "disk0")
            .flag("Whole", true)
            .dictionary("nested", nested)
            .take());
    disk.service = { false, true, false, 3, 12345678 };
    disk.retainCount = 77;
    disk.id = 0xffffffff00000001;
    registry.add(disk, "Unknown", "last", "", nullptr).service.reset();
    return registry;
}

TEST(RecordingArchive, IsReadAsItWasWritten)
{
    const std::string text = Archive(Sample());
    const iokit::Recording recording = Read(text);
    EXPECT_EQ(recording.unreadable, 0U);
    EXPECT_EQ(Archive(recording.registry), text);
    const iokit::Entry& disk = *EntriesOf(recording.registry, "IOMedia").at(0);
    EXPECT_EQ(CFDictionaryGetCount(disk.properties.get()), 3);
    EXPECT_TRUE(!disk.service->registered && disk.service->matched && !disk.service->active);
    EXPECT_EQ(disk.service->busyTime, 12345678U);
    EXPECT_EQ(disk.fullName() + disk.parent()->name, "d\xc3\xafsk@1,0Computer");
    EXPECT_FALSE(disk.children().at(0)->service);
}

TEST(RecordingArchive, ReadsEachKindOfValue)
{
    EXPECT_EQ(Value("<integer> 18446744073709551615 </integer>"), "18446744073709551615|0");
    EXPECT_EQ(
        Value("<integer>-2</integer>") + Value("<integer>0x1f</integer>"), "18446744073709551614|031|0");
    EXPECT_EQ(Value("<data>\n\tAAEC\n\tA/8=\n\t</data>") + Value("<data>/w==</data>") + Value("<data/>"),
        "<00010203ff>|0<ff>|0<>|0");
    EXPECT_EQ(Value("<string>a &lt;&#98;&gt;\n</string>") + Value("<string/>"), "\"a <b>\n\"|0\"\"|0");
    EXPECT_EQ(
        Value("<array><true/><dict><key>x</key><false/></dict><array/></array>"), R"((Yes,{"x"=No},())|0)");
    for (const char* wrong : { "<integer>1x</integer>", "<data>A</data>", "<data>#</data>",
             "<date>2020</date>", "<x/>", "<integer/>" })
        EXPECT_EQ(Value(wrong), "|1") << wrong;
    EXPECT_EQ(
        Value("<array><integer>1</integer><x/><dict><true/><key>k</key><key>l</key><true/></dict></array>"),
        R"((1,{"l"=Yes})|2)");
}

TEST(RecordingArchive, OfSubtreesGetsARoot)
{
    const iokit::Recording recording = Read("$ ioreg -a -r\n"
        + Document("<array>"
            + EntryXML("a", "<key>IORegistryEntryChildren</key><array>" + EntryXML("b", "") + "</array>")
            + EntryXML("c", "<key>IORegistryEntryID</key><string>no number</string>") + "</array>"));
    EXPECT_EQ(recording.unreadable, 1U);
    const std::vector<const iokit::Entry*>& tops = recording.registry.root().children();
    ASSERT_EQ(tops.size(), 2U);
    EXPECT_EQ(tops[0]->children().at(0)->name + tops[1]->name, "bc");
    EXPECT_FALSE(
        iokit::ReadRecording(Document("<dict><key>Label</key><string>job</string></dict>")).has_value());
    EXPECT_FALSE(iokit::ReadRecording(Document("<array/>")).has_value());
}

TEST(RecordingArchive, CutAnywhereKeepsWhatCameBefore)
{
    const std::string text = Archive(Sample());
    size_t entries = 0;
    for (size_t size = text.find("IOObjectRetainCount"); size < text.size() - 9; ++size) {
        const iokit::Recording cut = Read(text.substr(0, size));
        EXPECT_EQ(cut.unreadable > 0, true) << size;
        EXPECT_GE(cut.registry.entries().size(), entries) << size;
        entries = cut.registry.entries().size();
        if (size <= text.find("BSD Name") + 40)
            continue;
        EXPECT_EQ(Property(cut.registry.entries().at(2), "BSD Name"), "\"disk0\"") << size;
    }
    EXPECT_EQ(entries, 4U);
}

TEST(RecordingArchive, TakesCharactersThatXMLForbids)
{
    EXPECT_EQ(Value("<string>a\x01z\xff &#0;&#x1f;&#xD800;&#99999999999;</string>"),
        "\"a\xEF\xBF\xBDz\xEF\xBF\xBD \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\"|0");
    EXPECT_EQ(Value("<string>a&nothing;b</string>"), "\"ab\"|1");
    const std::string bomb = "<!DOCTYPE plist [<!ENTITY a \"" + std::string(1000, 'a')
        + "\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]>\n<plist>" + EntryXML("&b;", "") + "</plist>";
    EXPECT_FALSE(iokit::ReadRecording(bomb).has_value());
}

TEST(RecordingArchive, MayBeNestedWithoutEnd)
{
    constexpr size_t depth = 100000;
    std::string entries;
    std::string values;
    for (size_t level = 0; level < depth; ++level) {
        entries
            += "<dict><key>IOObjectClass</key><string>A</string><key>IORegistryEntryChildren</key><array>";
        values += "<array>";
    }
    EXPECT_EQ(Read("<plist>" + entries).registry.entries().size(), depth + 1);
    EXPECT_THAT(Value(values), HasSubstr("(((("));
}

TEST(RecordingFile, TellsWhatIsWrong)
{
    const TemporaryFolder folder;
    std::string problem;
    WriteText(folder / "good", "+-o Root  <class IORegistryEntry, retain 1>\n");
    EXPECT_TRUE(iokit::ReadRecordingFile(folder / "good", problem).has_value());
    EXPECT_EQ(problem, "");
    WriteText(folder / "other", "hello\n");
    EXPECT_FALSE(iokit::ReadRecordingFile(folder / "other", problem).has_value());
    EXPECT_EQ(problem, "there is no registry in it");
    EXPECT_FALSE(iokit::ReadRecordingFile(folder / "missing", problem).has_value());
    EXPECT_EQ(problem, "No such file or directory");
    EXPECT_FALSE(iokit::ReadRecordingFile(folder.path(), problem).has_value());
    EXPECT_EQ(problem, "Is a directory");
    std::filesystem::resize_file(folder / "other", (size_t { 256 } << 20U) + 1);
    EXPECT_FALSE(iokit::ReadRecordingFile(folder / "other", problem).has_value());
    EXPECT_EQ(problem, "File too large");
}

}
