// The tools on the real kernel's disks: loop devices, which only the superuser can make.

#include "MacTool.h"

#include "tests/support/TemporaryFolder.h"

#include <IOKit/CurrentRegistry.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

/// An image with two partitions on a loop device of its own, which goes at the end. Mounts are this process's alone.
class VolumeDeviceTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (geteuid() != 0 || unshare(CLONE_NEWNS) != 0
            || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            GTEST_SKIP() << "needs the superuser";
        WriteText(image, "");
        fs::resize_file(image, 40 << 20);
        ASSERT_EQ(run("/sbin/parted",
                      { "-s", image, "mklabel", "gpt", "mkpart", "a", "1MiB", "20MiB", "mkpart", "b", "20MiB",
                          "39MiB" }),
            0);
        const std::string found
            = RunMacTool("/sbin/losetup", { "--find", "--show", "--partscan", image }).out;
        device = found.substr(0, found.find('\n'));
        if (device.empty())
            GTEST_SKIP() << "needs loop devices";
        RunMacTool("/usr/bin/partx", { "-a", device }); // for kernels that do not look for tables themselves
    }

    ~VolumeDeviceTest() override
    {
        if (device.empty())
            return;
        umount2(mountPoint.c_str(), 0);
        RunMacTool("/usr/bin/partx", { "-d", device });
        EXPECT_EQ(run("/sbin/losetup", { "-d", device }), 0);
    }

    static int run(const std::string& tool, const std::vector<std::string>& arguments)
    {
        const ToolRun done = RunMacTool(tool, arguments);
        EXPECT_EQ(done.error, "") << tool;
        return done.status;
    }
    /// @param part "p1"; "" for the whole. @return its BSD name.
    std::string bsdName(const std::string& part) const
    {
        const auto registry = iokit::CurrentRegistry();
        for (const iokit::Entry& entry : registry->entries()) {
            if (!entry.bsdName().empty() && registry->deviceFile(entry.bsdName()) == device + part)
                return entry.bsdName();
        }
        return {};
    }
    std::string value(const std::string& part, const std::string& tag) const
    {
        std::string text = RunMacTool("/sbin/blkid", { "-p", "-o", "value", "-s", tag, device + part }).out;
        return text.substr(0, text.find('\n'));
    }

    TemporaryFolder folder;
    const std::string image = folder / "image";
    const std::string mountPoint = folder / "mount";
    std::string device {};
};

TEST_F(VolumeDeviceTest, FileSystemsAreMadeOnDisksUnderTheirBSDNames)
{
    EXPECT_EQ(run("/sbin/newfs_msdos", { "-v", "First", "/dev/r" + bsdName("p1") }), 0);
    EXPECT_EQ(run("/sbin/newfs_exfat", { "-v", "Second", bsdName("p2") }), 0);
    EXPECT_EQ(value("p1", "TYPE") + ' ' + value("p1", "LABEL"), "vfat FIRST");
    EXPECT_EQ(value("p2", "TYPE") + ' ' + value("p2", "LABEL"), "exfat Second");
    EXPECT_NE(RunMacTool("/sbin/newfs_msdos", { bsdName("") }).status, 0) << "it has partitions";
    EXPECT_EQ(value("", "PTTYPE"), "gpt");
    EXPECT_THAT(RunMacTool("/sbin/newfs_exfat", { image }).error, HasSubstr("attached as loop"));
    EXPECT_THAT(RunMacTool("/usr/sbin/diskutil", { "apfs", "addvolume", bsdName("p1"), "apfs", "N" }).error,
        HasSubstr("nothing on this host can add a volume"));
}

TEST_F(VolumeDeviceTest, WhatIsMountedIsLeftAlone)
{
    ASSERT_EQ(run("/sbin/mke2fs", { "-q", "-F", "-O", "^has_journal", device + "p2" }), 0);
    fs::create_directory(mountPoint);
    ASSERT_EQ(mount((device + "p2").c_str(), mountPoint.c_str(), "ext4", 0, nullptr), 0);
    for (const std::string& name : { bsdName(""), bsdName("p2") })
        for (const std::string tool : { "/sbin/newfs_msdos", "/sbin/newfs_exfat", "/sbin/newfs_apfs" })
            EXPECT_THAT(RunMacTool(tool, { name }).error, HasSubstr("in use: mounted on " + mountPoint))
                << tool;
    const std::string hfsUtil = "/System/Library/Filesystems/hfs.fs/Contents/Resources/hfs.util";
    EXPECT_EQ(RunMacTool(hfsUtil, { "-s", bsdName("p2") }).status, 250);
    EXPECT_EQ(value("p2", "TYPE"), "ext2");

    EXPECT_EQ(run("/usr/sbin/diskutil", { "enableJournal", mountPoint }), 0);
    const ToolRun off = RunMacTool("/usr/sbin/diskutil", { "disableJournal", bsdName("p2") });
    EXPECT_EQ(off.status, 1);
    EXPECT_THAT(off.error, HasSubstr("unmounted or mounted read-only"));
    EXPECT_EQ(run("/usr/bin/mdutil", { "-i", "off", mountPoint }), 0);
    EXPECT_TRUE(fs::exists(mountPoint + "/.trackerignore"));
}

TEST_F(VolumeDeviceTest, WhatSomebodyHoldsUnseenIsLeftAlone)
{
    const Descriptor held(open((device + "p1").c_str(), O_RDWR | O_EXCL | O_CLOEXEC));
    ASSERT_TRUE(held);
    for (const std::string tool : { "/sbin/newfs_msdos", "/sbin/newfs_exfat", "/sbin/newfs_apfs" })
        EXPECT_THAT(RunMacTool(tool, { bsdName("p1") }).error, HasSubstr("Device or resource busy")) << tool;
    EXPECT_EQ(value("p1", "TYPE"), "");
}

}
