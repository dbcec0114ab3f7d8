#include "LaunchctlFixture.h"

#include <Host/HostPath.h>

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/un.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

/// A user whom systemd serves, whom tests/support/as-user makes. Checks that each test leaves nothing in the home.
class SystemdTest : public LaunchctlFixture {
protected:
    void SetUp() override
    {
        unsetenv("CFFIXED_USER_HOME");
        if (HostHomeFolder() != "/home/tester")
            GTEST_SKIP() << "This runs in tests/support/private-system tests/support/as-user only";
        LaunchctlFixture::SetUp();
        unsetenv("CFFIXED_USER_HOME");
    }

    void TearDown() override
    {
        if (fTemporary.empty())
            return;
        EXPECT_FALSE(fs::exists("/home/tester/.config")) << "units are left";
        LaunchctlFixture::TearDown();
    }

    static fs::path unitFile(const std::string& label)
    {
        return "/home/tester/.config/systemd/user/" + label + ".service";
    }
    static int systemctl(const std::string& arguments)
    {
        return std::system(("systemctl --user --quiet " + arguments + " 2>/dev/null").c_str());
    }
    void unload(const std::string& path) const
    {
        Launchctl run = launchctl({ "unload", path });
        EXPECT_EQ(run.status(), 0) << run.error();
    }
};

namespace {
const std::string keepAlive = "<key>KeepAlive</key><true/><key>ThrottleInterval</key><integer>1</integer>";
const std::string header = "PID\tStatus\tLabel\tManager\n";

std::string Array(const std::vector<std::string>& values)
{
    std::string array = "<array>";
    for (const std::string& value : values)
        array += "<string><![CDATA[" + value + "]]></string>";
    return array + "</array>";
}
}

TEST_F(SystemdTest, LoadEnablesAndStartsTheJobAndUnloadLeavesNothing)
{
    const std::string path
        = writeJob("a.job", runForLong, keepAlive + "<key>LimitLoadToSessionType</key><string>Aqua</string>");
    const pid_t job = load(path);
    EXPECT_EQ(list(), header + std::to_string(job) + "\t0\ta.job\tsystemd\n");
    EXPECT_EQ(systemctl("is-enabled a.job.service"), 0);
    EXPECT_TRUE(
        fs::is_symlink(unitFile("a.job").parent_path() / "graphical-session.target.wants/a.job.service"));
    EXPECT_EQ(supervisor(), 0);

    unload(path);
    EXPECT_FALSE(IsAlive(job)) << "unload answers only when the job is gone";
    EXPECT_NE(systemctl("cat a.job.service"), 0);
    EXPECT_EQ(list(), header);
    EXPECT_EQ(launchctl({ "unload", path }).status(), 113);
}

TEST_F(SystemdTest, ValuesReachTheJobAsTheyAre)
{
    const std::vector<std::string> values
        = { "", " ", "a b", "\"quoted\" 'twice'", "%n %% %", "$HOME ${HOME} $$", "back\\slash \\n \\",
              "tab\tulator", "\x01\x7F", "-x", ";", "#", "~", "@", "Ünïcödé 日本語 😀" };
    std::vector<std::string> arguments = { "its own $name %n \"'\\", "-c",
        "cat /proc/$$/cmdline > \"$NOTE\"; printf '%s' \"$VALUE\" > \"$NOTE.value\"; pwd; echo done", "sh" };
    arguments.insert(arguments.end(), values.begin(), values.end());
    const std::string variable = values[3] + values[4] + values[5] + values[6] + values[7] + values[14];
    const std::string folder = "/Users/somebody/100% of $it's \"work\" \\ folder";
    fs::create_directory(fVolume / folder.substr(1));
    Write(fVolume / "a 100% \"odd\" $name.plist",
        PropertyList("<key>Label</key><string>a.job</string><key>RunAtLoad</key><true/><key>Program</key>"
                     "<string>/bin/sh</string><key>ProgramArguments</key>"
            + Array(arguments) + "<key>EnvironmentVariables</key><dict><key>NOTE</key><string>"
            + noteFile("a.job").string() + "</string><key>VALUE</key><string><![CDATA[" + variable
            + "]]></string></dict><key>WorkingDirectory</key><string>" + folder
            + "</string><key>StandardOutPath</key><string>" + folder + "/%n out</string>"));
    Launchctl run = launchctl({ "load", "/a 100% \"odd\" $name.plist" });
    EXPECT_EQ(run.status(), 0) << run.error();

    const fs::path out = fVolume / folder.substr(1) / "%n out";
    EXPECT_TRUE(Eventually([&] { return Contents(out).ends_with("done\n"); })) << Contents(out);
    EXPECT_EQ(Contents(out), fVolume.string() + folder + "\ndone\n");
    std::string commandLine;
    for (const std::string& argument : arguments)
        commandLine += argument + '\0';
    EXPECT_EQ(Contents(noteFile("a.job")), commandLine);
    EXPECT_EQ(Contents(noteFile("a.job").string() + ".value"), variable);
    unload("/a 100% \"odd\" $name.plist");
}

