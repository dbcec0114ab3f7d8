#include "MacTool.h"

#include "tests/support/HostFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sysexits.h>
#include <volume/TargetDevice.h>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

class NewfsTest : public testing::Test {
protected:
    NewfsTest() { resize(200); }

    /// Makes the image anew. @param size in MiB.
    void resize(uint64_t size) const
    {
        WriteText(image, "");
        fs::resize_file(image, size << 20U);
    }
    /// Runs a newfs with the image as the last argument.
    ToolRun make(const std::string& tool, std::vector<std::string> arguments) const
    {
        arguments.push_back(image);
        return RunMacTool("/sbin/" + tool, arguments);
    }
    std::string value(const std::string& tag) const
    {
        std::string text = RunMacTool("/sbin/blkid", { "-p", "-o", "value", "-s", tag, image }).out;
        return text.substr(0, text.find('\n'));
    }
    int check(const std::string& tool, std::vector<std::string> arguments) const
    {
        arguments.push_back(image);
        return RunMacTool("/sbin/" + tool, arguments).status;
    }

    const HostFolder host; ///< with nobody who uses anything
    const std::string image = fs::path(host.root()) / "an image";
};

TEST_F(NewfsTest, MsdosMakesTheFATThatIsAskedForWithANameInCapitals)
{
    EXPECT_EQ(make("newfs_msdos", { "-F", "32", "-v", "my disk-1" }).status, 0);
    EXPECT_EQ(value("VERSION") + ' ' + value("LABEL"), "FAT32 MY DISK-1");
    EXPECT_EQ(check("fsck.vfat", { "-n" }), 0);
    resize(8);
    EXPECT_EQ(make("newfs_msdos", { "-F12" }).status, 0);
    EXPECT_EQ(value("VERSION") + ' ' + value("LABEL"), "FAT12 ");
    EXPECT_NE(make("newfs_msdos", { "-F", "16" }).status, 0) << "too small: the host's tool has the say";
}

TEST_F(NewfsTest, ExfatAndApfsKeepTheNameAsItIs)
{
    EXPECT_EQ(make("newfs_exfat", { "-v", "-Ünï日本語" }).status, 0);
    EXPECT_EQ(value("TYPE") + ' ' + value("LABEL"), "exfat -Ünï日本語");
    EXPECT_EQ(check("fsck.exfat", { "-n" }), 0);
    const ToolRun container = make("newfs_apfs", { "-C", "-v", "Nämé 'x' $(y)" });
    EXPECT_EQ(container.status, 0) << container.error;
    EXPECT_EQ(value("TYPE"), "apfs");
    EXPECT_EQ(RunMacTool("/bin/grep", { "-aqF", "Nämé 'x' $(y)", image }).status, 0);
    EXPECT_EQ(check("apfsck", {}), 0);
}

TEST_F(NewfsTest, HfsNeedsAToolOfTheHosts)
{
    const ToolRun run = make("newfs_hfs", { "-J", "-v", "Name" });
    if (fs::exists("/sbin/mkfs.hfsplus"))
        EXPECT_EQ(value("LABEL"), "Name");
    else
        EXPECT_THAT(run.error, HasSubstr("newfs_hfs: mkfs.hfsplus, which does this here, is missing"));
    EXPECT_EQ(run.status, fs::exists("/sbin/mkfs.hfsplus") ? 0 : 1);
}

TEST_F(NewfsTest, NothingIsWrittenUnderANameThatTheFileSystemCannotHave)
{
    for (const char* const name : { "twelve chars", "a/b", " x", "Ä", "tab\t", "\xff" })
        EXPECT_THAT(make("newfs_msdos", { "-v", name }).error, HasSubstr("cannot have the name")) << name;
    for (const char* const name : { "twelve chars", "\xff", "line\n" })
        EXPECT_EQ(make("newfs_exfat", { "-v", name }).status, 1) << name;
    for (const std::string& name : { std::string("\xff"), std::string(256, 'x') })
        EXPECT_EQ(make("newfs_apfs", { "-v", name }).status, 1) << name;
    for (const std::vector<std::string>& wrong :
        { std::vector<std::string> { "-F", "64" }, { "-I" }, { "-F", "32", image }, { "-v" } })
        EXPECT_EQ(make("newfs_msdos", wrong).status, EX_USAGE);
    EXPECT_EQ(fs::file_size(image), 200U << 20U);
    EXPECT_EQ(value("TYPE"), "");
}

TEST_F(NewfsTest, WhatNamesNoDiskIsRefused)
{
    const auto error = [](const std::string& device) {
        const ToolRun run = RunMacTool("/sbin/newfs_exfat", { "--", device });
        EXPECT_EQ(run.status, 1) << device;
        EXPECT_EQ(run.out, "") << device;
        return run.error;
    };
    for (const char* const name : { "", "disk", "disk1s", "disk1 s1", "disk1x", "image", "-f", "--help",
             "-/x", "disk1234567890123456789012345678901234567" })
        EXPECT_THAT(error(name), HasSubstr("not the name of a disk"));
    for (const std::string name : { "disk99999", "/dev/rdisk99999s1", "/nowhere/image" })
        EXPECT_EQ(error(name), "newfs_exfat: " + name + ": No such file or directory\n");
    for (const std::string name : { "/tmp", "/dev/null" })
        EXPECT_EQ(error(name), "newfs_exfat: " + name + ": neither a disk nor an image of one\n");
}

TEST_F(NewfsTest, AnImageThatSomebodyUsesIsRefused)
{
    const std::optional<TargetDevice> target = FindTarget("test", image);
    ASSERT_TRUE(target);
    std::string inTable = target->path;
    inTable.replace(inTable.find(' '), 1, "\\040");
    const auto refusal = [&](const std::string& file, const std::string& text) {
        HostFolder user;
        user.add("", { { file, text } });
        testing::internal::CaptureStderr();
        const bool isOpen = static_cast<bool>(OpenUnused("test", "it", *target, user.tree()));
        return std::to_string(isOpen) + testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(refusal("proc/self/mountinfo", "21 1 0:42 / /mnt/a rw - fuse.x " + inTable + " rw\n"),
        "0test: it is in use: mounted on /mnt/a\n");
    EXPECT_EQ(refusal("proc/swaps", "Filename Type\n" + inTable + "\tfile\t1\t0\t-2\n"),
        "0test: it is in use: swap space\n");
    EXPECT_EQ(refusal("sys/block/loop3/loop/backing_file", target->path + '\n'),
        "0test: it is in use: attached as loop3\n");
    EXPECT_EQ(refusal("proc/swaps", "Filename Type\n/tmp\tfile\t1\t0\t-2\n"), "1");
}

}
