#include "TestHost.h"

#include <CoreFoundation/CFString.h>
#include <IOKit/CurrentRegistry.h>
#include <IOKit/Properties.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

HostFolder::Texts Numbered(const char* sequence, const char* size = "10")
{
    return { { "diskseq", sequence }, { "size", size } };
}

TEST(HostMedia, HaveTheKernelsNumbersAndTheHostsFiles)
{
    TestHost host;
    HostFolder::Texts second = Numbered("9");
    second["uevent"] = "DEVNAME=cciss/c0d1";
    host.disk("pci0000:00/ata1/1", "sda", Numbered("12"))
        .partition(2, { { "size", "2" } })
        .disk("pci0000:00/ata2/2", "cciss!c0d0", Numbered("3"))
        .disk("pci0000:00/ata3/3", "cciss!c0d1", second);
    const iokit::Registry registry = host.registry();
    EXPECT_EQ(registry.deviceFile("disk11") + ' ' + registry.deviceFile("disk11s2"), "/dev/sda /dev/sda2");
    EXPECT_EQ(
        registry.deviceFile("disk2") + ' ' + registry.deviceFile("disk8"), "/dev/cciss/c0d0 /dev/cciss/c0d1");
    EXPECT_EQ(registry.deviceFile("disk0"), "");

    // One that is just going has lost its number. It must not take another's name, nor move those of others.
    host.disk("pci0000:00/ata0/0", "sdb", { { "size", "10" } });
    const iokit::Registry later = host.registry();
    EXPECT_EQ(EntriesOf(later, "IOMedia").size(), EntriesOf(registry, "IOMedia").size());
    EXPECT_EQ(later.deviceFile("disk11"), "/dev/sda");
}

TEST(HostMedia, OfWhatIsPutTogetherLieBelowAllTheirParts)
{
    TestHost host;
    host.disk("pci0000:00/usb1/1-1/host0/target0:0:0/0:0:0:0", "sda", Numbered("1"))
        .partition(1, { { "size", "4" }, { "holders/md0/x", "" } })
        .disk("pci0000:00/usb1/1-2/host1/target1:0:0/1:0:0:0", "sdb", Numbered("2"))
        .disk("virtual", "dm-0",
            { { "diskseq", "5" }, { "size", "6" }, { "dm/name", "group-home" }, { "slaves/md0p1/x", "" },
                { "stat", "1 0 2 3 4 0 5 6" } })
        .disk("virtual", "md0",
            { { "diskseq", "6" }, { "size", "8" }, { "slaves/sda1/x", "" }, { "slaves/sdb/x", "" } })
        .partition(1, { { "size", "6" }, { "holders/dm-0/x", "" } });
    const iokit::Registry registry = host.registry();
    const iokit::Entry& raid = MediaNamed(registry, "disk5");
    ASSERT_EQ(raid.parent()->services.parents.size(), 2U);
    EXPECT_EQ(raid.parent()->name + raid.parent()->objectClass->name, "Software RAIDIOStorage");
    EXPECT_EQ(raid.parent()->services.parents[1], &MediaNamed(registry, "disk1"));
    const iokit::Entry& volume = MediaNamed(registry, "disk4");
    EXPECT_EQ(
        volume.name + Property(volume, "Size") + Property(volume, "Whole") + Property(volume, "Ejectable"),
        "group-home3072YesYes");
    EXPECT_EQ(volume.parent()->parent(), &MediaNamed(registry, "disk5s1"));
    EXPECT_THAT(Searched(volume, "Protocol Characteristics"), testing::HasSubstr("USB"));
    EXPECT_THAT(Searched(volume, "Statistics"), testing::HasSubstr("\"Bytes (Read)\"=1024"));
    EXPECT_EQ(Property(MediaNamed(registry, "disk0s1"), "Leaf") + Property(volume, "Leaf"), "NoYes");
    EXPECT_EQ(registry.deviceFile("disk4"), "/dev/dm-0");
}

