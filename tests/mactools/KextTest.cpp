#include "MacTool.h"
#include "Tool.h"

#include "tests/support/TestVolume.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sysexits.h>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

constexpr const char* kStat = "/usr/sbin/kextstat";
constexpr const char* kCache = "/usr/sbin/kextcache";
constexpr const char* kCacheFile
    = "System/Library/Caches/com.apple.kext.caches/Startup/IdentifiersAndVersions.plist";

/// Three extensions that build on each other, in different places.
class KextTest : public testing::Test {
protected:
    KextTest()
    {
        addExtension("System/Library/Extensions/Base.kext", "org.example.base", "2.0");
        addExtension("System/Library/Extensions/Base.kext/Contents/PlugIns/Part.kext", "org.example.part",
            "2.1", "<key>OSKernelResource</key><true/>");
        addExtension("Library/Extensions/Driver.kext", "org.example.driver", "1.9",
            "<key>OSBundleLibraries</key><dict><key>org.example.base</key><string>1</string>"
            "<key>org.example.part</key><string>1</string><key>com.apple.kpi.bsd</key><string>8</string></"
            "dict>");
    }

    void addExtension(const std::string& path, const std::string& identifier, const std::string& version,
        const std::string& more = "") const
    {
        const auto text = [](const std::string& key, const std::string& value) {
            return value.empty() ? "" : "<key>" + key + "</key><string>" + value + "</string>";
        };
        TestVolume::write(volume.root() / path / "Contents/Info.plist",
            "<plist version=\"1.0\"><dict>" + text("CFBundleIdentifier", identifier)
                + text("CFBundleVersion", version) + more + "</dict></plist>");
    }

    std::string cache() const { return TestVolume::read(volume.root() / kCacheFile); }
    /// Makes the cache look as if written that many seconds after the extensions; what it holds shows whether it stays.
    void ageCache(int seconds) const
    {
        TestVolume::write(volume.root() / kCacheFile, "old");
        const fs::file_time_type changed = fs::last_write_time(volume.root() / "Library/Extensions");
        fs::last_write_time(volume.root() / kCacheFile, changed + std::chrono::seconds(seconds));
    }

    const TestVolume volume;
};

TEST_F(KextTest, TableHasReferencesAndLinks)
{
    const ToolRun run = RunMacTool(kStat, {});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.out,
        "Index Refs Address            Size       Wired      Name (Version) UUID <Linked Against>\n"
        "    1    1 0                  0          0          org.example.base (2.0)\n"
        "    2    0 0                  0          0          org.example.driver (1.9) <1 3>\n"
        "    3    1 0                  0          0          org.example.part (2.1)\n");
    EXPECT_EQ(RunMacTool(kStat, { "-l", "-b", "org.example.driver" }).out,
        "    2    0 0                  0          0          org.example.driver (1.9) <1 3>\n");
    EXPECT_THAT(RunMacTool(kStat, { "-k" }).out, testing::Not(HasSubstr("org.example.part")));
    EXPECT_EQ(RunMacTool(kStat, { "-l", "-b", "org.example" }).out, "");
    EXPECT_EQ(RunMacTool(kStat, { "-b" }).status, EX_USAGE);
}

TEST_F(KextTest, DamagedExtensionsAreLeftOutWithAComplaint)
{
    TestVolume::write(volume.extensions() / "Damaged.kext/Contents/Info.plist", "<plist>");
    fs::create_directories(volume.extensions() / "Empty.kext");
    addExtension("Library/Extensions/Nameless.kext", "", "1.0");
    addExtension("Library/Extensions/Older.kext", "org.example.driver", "1.10");
    const ToolRun run = RunMacTool(kStat, { "-l" });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 3);
    EXPECT_THAT(run.out, HasSubstr("org.example.driver (1.10)"));
    EXPECT_THAT(run.error, HasSubstr("kextstat: /Library/Extensions/Damaged.kext: Info.plist: damaged\n"));
    EXPECT_THAT(run.error, HasSubstr("kextstat: /Library/Extensions/Empty.kext: "));
    EXPECT_THAT(run.error, HasSubstr("kextstat: /Library/Extensions/Nameless.kext: "));
}