TEST_F(SystemdTest, LoadingTheSameAgainChangesNothingAndOtherContentIsRefused)
{
    const std::string path = writeJob("a.job", runForLong, keepAlive);
    const pid_t job = load(path);
    EXPECT_EQ(launchctl({ "load", path }).status(), 0);
    EXPECT_TRUE(IsAlive(job) && notes("a.job").size() == 1);
    EXPECT_EQ(systemctl("disable --now a.job.service"), 0);
    EXPECT_EQ(launchctl({ "load", path }).status(), 0);
    EXPECT_NE(notedProcess("a.job", 2), 0);
    EXPECT_EQ(systemctl("is-enabled a.job.service"), 0);

    writeJob("a.job", "exit 1", keepAlive);
    Launchctl other = launchctl({ "load", path });
    EXPECT_EQ(other.status(), 133);
    EXPECT_THAT(other.error(), HasSubstr("a.job is already loaded"));
    fs::rename(fVolume / writeJob("b.job", runForLong).substr(1), fVolume / path.substr(1));
    EXPECT_EQ(launchctl({ "load", path }).status(), 133) << "one file is one job";
    EXPECT_EQ(notes("a.job").size(), 2U);
    unload(path);
}

TEST_F(SystemdTest, UnitsOfOthersAreLeftAlone)
{
    const std::string path = writeJob("a.job", runForLong);
    const std::string system = writeJob("dbus", runForLong);
    fs::create_directories(unitFile("").parent_path());
    Write(unitFile("a.job"), "[Service]\nExecStart=/bin/true\n");
    Launchctl taken = launchctl({ "load", path });
    EXPECT_EQ(taken.status(), 1);
    EXPECT_THAT(taken.error(), HasSubstr("a.job.service exists and was not written by launchctl"));
    EXPECT_EQ(launchctl({ "unload", path }).status(), 113);
    EXPECT_EQ(Contents(unitFile("a.job")), "[Service]\nExecStart=/bin/true\n");
    EXPECT_EQ(list(), header);

    fs::remove(unitFile("a.job"));
    fs::create_symlink("/dev/null", unitFile("a.job"));
    EXPECT_EQ(launchctl({ "load", path }).status(), 1);
    EXPECT_TRUE(fs::is_symlink(unitFile("a.job")));
    fs::remove(unitFile("a.job"));
    EXPECT_THAT(launchctl({ "load", system }).error(), HasSubstr("systemd has a unit dbus.service already"));
}

TEST_F(SystemdTest, AJobThatCannotStartIsReportedAndStaysListed)
{
    Write(fVolume / "a.plist",
        PropertyList(
            "<key>Label</key><string>a.job</string><key>Program</key><string>/nowhere/program</string>"
            "<key>KeepAlive</key><true/>"));
    const std::string lost
        = writeJob("b.job", runForLong, keepAlive + "<key>WorkingDirectory</key><string>/no</string>");
    const std::string mute = writeJob(
        "c.job", runForLong, keepAlive + "<key>StandardErrorPath</key><string>/dev/null/x</string>");
    Launchctl run = launchctl({ "load", "/a.plist", lost, mute });
    EXPECT_EQ(run.status(), 1);
    EXPECT_THAT(run.error(),
        AllOf(HasSubstr(
                  "a.job is loaded, but its program /nowhere/program could not be executed: No such file"),
            HasSubstr("WorkingDirectory /no could not be entered"),
            HasSubstr("StandardErrorPath /dev/null/x could not be opened")));
    EXPECT_THAT(list(), AllOf(HasSubstr("\ta.job\t"), HasSubstr("\tb.job\t"), HasSubstr("\tc.job\t")));
    fs::create_directory(fVolume / "no");
    EXPECT_EQ(launchctl({ "unload", "/a.plist", lost, mute }).status(), 0);
}

TEST_F(SystemdTest, JobsComeBackAsTheirKeepAliveSays)
{
    const std::string always = writeJob("a.always", runForLong, keepAlive);
    const std::string once
        = writeJob("b.once", "echo $$ >> $NOTE; [ $(wc -l < $NOTE) -lt 2 ] && kill -TERM $$; exit 0",
            "<key>KeepAlive</key><dict><key>SuccessfulExit</key><false/></dict>"
            "<key>ThrottleInterval</key><integer>1</integer>");
    const pid_t first = load(always);
    ASSERT_GT(first, 0);
    EXPECT_EQ(launchctl({ "load", once }).status(), 0);
    kill(first, SIGKILL);
    const pid_t second = notedProcess("a.always", 2);
    EXPECT_NE(second, first);
    EXPECT_NE(notedProcess("b.once", 2), 0) << "a signal is no success";
    EXPECT_TRUE(Eventually([&] { return list().find("-\t0\tb.once\t") != std::string::npos; })) << list();
    unload(always);
    EXPECT_FALSE(IsAlive(second));
    EXPECT_EQ(notes("b.once").size(), 2U);
    unload(once);
}