TEST(HostMedia, OfMissingPartsAndCirclesAreThereAllTheSame)
{
    TestHost host;
    host.disk("virtual", "dm-0", { { "size", "6" }, { "slaves/sdz/x", "" } })
        .disk("virtual", "dm-1", { { "size", "6" }, { "slaves/dm-2/x", "" } })
        .disk("virtual", "dm-2", { { "size", "6" }, { "slaves/dm-1/x", "" } })
        .disk("virtual", "dm-3", { { "size", "6" } })
        .disk("virtual", "dm-4", { { "size", "0" } });
    const iokit::Registry registry = host.registry();
    EXPECT_EQ(EntriesOf(registry, "IOMedia").size(), 4U);
    EXPECT_EQ(WayTo(MediaNamed(registry, "disk3")), "Device Mapper > dm-3");
    EXPECT_EQ(WayTo(MediaNamed(registry, "disk2")), "Device Mapper > dm-1 > Device Mapper > dm-2");
}

TEST(HostMedia, InMemoryAreRamDisksAndTheKernelsOwnAreNotShown)
{
    TestHost host;
    host.disk("virtual", "zram1", { { "size", "2048" }, { "queue/rotational", "0" } })
        .disk("virtual", "zram0", { { "size", "0" } })
        .disk("virtual", "ram0", { { "size", "8192" } })
        .disk("virtual", "nbd0", { { "size", "16" } });
    const iokit::Registry registry = host.registry();
    ASSERT_EQ(EntriesOf(registry, "IOMedia").size(), 2U);
    EXPECT_EQ(Searched(MediaNamed(registry, "disk1"), "Protocol Characteristics"),
        R"({"Physical Interconnect"="Virtual Interface","Physical Interconnect Location"="RAM","Virtual Interface Location Path"=<"ram://2048">})");
    EXPECT_EQ(Searched(MediaNamed(registry, "disk1"), "Device Characteristics"), "");
    EXPECT_EQ(WayTo(MediaNamed(registry, "disk0")), "IOBlockStorageDevice > IOBlockStorageDriver > Media");
}

TEST(HostMedia, AreCountedAnewAtEachQuestionUntilTheyGo)
{
    TestHost host;
    const auto bytesRead = [](const iokit::Entry& driver) {
        const cf::Owned<CFTypeRef> value = driver.currentProperty(CFSTR("Statistics"));
        return iokit::NumberOf(
            CFDictionaryGetValue(static_cast<CFDictionaryRef>(value.get()), CFSTR("Bytes (Read)")));
    };
    host.disk("pci0000:00/ata1/1", "sda", { { "size", "8" }, { "stat", "1 0 2 3" } });
    const std::string statistics = host.root() + "/sys/devices/pci0000:00/ata1/1/block/sda/stat";
    const iokit::Registry registry = host.registry();
    const iokit::Entry& driver = *EntriesOf(registry, "IOBlockStorageDriver").at(0);
    EXPECT_EQ(bytesRead(driver), 1024U);
    WriteText(statistics, "2 0 5 3\n");
    EXPECT_EQ(bytesRead(driver), 2560U);
    fs::remove(statistics);
    EXPECT_EQ(bytesRead(driver), 1024U);
}

TEST(HostSource, HasAnotherVersionWhenTheKernelOrUdevHasNews)
{
    TestHost host;
    host.add("sys/kernel/", { { "uevent_seqnum", "700\n" } }).add("run/udev/data/", { { "b8:0", "" } });
    iokit::HostSource source(host.tree());
    const std::string first = source.version();
    EXPECT_EQ(source.version(), first);
    WriteText(host.root() + "/sys/kernel/uevent_seqnum", "701\n");
    const std::string second = source.version();
    EXPECT_NE(second, first);
    fs::last_write_time(
        host.root() + "/run/udev/data", fs::file_time_type::clock::now() + std::chrono::nanoseconds(7));
    EXPECT_NE(source.version(), second);
    EXPECT_EQ(EntriesOf(*source.read(), "IODTNVRAM").size(), 1U);
}

/// A disk whose table only the disk itself tells: an image file in the place of its device.
class TableTest : public testing::Test {
protected:
    static constexpr uint64_t kSectors = 16384;

    std::string image() const { return host.root() + "/dev/sda"; }

    /// @param script for sfdisk, which gives the partitions that the kernel has found, too.
    void makeTable(const std::string& script)
    {
        WriteText(image(), "");
        fs::resize_file(image(), kSectors * 512);
        WriteText(host.root() + "/script", script);
        ASSERT_EQ(std::system(("/sbin/sfdisk -q " + image() + " <" + host.root() + "/script").c_str()), 0);
    }

    iokit::Registry registryWith(std::initializer_list<std::pair<unsigned, const char*>> partitions)
    {
        host.disk("pci0000:00/ata1/1", "sda", { { "size", std::to_string(kSectors) } });
        for (const auto& [number, start] : partitions)
            host.partition(number, { { "start", start }, { "size", "64" } });
        return host.registry();
    }

    static std::string contents(const iokit::Registry& registry)
    {
        std::string text;
        for (const iokit::Entry* media : EntriesOf(registry, "IOMedia"))
            text += media->name + '=' + Property(*media, "Content") + ' ';
        return text;
    }

    TestHost host;
};

TEST_F(TableTest, OfGuidsIsReadFromTheDiskWhereUdevKnowsNothing)
{
    makeTable("label: gpt\nlabel-id: 11111111-2222-3333-4444-ABCDEF000001\n"
              "start=2048, size=64, type=48465300-0000-11aa-aa11-00306543ecac, name=\"M\xc3\xbcsli\", "
              "uuid=aaaaaaaa-bbbb-cccc-dddd-eeeeeeee0001\nstart=4096, size=64, type=U\n");
    const iokit::Registry registry = registryWith({ { 1, "2048" }, { 2, "5000" } });
    EXPECT_EQ(contents(registry),
        "Media=\"GUID_partition_scheme\" M\xc3\xbcsli=\"48465300-0000-11AA-AA11-00306543ECAC\" Untitled "
        "2=\"\" ")
        << "the second begins elsewhere than the table says";
    EXPECT_EQ(Property(MediaNamed(registry, "disk0s1"), "UUID"), R"("AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEE0001")");
    EXPECT_EQ(Property(*EntriesOf(registry, "IOGUIDPartitionScheme").at(0), "UUID"),
        R"("11111111-2222-3333-4444-ABCDEF000001")");
}

TEST_F(TableTest, OfNumbersIsReadFromTheDiskWithoutItsFrame)
{
    makeTable("label: dos\nstart=2048, size=64, type=c\nstart=4096, size=8192, type=5\nstart=6144, size=64, "
              "type=83\n");
    EXPECT_EQ(contents(registryWith({ { 1, "2048" }, { 2, "4096" }, { 5, "6144" } })),
        "Media=\"FDisk_partition_scheme\" Untitled 1=\"Windows_FAT_32\" Untitled 5=\"Linux\" ");
}

TEST_F(TableTest, OfApplesOwnIsReadFromTheDisk)
{
    // A block with the size of blocks, then one for each partition: count, start, size, name and type.
    std::string disk = std::string("ER\x02\0\0\0\x40\0", 8) + std::string(504, '\0');
    const auto add = [&disk](const std::string& place, const std::string& name, const std::string& type) {
        std::string block = std::string("PM\0\0\0\0\0\2", 8) + place + name;
        block.resize(48);
        block += type;
        block.resize(512);
        disk += block;
    };
    add(std::string("\0\0\0\1\0\0\0\x3f", 8), "Apple", "Apple_partition_map");
    add(std::string("\0\0\0\x40\0\0\x10\0", 8), "Tools", "Apple_HFS");
    disk.resize(kSectors * 512);
    WriteText(image(), disk);
    EXPECT_EQ(contents(registryWith({ { 1, "1" }, { 2, "64" } })),
        "Media=\"Apple_partition_scheme\" Apple=\"Apple_partition_map\" Tools=\"Apple_HFS\" ");
}

TEST_F(TableTest, IsNotReadFromAFileThatIsNotTheDisk)
{
    makeTable("label: gpt\nstart=2048, size=64\n");
    fs::resize_file(image(), kSectors * 512 + 512);
    EXPECT_EQ(contents(registryWith({})), "Media=\"\" ");
}

TEST_F(TableTest, OfGarbageIsNone)
{
    makeTable("label: gpt\nstart=2048, size=64\n");
    std::string bytes = ReadText(image());
    for (size_t i = 512; i < bytes.size(); i += 3)
        bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(i >> 4U | 1U));
    WriteText(image(), bytes);
    EXPECT_EQ(contents(registryWith({ { 1, "2048" } })).find("GUID"), std::string::npos);
}

}
