#include "MacTool.h"

#include "tests/support/HostFolder.h"
#include "tests/support/RegistryTest.h"
#include "tests/support/TestVolume.h"

#include <IOKit/NvramFile.h>
#include <boot/Bless.h>
#include <boot/StartEntries.h>
#include <gmock/gmock.h>

#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

constexpr const char* kSystemPartition = "0B6F1C5E-5D0C-4F29-9D1A-3C1D1A0F7A11";
const std::string kSystemPartitionBytes = "\x5e\x1c\x6f\x0b\x0c\x5d\x29\x4f\x9d\x1a\x3c\x1d\x1a\x0f\x7a\x11"s;
const std::string kOtherPartitionBytes(16, '\x22');
constexpr const char* kOrderFile = "/sys/firmware/efi/efivars/BootOrder-8be4df61-93ca-11d2-aa0d-00e098032b8c";

/// An entry of the firmware's menu for a program on a partition.
std::string Entry(char attributes, const std::string& partition)
{
    const std::string path = "\x01\x01\x06\0\0\0"s + "\x04\x01\x2a\0"s + std::string(20, '\1') + partition
        + "\2\2"s + "\x04\x04\x08\0a\0\0\0"s + "\x7f\xff\x04\0"s;
    return attributes + "\0\0\0"s + static_cast<char>(path.size()) + "\0d\0\0\0"s + path + "more";
}

/// A computer with a disk of two partitions, the first for its firmware, the second with the start-up volume of the test.
class BlessTest : public RegistryTest {
protected:
    BlessTest()
    {
        addDisk(host);
        use(host);
    }

    void addDisk(HostFolder& computer) const
    {
        struct stat info = {};
        stat(volume.root().c_str(), &info);
        computer.disk("pci0000:00/ata5", "sdb", { { "dev", "250:0" }, { "size", "90" } },
            { { "ID_PART_TABLE_TYPE", "gpt" } });
        computer.partition(1, { { "dev", "250:1" }, { "size", "20" } },
            { { "ID_PART_ENTRY_TYPE", "c12a7328-f81f-11d2-ba4b-00a0c93ec93b" },
                { "ID_PART_ENTRY_UUID", kSystemPartition } });
        computer.partition(2,
            { { "dev", std::to_string(major(info.st_dev)) + ':' + std::to_string(minor(info.st_dev)) },
                { "size", "60" } },
            { { "ID_PART_ENTRY_UUID", "5d7f6a10-93a5-4a57-8a3b-2f6a9c0de001" } });
    }

    static void use(const HostFolder& computer)
    {
        iokit::UseSource(std::make_unique<iokit::HostSource>(computer.tree()));
    }

    /// @return what it writes and, after that, its complaint.
    std::string run(const Arguments& arguments, const iokit::EfiVariables* firmware = nullptr)
    {
        std::ostringstream out;
        testing::internal::CaptureStderr();
        const int status = BlessAt({ nvram, firmware }, arguments, out);
        const std::string error = testing::internal::GetCapturedStderr();
        EXPECT_EQ(status == 0, error.empty()) << error;
        return out.str() + error;
    }
    std::string chosen() { return run({ "-info", "-getBoot" }); }
    std::string remembered() const
    {
        iokit::NvramVariables variables;
        nvram.read(variables);
        return variables["efi-boot-device"];
    }

    const TestVolume volume;
    HostFolder host;
    iokit::NvramFile nvram { volume.root() / "private/var/db/nvram.plist" };
};

TEST_F(BlessTest, TellsTheChosenDiskWhateverItIsCalledByThen)
{
    EXPECT_EQ(chosen(), "/dev/disk0s2\n") << "nothing is chosen: where the start-up volume lies";
    EXPECT_EQ(run({ "-device", "/dev/disk0s1", "-setBoot" }), "");
    EXPECT_THAT(run({ "--info", "--getBoot", "--plist" }),
        HasSubstr("<key>Boot Volume</key>\n\t<string>/dev/disk0s1</string>"));
    nvram.set("efi-boot-device", remembered() + '\0'); // as firmware keeps texts
    HostFolder later;
    later.disk("pci0000:00/ata1", "sda", { { "dev", "251:0" }, { "size", "90" } },
        { { "ID_PART_TABLE_TYPE", "dos" } });
    later.partition(1, { { "dev", "251:1" }, { "size", "30" } });
    addDisk(later);
    use(later);
    EXPECT_EQ(chosen(), "/dev/disk1s1\n");
    EXPECT_EQ(run({ "-device", "/dev/disk0s1", "-setBoot" }), "");
    EXPECT_EQ(chosen(), "/dev/disk0s1\n") << "which has no UUID";
    use(host);
    EXPECT_EQ(chosen(), "bless: the disk that was chosen is not there\n") << "another one has the name";
    nvram.set("efi-boot-device", "<array><dict></dict></array>");
    EXPECT_EQ(chosen(), "bless: efi-boot-device tells of no disk\n");
    use(HostFolder());
    nvram.clear();
    EXPECT_THAT(chosen(), HasSubstr("the start-up volume lies on none that is known"));
}

TEST_F(BlessTest, ChoosesTheDiskWithAFolderAndRemembersBoth)
{
    nvram.set("efi-boot-device", "<array><dict></dict></array>");
    EXPECT_EQ(run({ "-folder", "/System/Library/CoreServices", "-setBoot" }), "");
    EXPECT_EQ(chosen(), "/dev/disk0s2\n");
    EXPECT_THAT(remembered(), HasSubstr("<string>5D7F6A10-93A5-4A57-8A3B-2F6A9C0DE001</string>"));
    EXPECT_THAT(remembered(), HasSubstr("\\volume\\System\\Library\\CoreServices</string></dict></array>"));
    std::filesystem::create_directory(volume.root() / "Users/a<&b");
    EXPECT_EQ(run({ "-folder", "/Users/a<&b", "-setBoot" }), "");
    EXPECT_EQ(chosen(), "/dev/disk0s2\n");
}

