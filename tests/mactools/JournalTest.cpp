#include "MacTool.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

ToolRun Diskutil(const std::vector<std::string>& arguments)
{
    return RunMacTool("/usr/sbin/diskutil", arguments);
}

TEST(Journal, IsGivenToAnExtVolumeAndTakenAway)
{
    const TemporaryFolder folder;
    const std::string image = folder / "image";
    WriteText(image, "");
    fs::resize_file(image, 20 << 20);
    ASSERT_EQ(RunMacTool("/sbin/mke2fs", { "-q", "-L", "Data", "-O", "^has_journal", image }).status, 0);
    const auto features = [&image] { return RunMacTool("/sbin/dumpe2fs", { "-h", image }).out; };

    // All of the answer is one sentence: who reads a part of it only closes the pipe then.
    EXPECT_EQ(Diskutil({ "enableJournal", image }).out,
        "Journaling has been enabled for volume Data on " + image + '\n');
    EXPECT_THAT(features(), HasSubstr("has_journal"));
    EXPECT_EQ(Diskutil({ "enablejournal", image }).out,
        "Journaling is already enabled for volume Data on " + image + '\n');
    const ToolRun off = Diskutil({ "disableJournal", image });
    EXPECT_EQ(off.out, "Journaling has been disabled for volume Data on " + image + '\n');
    EXPECT_EQ(off.status, 0);
    EXPECT_THAT(features(), testing::Not(HasSubstr("has_journal")));
}

TEST(Journal, OfOtherFileSystemsIsRefusedByTheirNames)
{
    const TemporaryFolder folder;
    const std::string image = folder / "image";
    WriteText(image, "");
    fs::resize_file(image, 8 << 20);
    const auto error = [](const std::string& target) {
        const ToolRun run = Diskutil({ "enableJournal", target });
        EXPECT_EQ(run.status, 1) << target;
        EXPECT_EQ(run.out, "") << target;
        return run.error;
    };
    EXPECT_THAT(error(image), HasSubstr("journals of unknown volumes"));
    ASSERT_EQ(RunMacTool("/sbin/newfs_msdos", { image }).status, 0);
    EXPECT_THAT(error(image), HasSubstr("journals of vfat volumes"));
    EXPECT_THAT(error("/proc"), HasSubstr("journals of proc volumes"));
    EXPECT_THAT(error(folder.path()), HasSubstr("no volume is mounted there"));
    EXPECT_THAT(error("disk99999"), HasSubstr("No such file"));
    EXPECT_EQ(Diskutil({ "enableJournal" }).status, 1);
}

TEST(AddVolume, IsRefusedWithoutAWordOfThePassphrase)
{
    const std::vector<std::vector<std::string>> commands {
        { "apfs", "addvolume", "disk99999", "apfs", "Name", "-passphrase", "secret", "-passphraseHint",
            "secret" },
        { "apfs", "addvolume", "disk99999", "other", "Name", "-passphrase", "secret" },
        { "apfs", "addvolume", "disk99999" },
        { "apfs", "deleteVolume", "disk99999", "apfs", "Name" },
        { "apfs" },
    };
    for (const std::vector<std::string>& command : commands) {
        const ToolRun run = Diskutil(command);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.error, "");
        EXPECT_THAT(run.error, testing::Not(HasSubstr("secret")));
    }
    EXPECT_EQ(Diskutil(commands.front()).error, "Could not find disk: disk99999\n");
}

}
