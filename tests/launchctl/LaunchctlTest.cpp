#include "LaunchctlFixture.h"

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class LaunchctlTest : public LaunchctlFixture { };

TEST_F(LaunchctlTest, LoadStartsListShowsAndUnloadEndsTheJobAndTheSupervisor)
{
    const std::string path = writeJob("a.job", runForLong);
    const pid_t job = load(path);
    EXPECT_EQ(list(), "PID\tStatus\tLabel\tManager\n" + std::to_string(job) + "\t0\ta.job\tlaunchd\n");
    EXPECT_EQ(launchctl({ "list", "a.job" }).out(),
        "{\n\t\"LimitLoadToSessionType\" = \"Aqua\";\n\t\"Label\" = \"a.job\";\n\t\"LastExitStatus\" = 0;\n"
        "\t\"Manager\" = \"launchd\";\n\t\"PID\" = "
            + std::to_string(job) + ";\n\t\"Program\" = \"/bin/sh\";\n};\n");
    const pid_t server = supervisor();
    EXPECT_EQ(launchctl({ "unload", path }).status(), 0);
    EXPECT_FALSE(IsAlive(job)) << "unload answers only when the job is gone";
    EXPECT_TRUE(Eventually([&] { return !IsAlive(server); }));

    EXPECT_EQ(launchctl({ "list" }).status(), 0);
    EXPECT_EQ(list(), "PID\tStatus\tLabel\tManager\n");
    EXPECT_EQ(launchctl({ "list", "a.job" }).status(), 113);
    Launchctl unload = launchctl({ "unload", path });
    EXPECT_EQ(unload.status(), 113);
    EXPECT_THAT(unload.error(), HasSubstr("Could not find specified service"));
    EXPECT_FALSE(fs::exists(runtimeFolder()));
}

TEST_F(LaunchctlTest, WhatIsLoadedIsNotLoadedAgain)
{
    const std::string path = writeJob("a.job", runForLong);
    load(path);
    const fs::path copy = fTemporary / "copy.plist";
    fs::copy_file(fVolume / path.substr(1), copy);
    // However the file is spelled, and whatever it says by now.
    const std::string spellings[] = { path, fVolume / path.substr(1),
        "/Users/../Users/somebody/Library/LaunchAgents/a.job.plist", copy };
    for (const std::string& spelling : spellings) {
        Launchctl again = launchctl({ "load", spelling });
        EXPECT_EQ(again.status(), 133) << spelling;
        EXPECT_THAT(again.error(), HasSubstr("a.job is already loaded"));
    }
    fs::rename(fVolume / writeJob("b.job", runForLong).substr(1), fVolume / path.substr(1));
    EXPECT_EQ(launchctl({ "load", path }).status(), 133);
    EXPECT_EQ(notes("a.job").size(), 1U);
    EXPECT_THAT(notes("b.job"), ElementsAre());
}

TEST_F(LaunchctlTest, WrongUseIsExplained)
{
    const std::vector<std::string> rows[] = { {}, { "reload" }, { "load" }, { "unload", "-F", "a" },
        { "load", "-S" }, { "load", "-S", "", "a" }, { "list", "a", "b" } };
    for (const auto& arguments : rows) {
        Launchctl run = launchctl(arguments);
        EXPECT_EQ(run.status(), 64) << testing::PrintToString(arguments);
        EXPECT_THAT(run.error(), StartsWith("usage: launchctl"));
    }
    Launchctl help = launchctl({ "help" });
    EXPECT_EQ(help.status(), 0);
    EXPECT_THAT(help.out(), StartsWith("usage: launchctl"));
}

