// The real kernel's disks: loop devices with partition tables, which only the superuser can make.

#include "TestHost.h"

#include "util/ReadTest.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

std::string OutputOf(const std::string& command)
{
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 4096> piece {};
    for (size_t count = 1; pipe != nullptr && count > 0;) {
        count = fread(piece.data(), 1, piece.size(), pipe);
        output.append(piece.data(), count);
    }
    const bool worked = pipe != nullptr && pclose(pipe) == 0;
    return worked ? CleanLine(output) : "";
}

/// An image file on a loop device of its own; both go at the end.
class LoopDeviceTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (geteuid() != 0 || OutputOf("losetup --find").empty())
            GTEST_SKIP() << "needs the superuser and loop devices";
    }

    ~LoopDeviceTest() override { detach(); }

    /// Only once: from then on the device may be somebody else's.
    void detach()
    {
        if (!device.empty()) {
            EXPECT_EQ(std::system(("partx -d " + device + " 2>/dev/null; losetup -d " + device).c_str()), 0);
        }
        device.clear();
    }

    /// @param command makes the table in the file $image. Kernels without support for tables learn of the partitions from
    /// partx. @return whether the device is there.
    bool attach(const std::string& command, const std::string& size = "16M")
    {
        const std::string image = folder / "image";
        if (OutputOf(
                "image=" + image + "; truncate -s " + size + " $image && " + command + " >&2 && echo done")
            != "done")
            return false;
        device = OutputOf("losetup --partscan --find --show " + image);
        return !device.empty() && std::system(("partx -a " + device + " 2>/dev/null; true").c_str()) == 0;
    }

    /// The whole disk's BSD name.
    std::string bsdName() const
    {
        const iokit::Registry registry = iokit::ReadHostRegistry();
        std::string found;
        for (const iokit::Entry* one : EntriesOf(registry, "IOMedia")) {
            if (registry.deviceFile(cf::TextOf(one->property("BSD Name"))) == device)
                found = cf::TextOf(one->property("BSD Name"));
        }
        return found;
    }

    /// The disk's media: name, size, content and file of each.
    std::string media() const
    {
        const iokit::Registry registry = iokit::ReadHostRegistry();
        std::string text;
        for (const iokit::Entry* one : EntriesOf(registry, "IOMedia")) {
            const std::string bsdName = cf::TextOf(one->property("BSD Name"));
            const std::string file = registry.deviceFile(bsdName);
            if (file != device && !file.starts_with(device + 'p'))
                continue;
            EXPECT_EQ(
                Property(*one, "Size"), OutputOf("lsblk --nodeps --noheadings --bytes -o SIZE " + file));
            text += file.substr(device.size()) + ' ' + one->name + ' ' + Property(*one, "Content") + '\n';
        }
        return text;
    }

    TemporaryFolder folder;
    std::string device {};
};

TEST_F(LoopDeviceTest, WithGuidsIsShownWithItsPartitions)
{
    ASSERT_TRUE(attach(
        "printf 'label: gpt\\nsize=2MiB, type=U, name=Start\\nsize=4MiB, type=L\\n' | sfdisk -q $image"));
    EXPECT_EQ(media(),
        " Media \"GUID_partition_scheme\"\n"
        "p1 Start \"C12A7328-F81F-11D2-BA4B-00A0C93EC93B\"\n"
        "p2 Untitled 2 \"0FC63DAF-8483-4772-8E79-3D69D8477DE4\"\n");
}

TEST_F(LoopDeviceTest, WithNumbersIsShownWithoutTheFrame)
{
    ASSERT_TRUE(attach(
        "printf 'label: dos\\nsize=2MiB, type=c\\ntype=5\\nsize=1MiB, type=83\\n' | sfdisk -q $image"));
    EXPECT_EQ(media(),
        " Media \"FDisk_partition_scheme\"\n"
        "p1 Untitled 1 \"Windows_FAT_32\"\n"
        "p5 Untitled 5 \"Linux\"\n");
}

TEST_F(LoopDeviceTest, WithApplesTableIsShownWithTheTablesOwnPartition)
{
    ASSERT_TRUE(
        attach("parted -s $image mklabel mac mkpart primary hfs+ 1MiB 4MiB name 2 Tools 2>/dev/null"));
    const std::string text = media();
    EXPECT_TRUE(text.starts_with(" Media \"Apple_partition_scheme\"\np1 Apple \"Apple_partition_map\"\n"))
        << text;
    EXPECT_NE(text.find("p2 Tools \"Apple_HFS\"\n"), std::string::npos) << text;
}

TEST_F(LoopDeviceTest, HasANameThatNothingElseGetsAgain)
{
    ASSERT_TRUE(attach("true"));
    const std::string first = bsdName();
    EXPECT_NE(first, "");
    EXPECT_EQ(bsdName(), first);
    detach();
    ASSERT_TRUE(attach("true"));
    EXPECT_NE(bsdName(), "");
    EXPECT_NE(bsdName(), first);
}

TEST_F(LoopDeviceTest, IsReadLikeADriveAndIsFastIfItIsLargeEnough)
{
    ASSERT_TRUE(attach("true", "1G"));
    const std::string large = bsdName();
    bool isFast = false;
    for (int i = 0; i < 20 && !isFast; ++i) // the machine may have other things to do
        isFast = PerformReadTestForSSD_Media(large.c_str(), 0);
    EXPECT_TRUE(isFast);
    detach();
    EXPECT_FALSE(PerformReadTestForSSD_Media(large.c_str(), 0)) << "it has gone";
    ASSERT_TRUE(attach("true", "512M"));
    EXPECT_FALSE(PerformReadTestForSSD_Media(bsdName().c_str(), 0));
}

}
