#include "MacTool.h"

#include "tests/support/TestVolume.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kEnabled = "/:\n\tStatus: Indexing Enabled\n";
constexpr const char* kDisabled = "/:\n\tStatus: Indexing Disabled\n";

class MdutilTest : public testing::Test {
protected:
    static ToolRun run(const std::vector<std::string>& arguments)
    {
        return RunMacTool("/usr/bin/mdutil", arguments);
    }

    const TestVolume volume;
    const fs::path macMarker = volume.root() / ".metadata_never_index";
    const fs::path hostMarker = volume.root() / ".trackerignore";
};

TEST_F(MdutilTest, KeepsIndexersOutAndLetsThemInAgain)
{
    EXPECT_EQ(run({ "-s", "/" }).out, kEnabled);
    const mode_t before = umask(077);
    const ToolRun off = run({ "-i", "off", "/" });
    umask(before);
    EXPECT_EQ(off.out, kDisabled);
    EXPECT_EQ(off.status, 0);
    for (const fs::path& marker : { macMarker, hostMarker })
        EXPECT_EQ(fs::status(marker).permissions(), fs::perms(0644)) << marker;
    EXPECT_EQ(run({ "-i", "off", "/" }).out, kDisabled) << "again";
    EXPECT_EQ(run({ "-s", volume.root() }).out, volume.root().string() + (kDisabled + 1));
    EXPECT_EQ(run({ "-i", "on", "/" }).out, kEnabled);
    EXPECT_FALSE(fs::exists(macMarker) || fs::exists(hostMarker));
    EXPECT_EQ(run({ "-i", "on", "/" }).status, 0) << "again";
}

TEST_F(MdutilTest, FollowsNoLinks)
{
    const fs::path elsewhere = volume.root() / "Users/elsewhere";
    fs::create_symlink(elsewhere, hostMarker);
    EXPECT_EQ(run({ "-i", "off", "/" }).out, kDisabled);
    EXPECT_FALSE(fs::exists(elsewhere));
    TestVolume::write(elsewhere, "kept");
    EXPECT_EQ(run({ "-i", "on", "/" }).out, kEnabled);
    EXPECT_FALSE(fs::is_symlink(hostMarker));
    EXPECT_EQ(TestVolume::read(elsewhere), "kept");
}

TEST_F(MdutilTest, AttendsToVolumesOnlyAndSaysWhatItCannotDo)
{
    EXPECT_EQ(run({ "-s", "/proc" }).out, "/proc:\n\tStatus: Indexing Enabled\n") << "a mount of the host";
    const ToolRun mixed = run({ "-i", "off", "/Volumes", "/None", "/" });
    EXPECT_EQ(
        mixed.error, "mdutil: /Volumes: not the top of a volume\nmdutil: /None: No such file or directory\n");
    EXPECT_EQ(mixed.out, kDisabled);
    EXPECT_EQ(mixed.status, 1);
    EXPECT_FALSE(fs::exists(volume.root() / "Volumes/.trackerignore"));
    for (const std::vector<std::string>& wrong : { std::vector<std::string> {}, { "/" }, { "-s" },
             { "-i", "/" }, { "-i", "maybe", "/" }, { "-i", "on", "-E", "/" } })
        EXPECT_EQ(run(wrong).status, EX_USAGE);
    EXPECT_TRUE(fs::exists(hostMarker));
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to become somebody else";
    EXPECT_EQ(AsStranger([] {
        return run({ "-i", "on", "/" }).error == "mdutil: /: Permission denied\n" ? 7 : 0;
    }),
        7);
    EXPECT_TRUE(fs::exists(hostMarker));
}

}
