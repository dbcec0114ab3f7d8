#include "TestHost.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/Recording.h>
#include <gmock/gmock.h>
#include <registry/RegistryArchive.h>
#include <registry/RegistryText.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

#include "tests/support/TemporaryFolder.h"

// Recordings of real Macs, which lie beside the project where there are any. The numbers were counted without this program.

namespace {

struct Capture {
    const char* name;
    size_t entries;
    size_t links; ///< to further parents
    long properties;
    size_t depth;
    size_t unreadable;
    size_t sets; ///< which are printed as arrays
};

void PrintTo(const Capture& capture, std::ostream* out) { *out << capture.name; }

class RecordingCaptures : public testing::TestWithParam<Capture> {
protected:
    void SetUp() override
    {
        const std::string file = std::string(CAPTURES) + '/' + GetParam().name + ".ioreg.txt";
        if (!std::filesystem::exists(file))
            GTEST_SKIP() << "there is no " << file;
        fText = ReadText(file);
        fRecording = iokit::ReadRecording(fText);
        ASSERT_TRUE(fRecording.has_value());
    }

    std::string fText;
    std::optional<iokit::Recording> fRecording;
};

std::set<std::string> LinesOf(const std::string& text)
{
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.insert(line.substr(std::min(line.find_first_not_of(" |"), line.size())));
    return lines;
}

std::string Printed(const iokit::Registry& registry, bool isArchive, bool isFull = false)
{
    RegistryView view;
    view.allProperties = true;
    view.inheritance = view.hexadecimal = view.boldNames = isFull;
    std::ostringstream text;
    if (isArchive)
        EXPECT_TRUE(PrintRegistryArchive(text, registry, view));
    else
        PrintRegistry(text, registry, view);
    return text.str();
}

TEST_P(RecordingCaptures, AreReadWhole)
{
    const iokit::Registry& registry = fRecording->registry;
    size_t level = 0;
    size_t depth = 0;
    size_t links = 0;
    const auto enter = [&](const iokit::Visit& visit) {
        depth = std::max(depth, level++);
        links += visit.isAgain ? 1 : 0;
        return true;
    };
    iokit::Walk(registry.root(), enter, [&](const iokit::Entry&) { --level; });
    long properties = 0;
    for (const iokit::Entry& entry : registry.entries())
        properties += CFDictionaryGetCount(entry.properties.get());
    EXPECT_EQ(registry.entries().size(), GetParam().entries);
    EXPECT_EQ(links, GetParam().links);
    EXPECT_EQ(properties, GetParam().properties);
    EXPECT_EQ(depth, GetParam().depth);
    EXPECT_EQ(fRecording->unreadable, GetParam().unreadable);
}

/// Media lie on storage, and drivers of block storage on its devices: so has each class of a real Mac's to derive.
TEST_P(RecordingCaptures, HaveStorageOfTheRightClasses)
{
    for (const iokit::Entry& entry : fRecording->registry.entries()) {
        const bool isMedia = entry.property("Whole") != nullptr && entry.property("BSD Name") != nullptr;
        EXPECT_EQ(entry.conformsTo("IOMedia"), isMedia) << entry.objectClass->name;
        if (isMedia) {
            EXPECT_TRUE(entry.parent()->conformsTo("IOStorage")) << entry.parent()->objectClass->name;
        }
        if (entry.conformsTo("IOBlockStorageDriver")) {
            EXPECT_TRUE(entry.parent()->conformsTo("IOBlockStorageDevice"))
                << entry.parent()->objectClass->name;
        }
    }
}

TEST_P(RecordingCaptures, ArePrintedAsTheyWere)
{
    const std::set<std::string> given = LinesOf(fText);
    const std::set<std::string> printed = LinesOf(Printed(fRecording->registry, false));
    const auto isOther = [&](const std::string& line) {
        const bool isData = line.find("\" = <") != std::string::npos; // has two forms
        return !isData && !given.contains(line);
    };
    EXPECT_EQ(static_cast<size_t>(std::count_if(printed.begin(), printed.end(), isOther)), GetParam().sets);
}

TEST_P(RecordingCaptures, AreTheSameInEachForm)
{
    const std::string archive = Printed(fRecording->registry, true);
    for (const bool isArchive : { false, true }) {
        const std::optional<iokit::Recording> again
            = iokit::ReadRecording(Printed(fRecording->registry, isArchive, true));
        ASSERT_TRUE(again.has_value());
        EXPECT_EQ(again->unreadable, 0U);
        EXPECT_TRUE(Printed(again->registry, true) == archive) << isArchive;
    }
}

INSTANTIATE_TEST_SUITE_P(All, RecordingCaptures,
    testing::Values(Capture { "imac-corestorage-sata-sd", 514, 12, 4576, 20, 0, 0 },
        Capture { "macbookair-apfs", 1537, 9, 17116, 21, 8, 1 },
        Capture { "macbookpro-pci-usb-image", 657, 3, 4725, 20, 0, 0 }));

}