TEST_F(LaunchctlTest, RefusalsNameTheFileAndStartNothing)
{
    const std::string disabled
        = writeJob("a.disabled", runForLong, "<key>Disabled</key><true/><key>RunAtLoad</key><true/>");
    const std::string elsewhere
        = writeJob("a.elsewhere", runForLong, "<key>LimitLoadToSessionType</key><string>Background</string>");
    const std::string spoilt = writeJob("a.spoilt", runForLong, "<key>RunAtLoad</key><integer>1</integer>");
    const std::string shared = writeJob("a.shared", runForLong);
    chmod((fVolume / shared.substr(1)).c_str(), 0664);
    mkfifo((fVolume / "pipe").c_str(), 0600);
    const std::string foreign = writeJob("a.foreign", runForLong);
    const bool isForeign = chown((fVolume / foreign.substr(1)).c_str(), 4711, 4711) == 0; // root only
    const struct {
        std::string path;
        int status;
        const char* reason;
    } rows[] = {
        { disabled, 119, "is disabled" },
        { elsewhere, 134, "limited to other session types than Aqua" },
        { spoilt, 109, "RunAtLoad is not a boolean" },
        { shared, 122, "Writable by others" },
        { isForeign ? foreign : shared, 122, ": " },
        { "/pipe", 122, "Not a regular file" },
        { "/nowhere.plist", 1, "No such file" },
    };
    for (const auto& row : rows) {
        Launchctl run = launchctl({ "load", row.path });
        EXPECT_EQ(run.status(), row.status) << row.path;
        EXPECT_THAT(run.error(), AllOf(StartsWith(row.path + ": "), HasSubstr(row.reason)));
    }
    EXPECT_FALSE(fs::exists(runtimeFolder()));

    EXPECT_EQ(launchctl({ "load", "-F", disabled }).status(), 0);
    EXPECT_EQ(launchctl({ "load", "-S", "Background", elsewhere }).status(), 0);
    EXPECT_THAT(
        launchctl({ "list", "a.elsewhere" }).out(), HasSubstr("\"LimitLoadToSessionType\" = \"Background\""));
}

TEST_F(LaunchctlTest, WritingKeepsTheChoiceInTheFile)
{
    const std::string path = writeJob("a.job", runForLong, "<key>Mine</key><integer>7</integer>");
    const std::string file = fVolume / path.substr(1);
    ASSERT_EQ(launchctl({ "load", path }).status(), 0);
    EXPECT_EQ(launchctl({ "unload", "-w", path }).status(), 0);
    EXPECT_THAT(Contents(file), AllOf(HasSubstr("Disabled"), HasSubstr("Mine")));
    EXPECT_EQ(launchctl({ "load", path }).status(), 119);
    EXPECT_EQ(launchctl({ "load", "-w", path }).status(), 0);
    EXPECT_THAT(Contents(file), Not(HasSubstr("Disabled")));
}

TEST_F(LaunchctlTest, AFolderMeansItsPropertyLists)
{
    writeJob("a.first", runForLong);
    writeJob("b.second", "exit 0", "");
    Write(fVolume / "Users/somebody/Library/LaunchAgents/read me.txt", "no property list");
    EXPECT_EQ(launchctl({ "load", "/Users/somebody/Library/LaunchAgents" }).status(), 0);
    EXPECT_EQ(list(),
        "PID\tStatus\tLabel\tManager\n" + std::to_string(notedProcess("a.first", 1))
            + "\t0\ta.first\tlaunchd\n-\t0\tb.second\tlaunchd\n");
    EXPECT_EQ(launchctl({ "unload", "/Users/somebody/Library/LaunchAgents" }).status(), 0);
    EXPECT_EQ(list(), "PID\tStatus\tLabel\tManager\n");
}

TEST_F(LaunchctlTest, AProgramThatCannotRunIsReportedAndStaysListed)
{
    Write(fVolume / "a.plist",
        PropertyList(
            "<key>Label</key><string>a.job</string><key>Program</key><string>/nowhere/program</string>"
            "<key>KeepAlive</key><true/>"));
    Launchctl load = launchctl({ "load", "/a.plist" });
    EXPECT_EQ(load.status(), 1);
    EXPECT_THAT(load.error(),
        HasSubstr("a.job is loaded, but its program /nowhere/program could not be executed: No such"));
    EXPECT_EQ(list(), "PID\tStatus\tLabel\tManager\n-\t78\ta.job\tlaunchd\n");
    EXPECT_EQ(launchctl({ "unload", "/a.plist" }).status(), 0);

    const std::string mute = writeJob(
        "b.job", "exit", "<key>RunAtLoad</key><true/><key>StandardOutPath</key><string>/dev/null/x</string>");
    EXPECT_THAT(launchctl({ "load", mute }).error(),
        HasSubstr("StandardOutPath /dev/null/x could not be opened: Not a dir"));
}

