#include "MacTool.h"

#include "tests/support/TestVolume.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sysexits.h>
#include <volume/VolumeDatabase.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kTool = "/usr/sbin/vsdbutil";

class VsdbutilTest : public testing::Test {
protected:
    static ToolRun run(const std::string& option, const std::string& path = "/Volumes")
    {
        return RunMacTool(kTool, { option, path });
    }

    const TestVolume volume;
    const fs::path database = volume.root() / "private/var/db/volinfo.database";
};

TEST_F(VsdbutilTest, PermissionsAreRememberedForTheVolume)
{
    EXPECT_EQ(run("-c").status, 1);
    EXPECT_EQ(run("-c").error, "vsdbutil: no entry found for '/Volumes'.\n");
    TestVolume::write(database, "another line\n");
    EXPECT_EQ(run("-a").status, 0);
    EXPECT_EQ(run("-c").out, "Permissions on '/Volumes' are enabled.\n");
    EXPECT_EQ(run("-d").status, 0);
    EXPECT_EQ(run("-c").out, "Permissions on '/Volumes' are disabled.\n");
    EXPECT_EQ(run("-c", "/").out, "Permissions on '/' are disabled.\n"); // is on the same volume of the host
    EXPECT_EQ(RunMacTool(kTool, { "-i" }).status, 0); // does not touch what is known
    EXPECT_THAT(TestVolume::read(database), testing::MatchesRegex("another line\n[^ ]+ 00000000\n"));
    fs::remove(database);
    EXPECT_EQ(RunMacTool(kTool, { "-i" }).status, 0);
    EXPECT_EQ(run("-c").out, "Permissions on '/Volumes' are enabled.\n");
}

TEST_F(VsdbutilTest, NothingIsWrittenForWhatIsNotThere)
{
    EXPECT_EQ(run("-a", "/Volumes/None").error, "vsdbutil: /Volumes/None: No such file or directory\n");
    EXPECT_EQ(RunMacTool(kTool, { "-a" }).status, EX_USAGE);
    EXPECT_EQ(RunMacTool(kTool, { "-x", "/" }).status, EX_USAGE);
    EXPECT_FALSE(fs::exists(database));
    ASSERT_EQ(mkfifo(database.c_str(), 0600), 0);
    EXPECT_EQ(run("-a").status, 1);
    EXPECT_TRUE(fs::is_fifo(database));
    fs::remove(database);
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to become somebody else";
    EXPECT_EQ(
        AsStranger([] { return run("-a").error.find("Permission denied") != std::string::npos ? 7 : 0; }), 7);
}

TEST_F(VsdbutilTest, VolumesAreKnownByUUIDElseByTheirMount)
{
    struct stat null = {};
    ASSERT_EQ(stat("/dev/null", &null), 0);
    const fs::path links = volume.root() / "by-uuid";
    fs::create_directory(links);
    fs::create_symlink("/dev/zero", links / "0000-0000");
    fs::create_symlink("/dev/gone", links / "1111-1111");
    EXPECT_EQ(DeviceUUID(null.st_rdev, links), "");
    fs::create_symlink("/dev/null", links / "1234-ABCD");
    EXPECT_EQ(DeviceUUID(null.st_rdev, links), "1234-ABCD");
    EXPECT_EQ(DeviceUUID(null.st_rdev, links / "none"), "");
    EXPECT_EQ(VolumeKey("/proc/self"), "/proc");
}

}
