#include "AwkwardRegistry.h"
#include "TestHost.h"

#include "tests/support/Python.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/Properties.h>
#include <IOKit/Recording.h>
#include <gmock/gmock.h>
#include <registry/RegistryArchive.h>

#include <sstream>

namespace {

std::string Archive(const iokit::Registry& registry, const RegistryView& view)
{
    std::ostringstream text;
    EXPECT_TRUE(PrintRegistryArchive(text, registry, view));
    return text.str();
}

cf::Owned<CFPropertyListRef> Read(const std::string& xml)
{
    const cf::Owned<CFDataRef> data(
        CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(xml.data()), static_cast<CFIndex>(xml.size())));
    return cf::Owned<CFPropertyListRef>(
        CFPropertyListCreateWithData(nullptr, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
}

std::string TextAt(CFDictionaryRef dictionary, CFStringRef key)
{
    return cf::TextOf(CFDictionaryGetValue(dictionary, key));
}

CFDictionaryRef FirstChild(CFTypeRef dictionary)
{
    const void* const children
        = CFDictionaryGetValue(static_cast<CFDictionaryRef>(dictionary), CFSTR("IORegistryEntryChildren"));
    return static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(children), 0));
}

TEST(RegistryArchive, HoldsEachEntryWithItsPropertiesAndChildren)
{
    TestHost host;
    const iokit::Registry registry = host.sataDisk().registry();
    RegistryView view;
    view.allProperties = true;
    const std::string xml = Archive(registry, view);
    const cf::Owned<CFPropertyListRef> root = Read(xml);
    ASSERT_TRUE(root);
    CFDictionaryRef scheme = FirstChild(root.get());
    for (int level = 0; level < 6; ++level)
        scheme = FirstChild(scheme);
    EXPECT_EQ(TextAt(scheme, CFSTR("IOObjectClass")), "IOGUIDPartitionScheme");
    EXPECT_EQ(iokit::NumberOf(CFDictionaryGetValue(scheme, CFSTR("IOServiceState"))), 0U);
    const CFDictionaryRef partition = FirstChild(scheme);
    EXPECT_EQ(TextAt(partition, CFSTR("BSD Name")), "disk0s1");
    EXPECT_EQ(TextAt(partition, CFSTR("IORegistryEntryName")), "EFI System Partition");
    EXPECT_EQ(TextAt(partition, CFSTR("IORegistryEntryLocation")), "1");
    EXPECT_FALSE(CFDictionaryContainsKey(partition, CFSTR("IORegistryEntryChildren")));

    EXPECT_EQ(PythonOfPropertyList(xml,
                  "for level in range(6): p = p['IORegistryEntryChildren'][0]\n"
                  "print(p['IOServiceState'], p['IORegistryEntryID'], p['Size'])"),
        "30 4294967558 500107862016\n");
}

TEST(RegistryArchive, ListsSubtreesAndOnlyWantedProperties)
{
    TestHost host;
    const iokit::Registry registry = host.usbStick().nvmeDisk().registry();
    RegistryView view;
    view.onlySubtrees = true;
    view.className = "IOMedia";
    view.depth = 2;
    EXPECT_EQ(PythonOfPropertyList(Archive(registry, view),
                  "for e in p:\n  for c in e['IORegistryEntryChildren']:\n"
                  "    print('BSD Name' in e, 'Content Mask' in c, 'IORegistryEntryChildren' in c)"),
        "True False False\nTrue False False\n");
    view.className = "IOFireWireDevice";
    EXPECT_EQ(Archive(registry, view), "");
}

TEST(RegistryArchive, LeavesOutWhatXmlCannotHoldAndNothingElse)
{
    iokit::Registry registry;
    iokit::Entry& entry
        = registry.add(registry.root(), "IOService", "</array>\n\t<key>IORegistryEntryChildren</key>\n", "",
            iokit::Properties()
                .text("bell", "\a")
                .text("fine", "<&>\n\t</dict>")
                .dictionary("Above", iokit::Properties().text("IORegistryEntryChildren", "kept"))
                .take());
    registry.add(entry, "IOService", "bad \xff name", "", nullptr);
    RegistryView view;
    view.allProperties = true;
    const cf::Owned<CFPropertyListRef> root = Read(Archive(registry, view));
    ASSERT_TRUE(root);
    const CFDictionaryRef child = FirstChild(root.get());
    EXPECT_FALSE(CFDictionaryContainsKey(child, CFSTR("bell")));
    EXPECT_EQ(TextAt(child, CFSTR("fine")), "<&>\n\t</dict>");
    EXPECT_TRUE(CFEqual(CFDictionaryGetValue(child, CFSTR("Above")), entry.property("Above")));
    EXPECT_EQ(TextAt(child, CFSTR("IORegistryEntryName")), entry.name);
    EXPECT_FALSE(CFDictionaryContainsKey(FirstChild(child), CFSTR("IORegistryEntryName")));
}

TEST(RegistryArchive, IsReadAgainAsItWas)
{
    const iokit::Registry registry = AwkwardRegistry();
    RegistryView view;
    view.allProperties = true;
    const auto read = iokit::ReadRecording(Archive(registry, view));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->unreadable, 0U);
    EXPECT_EQ(Differences(registry, read->registry), "");
}

TEST(RegistryArchive, IsWholeHoweverDeepTheTree)
{
    constexpr size_t depth = 10000;
    iokit::Registry registry;
    iokit::Entry* entry = &registry.root();
    for (size_t i = 0; i < depth; ++i)
        entry = &registry.add(*entry, "IOService", "Deep", "", nullptr);
    EXPECT_EQ(PythonOfPropertyList(Archive(registry, {}),
                  "n = 0\nwhile 'IORegistryEntryChildren' in p: p = p['IORegistryEntryChildren'][0]; n += "
                  "1\nprint(n)"),
        std::to_string(depth) + '\n');
}

}
