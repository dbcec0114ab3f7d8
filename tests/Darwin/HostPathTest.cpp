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
    int make(const std::string& user) const
    {
        const std::string command = MAKE_STARTUP_VOLUME " '" + volume + "' '" + user + "' 2>/dev/null";
        const int status = std::system(command.c_str()); // NOLINT(cert-env33-c): all of it is made here
        return WEXITSTATUS(status);
    }

    TemporaryFolder folder;
    const std::string volume = folder / "volume";
    const std::string tools = folder / "tools";
};

/// The first line that a program prints.
std::string OutputOf(const std::string& command)
{
    std::array<char, 1000> line {};
    FILE* pipe = popen(command.c_str(), "r"); // NOLINT(cert-env33-c): fixed text and a path made here
    const bool isRead = fgets(line.data(), line.size(), pipe) != nullptr;
    pclose(pipe);
    return isRead ? std::string(line.data(), std::strcspn(line.data(), "\n")) : std::string();
}

} // namespace

TEST_F(HostPathTest, VolumeIsTakenFromTheEnvironmentOnlyAsAnAbsolutePathThatMayBeTrusted)
{
    setenv("ZEK_STARTUP_VOLUME", "relative", 1);
    const std::string builtIn = HostStartupVolume();
    EXPECT_EQ(builtIn.substr(0, 1), "/");
    setenv("ZEK_STARTUP_VOLUME", "/", 1);
    EXPECT_EQ(HostPath("/Library/x"), "/Library/x");
    setenv("ZEK_STARTUP_VOLUME", (volume + "//").c_str(), 1);
    EXPECT_EQ(HostStartupVolume(), volume);
    if (geteuid() != 0)
        return;
    const std::string probe = folder / "probe";
    fs::copy_file(LAUNCH_PROBE, probe);
    EXPECT_EQ(OutputOf(probe + " volume"), volume);
    fs::permissions(probe, fs::perms(04755));
    AsStranger([&] { EXPECT_EQ(OutputOf(probe + " volume"), builtIn) << "it has more rights than they"; });
}

TEST_F(HostPathTest, PathsAreFoundInTheVolumeThenAmongToolsThenOnTheHost)
{
    fs::create_directories(volume + "/Users/me");
    fs::create_directories(volume + "/tmp"); // with which the volume's own path begins as well
    fs::create_directories(tools + "/folder");
    fs::create_symlink("nowhere", volume + "/Library");
    for (const std::string& file :
        { volume + "/usr/bin/own", volume + "/file", tools + "/own", tools + "/launchctl" })
        WriteText(file, "");
    // A link exists wherever it leads; what only begins like the volume's path lies outside.
    for (const std::string& path : { std::string("/Library"), std::string("/usr/bin/own"),
             std::string("/Users/me/new"), std::string("//Users/other/new"), volume + "2/new" })
        EXPECT_EQ(HostPath(path), volume + path);
    for (const char* path : { "/bin/launchctl", "/usr/sbin/launchctl",
             "/System/Library/Filesystems/hfs.fs/Contents/Resources/launchctl" })
        EXPECT_EQ(HostPath(path), tools + "/launchctl");
    for (const std::string& path : { volume, volume + "/", volume + "/tmp/new" })
        EXPECT_EQ(HostPath(path), path);
    for (const char* path : { "/opt/launchctl", "/bin/folder", "/bin/", "/usr/bin/env", "/dev/null",
             "/Elsewhere/new", "/new", "/file/new", "Users/me", "" })
        EXPECT_EQ(HostPath(path), path);
}

TEST_F(HostPathTest, DevicesAreThoseThatSomebodyKnows)
{
    EXPECT_EQ(HostPath("/dev/rdisk2s1"), "/dev/rdisk2s1") << "nobody to ask";
    HostFindDevicesWith(
        [](const std::string& name) { return name == "disk2s1" ? "/dev/sda1" : std::string(); });
    EXPECT_EQ(HostPath("/dev/rdisk2s1") + HostPath("/dev/disk2s1"), "/dev/sda1/dev/sda1");
    for (const char* other : { "/dev/disk3", "/dev/rrdisk2s1", "/dev/r", "/dev/null", "/x/dev/disk2s1" })
        EXPECT_EQ(HostPath(other), other);
    HostFindDevicesWith(nullptr);
}

TEST_F(HostPathTest, TheHomeIsEnteredByEverythingInTheProcess)
{
    InChild([&] {
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
    });
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
    EXPECT_EQ(sysctlbyname("kern.unheard", nullptr, &size, nullptr, 0), -1);
    for (const char* text : { "", "<plist><array/></plist>", "<plist><dict><key>ProductVersion</key>",
             "<plist><dict><key>ProductVersion</key><true/></dict></plist>", "bplist00" }) {
        WriteText(HostPath("/System/Library/CoreServices/SystemVersion.plist"), text);
        EXPECT_EQ(sysctlbyname(name, nullptr, &size, nullptr, 0), -1) << text;
    }
}