TEST_F(SystemdTest, NothingOfAJobOutlivesIt)
{
    const std::string path = writeJob("a.stubborn",
        "sleep 600 & echo $! >> $NOTE; trap '' TERM; echo $$ >> $NOTE; while :; do wait; done",
        "<key>KeepAlive</key><true/><key>ExitTimeOut</key><integer>1</integer>");
    const pid_t helper = load(path);
    const pid_t leader = notedProcess("a.stubborn", 2);
    ASSERT_TRUE(helper > 0 && leader > 0);
    // What follows an unload at once, as an update does it, has its way when that is done.
    Launchctl unloading = start({ "unload", path });
    ASSERT_TRUE(
        Eventually([&] { return systemctl("show -p ActiveState a.stubborn | grep -q deactivating") == 0; }));
    EXPECT_THAT(list(), HasSubstr("-\t0\ta.stubborn\t"));
    EXPECT_EQ(launchctl({ "load", path }).status(), 0);
    EXPECT_EQ(unloading.status(), 0);
    EXPECT_FALSE(IsAlive(helper) || IsAlive(leader));
    EXPECT_NE(notedProcess("a.stubborn", 4), 0);
    unload(path);
}

TEST_F(SystemdTest, UnloadClearsUpAfterHandsThatRemovedFiles)
{
    const std::string noPlist = writeJob("a.job", runForLong, keepAlive);
    const std::string noUnit = writeJob("b.job", runForLong, keepAlive);
    const std::string onlyLink = writeJob("c.job", runForLong, keepAlive);
    const pid_t jobs[] = { load(noPlist), load(noUnit), load(onlyLink) };
    fs::remove(fVolume / noPlist.substr(1));
    fs::remove(unitFile("b.job"));
    fs::remove(unitFile("c.job"));
    systemctl("stop c.job");
    systemctl("daemon-reload");
    for (const std::string& path : { noPlist, noUnit, onlyLink })
        unload(path);
    for (const pid_t job : jobs)
        EXPECT_FALSE(IsAlive(job));
}

TEST_F(SystemdTest, OnlyTheManagerOfTheSameHomeServes)
{
    const std::string path = writeJob("a.job", runForLong, keepAlive);
    setenv("CFFIXED_USER_HOME", (fVolume / "Users/somebody").c_str(), 1);
    const pid_t job = load(path);
    EXPECT_THAT(list(), HasSubstr("\ta.job\tlaunchd\n"));
    unsetenv("CFFIXED_USER_HOME");
    EXPECT_EQ(launchctl({ "load", path }).status(), 0);
    EXPECT_THAT(list(), HasSubstr("\ta.job\tsystemd\n")) << "it has moved";
    EXPECT_FALSE(IsAlive(job));
    unload(path);

    // A login without a desktop's environment still has its manager.
    const std::string bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    const std::string folder = std::getenv("XDG_RUNTIME_DIR");
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    unsetenv("XDG_RUNTIME_DIR");
    load(path);
    EXPECT_THAT(list(), HasSubstr("\ta.job\tsystemd\n"));
    // So does one that was given another user's.
    setenv("XDG_RUNTIME_DIR", "/run", 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1);
    EXPECT_THAT(launchctl({ "list", "a.job" }).out(), HasSubstr("\"PID\" = "));
    unsetenv("XDG_RUNTIME_DIR");
    // A bus that does not answer says nothing about what the manager behind it runs.
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1);
    Launchctl blind = launchctl({ "unload", path });
    EXPECT_THAT(blind.error(), HasSubstr("keeps a.job, but does not answer"));
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.c_str(), 1);
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    unload(path);
}

TEST_F(SystemdTest, LoadStartedRightAfterUnloadComesSecond)
{
    const std::string path = writeJob(
        "a.job", "echo $$ >>$NOTE; trap 'sleep 1; exit' TERM; while :; do sleep 0.1; done", keepAlive);
    setenv("CFFIXED_USER_HOME", (fVolume / "Users/somebody").c_str(), 1);
    load(path);
    unsetenv("CFFIXED_USER_HOME");
    for (const char* from : { "launchd", "systemd" }) {
        Launchctl unloading(fTemporary, { "unload", path });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        Launchctl loading(fTemporary, { "load", path });
        EXPECT_EQ(unloading.status(), 0) << from << unloading.error();
        EXPECT_EQ(loading.status(), 0) << from << loading.error();
        EXPECT_THAT(launchctl({ "list", "a.job" }).out(), HasSubstr("\"PID\" = ")) << from;
    }
    unload(path);
}

TEST_F(SystemdTest, WhatAManagerHasLeftInAHomeIsUnloadedWithoutIt)
{
    const std::string path = writeJob("a.job", runForLong, keepAlive);
    load(path);
    const fs::path home = fVolume / "Users/somebody";
    fs::create_directories(home / ".config");
    fs::copy("/home/tester/.config/systemd", home / ".config/systemd",
        fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    unload(path);

    setenv("CFFIXED_USER_HOME", home.c_str(), 1);
    EXPECT_EQ(list(), header + "-\t0\ta.job\tsystemd\n");
    EXPECT_THAT(launchctl({ "load", path }).error(), HasSubstr("already loaded into systemd"));
    unload(path);
    EXPECT_FALSE(fs::exists(home / ".config"));
    unsetenv("CFFIXED_USER_HOME");
}
