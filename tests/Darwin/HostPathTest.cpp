#include "Support.h"

#include <Host/HostPath.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <sys/sysctl.h>

namespace fs = std::filesystem;

namespace {

class HostPathTest : public testing::Test {
protected:
    HostPathTest()
    {
        fs::create_directory(volume);
        setenv("ZEK_STARTUP_VOLUME", volume.c_str(), 1);
        setenv("HOST_TOOLS_FOLDER", tools.c_str(), 1);
    }

    /// Runs the script that makes the volume. @return its exit status.
    int make(const char* user) const
    {
        const pid_t child = fork();
        if (child == 0) {
            (void)!freopen("/dev/null", "w", stderr);
            execl(MAKE_STARTUP_VOLUME, MAKE_STARTUP_VOLUME, volume.c_str(), user, nullptr);
            _exit(127);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status);
    }

    TemporaryFolder folder;
    const std::string volume = folder / "volume";
    const std::string tools = folder / "tools";
};

/// The first word that a program prints.
std::string OutputOf(const std::string& command)
{
    std::array<char, 1000> line {};
    FILE* pipe = popen(command.c_str(), "r"); // NOLINT(cert-env33-c): fixed text and a path made here
    const bool isRead = fgets(line.data(), line.size(), pipe) != nullptr;
    pclose(pipe);
    return isRead ? std::string(line.data(), std::strcspn(line.data(), "\n")) : std::string();
}

} // namespace

TEST_F(HostPathTest, VolumeIsTakenFromTheEnvironmentOnlyAsAnAbsolutePath)
{
    setenv("ZEK_STARTUP_VOLUME", (volume + "//").c_str(), 1);
    EXPECT_EQ(HostStartupVolume(), volume);
    setenv("ZEK_STARTUP_VOLUME", "relative", 1);
    const std::string builtIn = HostStartupVolume();
    EXPECT_EQ(builtIn.substr(0, 1), "/");
    unsetenv("ZEK_STARTUP_VOLUME");
    EXPECT_EQ(HostStartupVolume(), builtIn);
    setenv("ZEK_STARTUP_VOLUME", "/", 1);
    EXPECT_EQ(HostPath("/Library/x"), "/Library/x");
}

TEST_F(HostPathTest, ProgramsWithMoreRightsThanTheirCallerIgnoreTheEnvironment)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    const std::string probe = folder / "probe";
    fs::copy_file(LAUNCH_PROBE, probe);
    EXPECT_EQ(OutputOf(probe + " volume"), volume);
    fs::permissions(probe, fs::perms(04755));
    AsStranger([&] { EXPECT_NE(OutputOf(probe + " volume"), volume); });
}

TEST_F(HostPathTest, PathsInsideTheVolumeStayAsTheyAre)
{
    // The volume's own path begins with a name that the volume has as well.
    fs::create_directories(volume + "/tmp");
    for (const std::string& path : { volume, volume + "/", volume + "/Library/new", volume + "/tmp/new" })
        EXPECT_EQ(HostPath(path), path);
    EXPECT_EQ(HostPath(volume + "2/new"), volume + volume + "2/new") << "only begins like the volume";
}

TEST_F(HostPathTest, PathsAreFoundInTheVolumeThenAmongToolsThenOnTheHost)
{
    WriteText(volume + "/usr/bin/own", "");
    fs::create_symlink("nowhere", volume + "/Library");
    WriteText(tools + "/own", "");
    WriteText(tools + "/launchctl", "");
    fs::create_directory(tools + "/folder");
    EXPECT_EQ(HostPath("/Library"), volume + "/Library") << "a link exists wherever it leads";
    EXPECT_EQ(HostPath("/usr/bin/own"), volume + "/usr/bin/own");
    EXPECT_EQ(HostPath("/bin/launchctl"), tools + "/launchctl");
    EXPECT_EQ(HostPath("/usr/sbin/launchctl"), tools + "/launchctl");
    EXPECT_EQ(HostPath("/opt/launchctl"), "/opt/launchctl");
    EXPECT_EQ(HostPath("/bin/folder"), "/bin/folder");
    EXPECT_EQ(HostPath("/bin/"), "/bin/");
    EXPECT_EQ(HostPath("/usr/bin/env"), "/usr/bin/env") << "exists on the host";
}