TEST_F(LaunchctlTest, TheListTellsHowTheLastRunEnded)
{
    const std::string failed = writeJob("a.failed", "exit 3");
    const std::string killed = writeJob("b.killed", "kill -KILL $$");
    EXPECT_EQ(launchctl({ "load", failed, killed }).status(), 0);
    EXPECT_TRUE(Eventually([&] {
        return list() == "PID\tStatus\tLabel\tManager\n-\t3\ta.failed\tlaunchd\n-\t-9\tb.killed\tlaunchd\n";
    })) << list();
}

TEST_F(LaunchctlTest, JobsInheritNothingButWhatTheyNeed)
{
    setenv("A_SECRET", "secret", 1);
    const int leaked = dup(STDIN_FILENO); // not closed on exec
    sigset_t mask;
    sigset_t before;
    sigemptyset(&mask);
    sigaddset(&mask, SIGUSR1);
    sigprocmask(SIG_BLOCK, &mask, &before);
    const auto handler = signal(SIGUSR2, SIG_IGN);
    fs::create_directory(fVolume / "work");
    const std::string path = writeJob("a.job",
        "env; pwd; for fd in $(seq 3 40); do [ -e /proc/self/fd/$fd ] && echo descriptor $fd; done;"
        "grep -E 'SigBlk|SigIgn' /proc/self/status; echo wrong >&2; echo done",
        "<key>RunAtLoad</key><true/><key>WorkingDirectory</key><string>/work</string>"
        "<key>StandardOutPath</key><string>/Users/somebody/out</string>"
        "<key>StandardErrorPath</key><string>/Users/somebody/error</string>");
    EXPECT_EQ(launchctl({ "load", path }).status(), 0);
    EXPECT_EQ(signal(SIGUSR2, handler), SIG_IGN);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    close(leaked);
    unsetenv("A_SECRET");

    EXPECT_TRUE(Eventually([&] { return Contents(fVolume / "Users/somebody/out").ends_with("done\n"); }));
    const std::string out = Contents(fVolume / "Users/somebody/out");
    EXPECT_THAT(out, AllOf(Not(HasSubstr("secret")), Not(HasSubstr("descriptor "))));
    for (const std::string& part :
        { std::string("PATH=/usr/bin:/bin:/usr/sbin:/sbin"), "HOME=" + (fVolume / "Users/somebody").string(),
            "ZEK_STARTUP_VOLUME=" + fVolume.string(), (fVolume / "work").string(),
            std::string("SigBlk:\t0000000000000000"), std::string("SigIgn:\t0000000000000000") })
        EXPECT_THAT(out, HasSubstr(part + '\n'));
    EXPECT_EQ(Contents(fVolume / "Users/somebody/error"), "wrong\n");
}

TEST_F(LaunchctlTest, ARuntimeFolderThatOthersCouldUseIsRefused)
{
    const std::string path = writeJob("a.job", runForLong);
    fs::create_directories(runtimeFolder());
    fs::permissions(runtimeFolder(), fs::perms(0755));
    Launchctl open = launchctl({ "load", path });
    EXPECT_EQ(open.status(), 1);
    EXPECT_THAT(open.error(), HasSubstr("Not a folder that only its user can enter"));

    fs::rename(runtimeFolder(), fVolume / "elsewhere");
    fs::permissions(fVolume / "elsewhere", fs::perms(0700));
    fs::create_directory_symlink(fVolume / "elsewhere", runtimeFolder());
    EXPECT_EQ(launchctl({ "load", path }).status(), 1);
    EXPECT_TRUE(fs::is_empty(fVolume / "elsewhere"));
}

TEST_F(LaunchctlTest, ABusThatNeverSpeaksHoldsNobodyUp)
{
    sockaddr_un address { .sun_family = AF_UNIX, .sun_path = {} };
    (fTemporary / "bus").string().copy(address.sun_path, sizeof address.sun_path - 1);
    const Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener.get(), 5), 0);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + std::string(address.sun_path)).c_str(), 1);
    EXPECT_GT(load(writeJob("a.job", runForLong)), 0);
    setenv("DBUS_SESSION_BUS_ADDRESS", "none:", 1);
    EXPECT_THAT(list(), HasSubstr("\ta.job\tlaunchd\n"));
}
