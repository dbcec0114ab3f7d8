#include "AwkwardRegistry.h"
#include "TestHost.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/Properties.h>
#include <IOKit/Recording.h>
#include <gmock/gmock.h>
#include <registry/RegistryText.h>
#include <registry/ValueText.h>

#include <sstream>

using testing::EndsWith;
using testing::StartsWith;

namespace {

std::string Text(const iokit::Registry& registry, const RegistryView& view)
{
    std::ostringstream text;
    PrintRegistry(text, registry, view);
    return text.str();
}

/// The names of the entries shown, each with a "*" when its properties are, and a line feed after each tree.
std::string Shown(const iokit::Registry& registry, RegistryView view)
{
    std::istringstream lines(Text(registry, view));
    std::string shown;
    for (std::string line; std::getline(lines, line);) {
        const size_t name = line.find("+-o ");
        if (name != std::string::npos)
            shown += line.substr(name + 4, line.find("  <") - name - 4) + ' ';
        else if (line.ends_with('{'))
            shown.back() = '*';
        shown += line.empty() ? "\n" : "";
    }
    return shown;
}

std::string Value(CFTypeRef value, bool hexadecimal = false)
{
    std::string text;
    AppendValue(text, cf::Owned<CFTypeRef>(value).get(), hexadecimal);
    return text;
}

CFDataRef Bytes(std::string_view bytes)
{
    return CFDataCreate(
        nullptr, reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size()));
}

CFNumberRef Number(int64_t number) { return CFNumberCreate(nullptr, kCFNumberSInt64Type, &number); }

TEST(RegistryText, WritesEachKindOfValueInItsForm)
{
    EXPECT_EQ(Value(cf::MakeString("a \"b\" \xc3\xa4")), "\"a \"b\" \xc3\xa4\"");
    EXPECT_EQ(Value(Number(255)) + ' ' + Value(Number(255), true), "255 0xff");
    EXPECT_EQ(Value(Number(-100)), "18446744073709551516");
    EXPECT_EQ(Value(Bytes({ "pci8086,1\0PCI0\0", 15 })), R"(<"pci8086,1","PCI0">)");
    EXPECT_EQ(Value(Bytes("en:0")) + Value(Bytes({ "a\",\"b\0", 6 })), "<656e3a30><61222c226200>")
        << "text that would be read otherwise";
    EXPECT_EQ(Value(Bytes({ "t8\0\0", 4 })) + Value(Bytes("7")) + Value(Bytes("a\xff")) + Value(Bytes("")),
        "<74380000><37><61ff><>");
    const cf::Owned<CFNumberRef> one(Number(1));
    const void* items[] = { kCFBooleanTrue, one.get() };
    EXPECT_EQ(Value(CFArrayCreate(nullptr, items, 2, &kCFTypeArrayCallBacks), true), "(Yes,0x1)");
    EXPECT_EQ(Value(CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks)), "()");
    EXPECT_EQ(
        Value(iokit::Properties().flag("k", false).number("n", 2).take().release()), R"({"k"=No,"n"=2})");
}

TEST(RegistryText, CutsEachLineAtTheWidthInCharacters)
{
    iokit::Registry registry;
    registry.add(registry.root(), "IOService", "\xc3\xa4\xc3\xb6\xc3\xbc", "", nullptr);
    RegistryView view;
    view.width = 8;
    EXPECT_EQ(Text(registry, view), "+-o Root\n  +-o \xc3\xa4\xc3\xb6\n");
    view.boldNames = true;
    EXPECT_EQ(Text(registry, view), "+-o \033[1mRoot\033[0m\n  +-o \033[1m\xc3\xa4\xc3\xb6\033[0m\n");
}

TEST(RegistryText, TellsStateAndInheritance)
{
    iokit::Registry registry;
    iokit::Entry& entry = registry.add(registry.root(), "IODVDMedia", "Disc", "", nullptr);
    entry.service = { true, false, false, 3, 1999999 };
    RegistryView view;
    view.inheritance = true;
    EXPECT_THAT(Text(registry, view),
        EndsWith("  +-o Disc  <class IODVDMedia:IOMedia:IOStorage:IOService:IORegistryEntry:OSObject, "
                 "id 0x100000101, registered, !matched, inactive, busy 3 (1 ms), retain 2>\n"));
    entry.service->busyTime.reset();
    EXPECT_THAT(Text(registry, view), EndsWith(", busy 3, retain 2>\n"));
}

TEST(RegistryText, ShowsPropertiesAndSubtreesOfWhatIsWanted)
{
    TestHost host;
    const iokit::Registry registry = host.usbStick().nvmeDisk().registry();
    RegistryView view;
    view.className = "IOBlockStorageDevice";
    view.depth = 4;
    EXPECT_EQ(Shown(registry, view),
        "Root IOPlatformExpertDevice IONVMeController IONVMeBlockStorageDevice@1*"
        "IOSCSILogicalUnitNub@0 IOBlockStorageServices*options ");
    view.key = "IOUnit";
    EXPECT_EQ(Shown(registry, view),
        "Root IOPlatformExpertDevice IONVMeController IONVMeBlockStorageDevice@1 "
        "IOSCSILogicalUnitNub@0 IOBlockStorageServices options ");

    RegistryView subtrees;
    subtrees.onlySubtrees = true;
    subtrees.className = "IOMedia";
    subtrees.depth = 2;
    EXPECT_EQ(Shown(registry, subtrees),
        "Gannet M.2 1TB Media*IOPartitionScheme \n"
        "Heron Pocket Media*IOFDiskPartitionScheme \n");
    subtrees.name = "Untitled 1@1";
    EXPECT_EQ(Shown(registry, subtrees), "Untitled 1@1*\n");
    subtrees.name = "Untitled 1";
    EXPECT_EQ(Shown(registry, subtrees), "Untitled 1@1*\n");
    subtrees.name = "Untitled";
    EXPECT_EQ(Shown(registry, subtrees), "");
}

TEST(RegistryText, IsReadAgainAsItWas)
{
    const iokit::Registry registry = AwkwardRegistry();
    RegistryView view;
    view.allProperties = true;
    const auto read = iokit::ReadRecording(Text(registry, view));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->unreadable, 0U);
    EXPECT_EQ(Differences(registry, read->registry), "");
}

TEST(RegistryText, ShowsEachPlane)
{
    TestHost host;
    const iokit::Registry registry = host.sataDisk().registry();
    RegistryView view;
    view.plane = iokit::Plane::DeviceTree;
    const std::string tree = Shown(registry, view);
    EXPECT_THAT(tree, StartsWith("Root IOPlatformExpertDevice "));
    EXPECT_EQ(tree.find("Driver"), std::string::npos) << tree;
    view.onlySubtrees = true;
    view.className = "IOMedia";
    EXPECT_EQ(Shown(registry, view), "");
}

TEST(RegistryText, PrintsATreeHoweverDeep)
{
    constexpr size_t depth = 10000;
    iokit::Registry registry;
    iokit::Entry* entry = &registry.root();
    for (size_t i = 0; i < depth; ++i)
        entry = &registry.add(*entry, "IOService", "Deep", "", nullptr);
    RegistryView view;
    view.allProperties = true;
    view.width = 20;
    const std::string text = Text(registry, view);
    EXPECT_THAT(text, StartsWith("+-o Root  <class IOR\n"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4 * static_cast<long>(depth) + 5);
}

}