TEST_F(KextTest, CacheHoldsWhatTheVolumeHas)
{
    TestVolume::write(volume.extensions() / "Damaged.kext/Contents/Info.plist", "<plist>");
    const ToolRun run = RunMacTool(kCache, { "-f", "-u", "/" });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "kextcache: /Library/Extensions/Damaged.kext: Info.plist: damaged\n");
    EXPECT_TRUE(TestVolume::isPropertyList(volume.root() / kCacheFile));
    for (const char* const text :
        { "<key>org.example.driver</key>", "<string>/Library/Extensions/Driver.kext</string>",
            "<string>1.9</string>", "<date>2", "<key>org.example.part</key>" })
        EXPECT_THAT(cache(), HasSubstr(text));
}

TEST_F(KextTest, CacheIsLeftAloneWhileItIsNewer)
{
    ageCache(1000);
    EXPECT_EQ(RunMacTool(kCache, { "-u", "/" }).status, 0);
    EXPECT_EQ(cache(), "old");
    for (const Arguments& arguments :
        { Arguments { "-f", "-u", "/" }, Arguments { "-i", "/" }, Arguments { "-invalidate", "/" } }) {
        EXPECT_EQ(RunMacTool(kCache, arguments).status, 0);
        EXPECT_NE(cache(), "old");
        ageCache(1000);
    }
    ageCache(-1000);
    EXPECT_EQ(RunMacTool(kCache, { "-u", "/" }).status, 0);
    EXPECT_NE(cache(), "old");
    // A change within a bundle counts as well.
    ageCache(1000);
    fs::last_write_time(volume.extensions() / "Driver.kext/Contents/Info.plist",
        fs::last_write_time(volume.root() / kCacheFile) + std::chrono::seconds(1));
    EXPECT_EQ(RunMacTool(kCache, { "-u", "/" }).status, 0);
    EXPECT_NE(cache(), "old");
}

TEST_F(KextTest, OtherVolumesHaveCachesOfTheirOwn)
{
    const fs::path disk = volume.root() / "Volumes/Disk";
    fs::create_directories(disk / "System/Library/Extensions");
    EXPECT_EQ(RunMacTool(kCache, { "-u", "/Volumes/Disk/" }).status, 0);
    EXPECT_TRUE(TestVolume::isPropertyList(disk / kCacheFile));
    EXPECT_FALSE(fs::exists(volume.root() / kCacheFile));

    fs::remove_all(disk / "System/Library/Caches");
    fs::create_directory(volume.root() / "elsewhere");
    fs::create_directory_symlink(volume.root() / "elsewhere", disk / "System/Library/Caches");
    EXPECT_EQ(RunMacTool(kCache, { "-u", "/Volumes/Disk" }).status, 1);
    EXPECT_TRUE(fs::is_empty(volume.root() / "elsewhere"));
}

TEST_F(KextTest, CacheCannotBeMadeEverywhere)
{
    const auto complaint = [](const char* path) { return RunMacTool(kCache, { "-u", path }).error; };
    TestVolume::write(volume.root() / "Volumes/File", "");
    fs::create_directory(volume.root() / "Volumes/Data");
    EXPECT_EQ(complaint("/Volumes/File"), "kextcache: /Volumes/File: Not a directory\n");
    EXPECT_EQ(complaint("/Volumes/None"), "kextcache: /Volumes/None: No such file or directory\n");
    EXPECT_EQ(complaint("/Volumes/Data"), "kextcache: /Volumes/Data: not a volume with kernel extensions\n");
    for (const Arguments& arguments : { Arguments {}, Arguments { "-u" }, Arguments { "-u", "/", "-x" },
             Arguments { "-u", "/", "-i", "/" } })
        EXPECT_EQ(RunMacTool(kCache, arguments).status, EX_USAGE);
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to become somebody else";
    EXPECT_EQ(AsStranger([&] {
        const ToolRun run = RunMacTool(kCache, { "-u", "/" });
        return run.error.find(": Permission denied\n") != std::string::npos ? run.status : 0;
    }),
        1);
}

}