TEST_F(BlessTest, RefusesWhatCannotBeStartedFrom)
{
    for (const std::string& name : { "/dev/disk0s9"s, "/dev/"s, "disk0s1"s, "/dev/disk0s1/"s,
             "/dev//disk0s1"s, "/dev/disk0s1 "s, "/dev/../dev/disk0s1"s, "/dev/" + std::string(40, 'd') })
        EXPECT_EQ(run({ "-device", name, "-setBoot" }), "bless: " + name + ": there is no such disk\n");
    EXPECT_THAT(run({ "-folder", "/System/None", "-setBoot" }), HasSubstr("No such file or directory"));
    const std::string file = "/System/Library/CoreServices/SystemVersion.plist";
    EXPECT_EQ(run({ "-folder", file, "-setBoot" }), "bless: " + file + ": Not a directory\n");
    EXPECT_THAT(run({ "-folder", "/proc", "-setBoot" }), HasSubstr("it lies on no disk that is known"));
    std::filesystem::create_directory(volume.root() / "Users/a\\b");
    EXPECT_THAT(run({ "-folder", "/Users/a\\b", "-setBoot" }), HasSubstr("such a name cannot be kept"));
    for (const Arguments& wrong : { Arguments {}, { "-info" }, { "-setBoot" }, { "-device", "/dev/disk0s1" },
             { "-device" }, { "-device", "/dev/disk0s1", "-folder", "/", "-setBoot" },
             { "-info", "-getBoot", "-setBoot" }, { "info", "-getBoot" }, { "-mount", "/", "-setBoot" } })
        EXPECT_THAT(run(wrong), testing::StartsWith("usage: bless "));
    EXPECT_EQ(remembered(), "");
    const ToolRun tool = RunMacTool("/usr/sbin/bless", { "-device", "/dev/disk99999", "-setBoot" });
    EXPECT_EQ(tool.status, 1);
    EXPECT_EQ(tool.error, "bless: /dev/disk99999: there is no such disk\n");
}

TEST_F(BlessTest, PutsTheFirmwaresEntryForTheDiskFirst)
{
    const iokit::EfiVariables firmware(host.tree(), iokit::EfiVariables::kGlobal);
    const auto put = [this](const std::string& name, const std::string& value) {
        host.add("sys/firmware/efi/efivars/",
            { { name + "-8be4df61-93ca-11d2-aa0d-00e098032b8c", "\7\0\0\0"s + value } });
    };
    const Arguments choose { "-device", "/dev/disk0s2", "-setBoot" };
    const std::string none = "bless: the firmware has no entry to start from /dev/disk0s2\n";
    EXPECT_EQ(run(choose, &firmware), none) << "no order";
    put("Boot0000", Entry(1, kOtherPartitionBytes));
    put("Boot001A", Entry(0, kSystemPartitionBytes)); // switched off
    put("Boot0003", Entry(1, kSystemPartitionBytes).substr(0, 40));
    put("BootOrder", "\x00\x00\x1a\x00\x03\x00\x04\x00"s);
    EXPECT_EQ(run(choose, &firmware), none);
    EXPECT_EQ(ReadText(host.root() + kOrderFile), "\7\0\0\0\x00\x00\x1a\x00\x03\x00\x04\x00"s);
    EXPECT_EQ(remembered(), "");

    put("Boot0004", Entry(1, kSystemPartitionBytes));
    EXPECT_EQ(run({ "-device", "/dev/disk0", "-setBoot" }, &firmware), "");
    EXPECT_EQ(ReadText(host.root() + kOrderFile), "\7\0\0\0\x04\x00\x00\x00\x1a\x00\x03\x00"s);
    EXPECT_EQ(run({ "-info", "-getBoot" }, &firmware), "/dev/disk0\n");
    put("BootOrder", "\x00\x00\x04\x00"s);
    EXPECT_EQ(run({ "-info", "-getBoot" }, &firmware), "/dev/disk0s2\n") << "the firmware starts another";
    put("BootOrder", "\x00\x00\x04"s);
    EXPECT_EQ(run(choose, &firmware),
        "bless: the firmware's order cannot be changed: the variables' file is damaged\n");
}

TEST(StartEntries, LeadToAPartitionWhereTheyTellOne)
{
    const std::string whole = Entry(1, kSystemPartitionBytes);
    EXPECT_EQ(StartEntryIn(whole)->partition, kSystemPartition);
    EXPECT_FALSE(StartEntryIn(Entry(0, kSystemPartitionBytes))->isActive);
    EXPECT_EQ(StartEntryIn("\1\0\0\0\0\0\0\0"s)->partition, "");
    std::string numbered = whole;
    numbered[whole.find(kSystemPartitionBytes) + 17] = '\1'; // an MBR's number
    EXPECT_EQ(StartEntryIn(numbered)->partition, "");
    std::string looping = whole;
    looping[whole.find("\x01\x01\x06"s) + 2] = '\0'; // a node of no size
    EXPECT_EQ(StartEntryIn(looping)->partition, "");
    for (size_t size = 0; size < whole.size() - 4; ++size)
        EXPECT_FALSE(StartEntryIn(whole.substr(0, size))) << size;
}

}
