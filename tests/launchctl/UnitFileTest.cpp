#include "LaunchctlFixture.h"

#include "platform/tools/launchd/systemd/UnitFile.h"

#include <gmock/gmock.h>

using namespace launchd;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A job whose label and program are good already.
JobFile Make(const std::string& keys, const std::string& path = "/home/a/a.plist")
{
    std::string problem;
    const std::string good = "<key>Label</key><string>a.b</string><key>Program</key><string>/bin/a</string>";
    const std::string bytes = PropertyList(keys.find("<key>Label") == 0 ? keys : good + keys);
    std::optional<Job> job = ParseJob(bytes, problem);
    EXPECT_EQ(problem, "");
    return { .path = path, .bytes = bytes, .job = job.value_or(Job {}) };
}

std::string TextOf(const JobFile& file)
{
    std::string problem;
    const std::optional<std::string> text = UnitText(file, "Aqua", problem);
    EXPECT_TRUE(text) << problem;
    return text.value_or("");
}

}

TEST(UnitFileTest, AJobIsKeptAliveAsItsConditionsSay)
{
    const std::string always = TextOf(Make("<key>KeepAlive</key><true/>"));
    EXPECT_THAT(always, AllOf(HasSubstr("\nRestart=always\nRestartSec=10\n"), Not(HasSubstr("Force"))));
    const std::string success
        = TextOf(Make("<key>KeepAlive</key><dict><key>SuccessfulExit</key><true/></dict>"));
    EXPECT_THAT(success, HasSubstr("\nRestart=no\nRestartForceExitStatus=0\n"));
    const std::string crash = TextOf(Make("<key>KeepAlive</key><dict><key>Crashed</key><true/></dict>"));
    EXPECT_THAT(
        crash, HasSubstr("\nRestartForceExitStatus=SIGILL SIGTRAP SIGABRT SIGBUS SIGFPE SIGSEGV SIGSYS\n"));
    const std::string failure
        = TextOf(Make("<key>KeepAlive</key><dict><key>SuccessfulExit</key><false/></dict>"));
    EXPECT_THAT(
        failure, AllOf(HasSubstr("Status=1 2 3 "), HasSubstr(" 255 SIGHUP "), HasSubstr(" SIGRTMIN+")));
    const std::string once = TextOf(Make("<key>RunAtLoad</key><true/>"));
    EXPECT_THAT(once, AllOf(HasSubstr("\nRestart=no\n"), Not(HasSubstr("Force"))));
}

TEST(UnitFileTest, TheSessionStartsWhatStartsAtLoad)
{
    const std::string run = "<key>RunAtLoad</key><true/>";
    const std::string aqua = TextOf(Make(run + "<key>LimitLoadToSessionType</key><string>Aqua</string>"));
    EXPECT_THAT(aqua,
        AllOf(HasSubstr("\nWantedBy=graphical-session.target\n"),
            HasSubstr("\nPartOf=graphical-session.target\n")));
    const std::string every = TextOf(Make(run));
    EXPECT_THAT(every, AllOf(HasSubstr("\nWantedBy=default.target\n"), Not(HasSubstr("graphical"))));
    EXPECT_THAT(TextOf(Make("")), Not(HasSubstr("WantedBy")));
}

TEST(UnitFileTest, WhatSystemdCouldNotBeToldIsRefused)
{
    const auto key = [](const char* name, const std::string& value) {
        return std::string("<key>") + name + "</key><string>" + value + "</string>";
    };
    const auto program
        = [&](const std::string& path) { return Make(key("Label", "a") + key("Program", path)); };
    const auto labelled
        = [&](const std::string& label) { return Make(key("Label", label) + key("Program", "/a")); };
    const std::pair<JobFile, const char*> rows[] = {
        { labelled(std::string(248, 'a')), "Label is too long" },
        { labelled(".a"), "Label begins with a dot" },
        { program("/it's"), "Program contains quotes" },
        { program("/a\\b"), "Program contains quotes" },
        { program("/a\nb"), "Program contains control characters" },
        { Make(key("StandardOutPath", "/a\nUser=root")), "StandardOutPath contains control characters" },
        { Make(key("StandardErrorPath", "/a ")), "StandardErrorPath begins or ends with a blank" },
        { Make(key("WorkingDirectory", "/a\\")), "WorkingDirectory begins or ends" },
        { Make("<key>EnvironmentVariables</key><dict>" + key("A-B", "") + "</dict>"),
            "EnvironmentVariables has" },
        { Make("<key>EnvironmentVariables</key><dict>" + key("A", "\xEF\xBF\xBF") + "</dict>"),
            "variable A is" },
        { Make("<key>ProgramArguments</key><array><string>\xF0\x9F\xBF\xBE</string></array>"),
            "not valid text" },
        { Make("<key>ProgramArguments</key><array><string>" + std::string(600000, '%') + "</string></array>"),
            "ExecStart is too long" },
        { Make("<key>EnvironmentVariables</key><dict>" + key("A", "\nUser=root") + "</dict>"),
            "variable A contains a line break" },
        { Make("<key>ProgramArguments</key><array><string>a&#13;b</string></array>"),
            "ProgramArguments contains a line break" },
        { Make("", "/a\n[Service]\nUser=root.plist"), "The path contains control characters" },
        { Make("", "/\xFF.plist"), "The path is not valid text" },
    };
    for (const auto& [file, part] : rows) {
        std::string problem;
        EXPECT_FALSE(UnitText(file, "Aqua", problem)) << part;
        EXPECT_THAT(problem, HasSubstr(part));
    }
    std::string problem;
    EXPECT_FALSE(UnitText(Make(""), "Aqua\nUser=root", problem));
}

TEST(UnitFileTest, OnlyAUnitOfOurOwnIsReadBack)
{
    const std::string text = TextOf(Make("", "/100%/%%a b.plist"));
    const std::optional<UnitNotes> notes = ReadUnit(text);
    ASSERT_TRUE(notes);
    EXPECT_EQ(notes->path + '|' + notes->program + '|' + notes->session, "/100%/%%a b.plist|/bin/a|Aqua");
    EXPECT_FALSE(ReadUnit(""));
    EXPECT_FALSE(
        ReadUnit("[Unit]\nDescription=X-Launchd-Program=/a\nSourcePath=/a\n[Service]\nExecStart=/a\n"));
}