TEST_F(HostPathTest, NewPathsBelongToTheVolumeWhereItHasTheirFirstFolder)
{
    fs::create_directories(volume + "/Users/me");
    WriteText(volume + "/file", "");
    EXPECT_EQ(HostPath("/Users/me/new"), volume + "/Users/me/new");
    EXPECT_EQ(HostPath("//Users/other/new"), volume + "//Users/other/new");
    EXPECT_EQ(HostPath("/Elsewhere/new"), "/Elsewhere/new");
    EXPECT_EQ(HostPath("/new"), "/new");
    EXPECT_EQ(HostPath("/file/new"), "/file/new");
    EXPECT_EQ(HostPath("/dev/null"), "/dev/null");
    EXPECT_EQ(HostPath("Users/me"), "Users/me");
    EXPECT_EQ(HostPath(""), "");
}

TEST_F(HostPathTest, TheHomeIsEnteredByEverythingInTheProcess)
{
    const char* const home = getenv("HOME");
    const std::string before = home != nullptr ? home : "/";
    setenv("XDG_DATA_HOME", "/elsewhere", 1);
    setenv("HOME", "/misleading", 1);
    unsetenv("CFFIXED_USER_HOME");
    HostEnterHome();
    EXPECT_EQ(getenv("HOME"), HostHomeFolder());
    EXPECT_STREQ(getenv("XDG_DATA_HOME"), "/elsewhere");
    setenv("CFFIXED_USER_HOME", (volume + "/Users/me/").c_str(), 1);
    HostEnterHome();
    EXPECT_EQ(HostHomeFolder(), volume + "/Users/me");
    EXPECT_EQ(getenv("HOME"), volume + "/Users/me");
    EXPECT_EQ(getenv("XDG_DATA_HOME"), nullptr) << "the Trash lies in the fixed home too";
    unsetenv("CFFIXED_USER_HOME");
    setenv("HOME", before.c_str(), 1);
}

TEST_F(HostPathTest, MadeVolumeKeepsWhatItHas)
{
    ASSERT_EQ(make("me"), 0);
    EXPECT_TRUE(fs::is_directory(HostPath("/Users/me/Library/Application Support")));
    EXPECT_EQ(fs::status(HostPath("/private/tmp")).permissions(), fs::perms(01777));
    const std::string version = HostPath("/System/Library/CoreServices/SystemVersion.plist");
    WriteText(version, "kept");
    EXPECT_EQ(make("me"), 0);
    EXPECT_EQ(ReadText(version), "kept");
    for (const char* user : { "", "..", "a/b" })
        EXPECT_EQ(make(user), 64) << user;
}

TEST_F(HostPathTest, SystemVersionFollowsTheRulesForBuffers)
{
    constexpr const char* name = "kern.osproductversion";
    std::array<char, 32> buffer {};
    size_t size = buffer.size();
    EXPECT_EQ(sysctlbyname(name, buffer.data(), &size, nullptr, 0), -1);
    EXPECT_EQ(errno, ENOENT) << "no such file yet";

    ASSERT_EQ(make("me"), 0);
    EXPECT_EQ(sysctlbyname(name, nullptr, &size, nullptr, 0), 0);
    EXPECT_EQ(size, sizeof("10.15.7"));
    EXPECT_EQ(sysctlbyname(name, buffer.data(), &size, nullptr, 0), 0);
    EXPECT_STREQ(buffer.data(), "10.15.7");

    buffer.fill('x');
    size = 3;
    EXPECT_EQ(sysctlbyname(name, buffer.data(), &size, nullptr, 0), -1);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(std::string(buffer.data(), 4), "10.x");
    EXPECT_EQ(sysctlbyname(name, nullptr, nullptr, buffer.data(), 1), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(sysctlbyname("kern.unheard", nullptr, &size, nullptr, 0), -1);
    EXPECT_EQ(errno, ENOENT);

    for (const char* text : { "", "<plist><array/></plist>", "<plist><dict><key>ProductVersion</key>",
             "<plist><dict><key>ProductVersion</key><true/></dict></plist>", "bplist00" }) {
        WriteText(HostPath("/System/Library/CoreServices/SystemVersion.plist"), text);
        EXPECT_EQ(sysctlbyname(name, nullptr, &size, nullptr, 0), -1) << text;
    }
}
