#include "LaunchctlFixture.h"

#include "platform/tools/launchd/Job.h"

#include <gmock/gmock.h>

#include <csignal>

using namespace launchd;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

constexpr const char* good
    = "<key>Label</key><string>a.b-c_1</string><key>Program</key><string>/bin/a</string>";

std::optional<Job> Parse(const std::string& keys)
{
    std::string problem;
    return ParseJob(PropertyList(keys), problem);
}

std::string ProblemOf(const std::string& keys)
{
    std::string problem;
    EXPECT_FALSE(ParseJob(PropertyList(keys), problem)) << keys;
    return problem;
}

}

TEST(JobTest, EveryKeyReachesItsPlace)
{
    const auto job = Parse(std::string(good) + R"(
        <key>ProgramArguments</key><array><string>b</string><string></string></array>
        <key>Disabled</key><true/><key>RunAtLoad</key><true/><key>Unknown</key><date>2020-01-01T00:00:00Z</date>
        <key>KeepAlive</key><dict><key>SuccessfulExit</key><false/><key>NetworkState</key><true/></dict>
        <key>LimitLoadToSessionType</key><array><string>Aqua</string><string>Background</string></array>
        <key>EnvironmentVariables</key><dict><key>A</key><string>1=2</string></dict>
        <key>WorkingDirectory</key><string>/w</string><key>StandardOutPath</key><string>/o</string>
        <key>StandardErrorPath</key><string>/e</string>
        <key>ThrottleInterval</key><integer>0</integer><key>ExitTimeOut</key><integer>3</integer>)");
    ASSERT_TRUE(job);
    EXPECT_EQ(job->label, "a.b-c_1");
    EXPECT_EQ(job->program, "/bin/a");
    EXPECT_THAT(job->arguments, ElementsAre("b", ""));
    EXPECT_TRUE(job->disabled && job->runAtLoad && !job->keepAlive.always);
    EXPECT_EQ(job->keepAlive.successfulExit, false);
    EXPECT_FALSE(job->keepAlive.crashed);
    EXPECT_TRUE(job->isFor("Background"));
    EXPECT_FALSE(job->isFor("LoginWindow"));
    EXPECT_THAT(job->environment, ElementsAre(Pair("A", "1=2")));
    EXPECT_EQ(job->workingDirectory + job->standardOutPath + job->standardErrorPath, "/w/o/e");
    EXPECT_EQ(job->throttleInterval.count(), 1) << "no interval at all would keep the machine busy";
    EXPECT_EQ(job->exitTimeOut.count(), 3);
}

TEST(JobTest, TheShortestJobGetsTheUsualValues)
{
    const auto job = Parse("<key>Label</key><string>a</string><key>ProgramArguments</key><array><string>/bin/"
                           "b</string></array>");
    ASSERT_TRUE(job);
    EXPECT_EQ(job->program, "/bin/b");
    EXPECT_FALSE(job->disabled || job->startsAtLoad());
    EXPECT_TRUE(job->isFor("Aqua"));
    EXPECT_EQ(job->throttleInterval.count(), 10);
    EXPECT_EQ(job->exitTimeOut.count(), 20);
    EXPECT_THAT(Parse(good)->arguments, ElementsAre("/bin/a"));
}

TEST(JobTest, RefusalsNameTheKeyAtFault)
{
    const std::string label = "<key>Label</key><string>a</string>";
    const std::string program = "<key>Program</key><string>/bin/a</string>";
    const auto with = [](const std::string& keys) { return good + keys; };
    const struct {
        std::string keys;
        const char* problem;
    } rows[] = {
        { program, "Label is missing" },
        { "<key>Label</key><integer>1</integer>" + program, "Label is not a string" },
        { "<key>Label</key><string></string>" + program, "Label is not 1 to 255" },
        { "<key>Label</key><string>a/b</string>" + program, "Label is not 1 to 255" },
        { "<key>Label</key><string>" + std::string(256, 'a') + "</string>" + program,
            "Label is not 1 to 255" },
        { label, "Program and ProgramArguments are both missing" },
        { label + "<key>Program</key><string></string>", "Program is empty" },
        { label + "<key>Program</key><string>bin/a</string>", "Program is not an absolute path" },
        { label + "<key>Program</key><string>/" + std::string(5000, 'a') + "</string>",
            "Program is too long" },
        { label + "<key>ProgramArguments</key><array/>", "ProgramArguments is empty" },
        { label + "<key>ProgramArguments</key><array><string>a</string></array>",
            "ProgramArguments is not an abs" },
        { label + "<key>ProgramArguments</key><array><true/></array>",
            "ProgramArguments is not an array of str" },
        { label + "<key>ProgramArguments</key><string>/a</string>",
            "ProgramArguments is not an array of strings" },
        { with("<key>KeepAlive</key><integer>1</integer>"), "KeepAlive is not a boolean" },
        { with("<key>KeepAlive</key><dict><key>Crashed</key><string/></dict>"),
            "KeepAlive: Crashed is not a bool" },
        { with("<key>RunAtLoad</key><string>yes</string>"), "RunAtLoad is not a boolean" },
        { with("<key>Disabled</key><integer>0</integer>"), "Disabled is not a boolean" },
        { with("<key>LimitLoadToSessionType</key><true/>"), "LimitLoadToSessionType is not an array" },
        { with("<key>EnvironmentVariables</key><dict><key>A</key><true/></dict>"),
            "EnvironmentVariables is not" },
        { with("<key>EnvironmentVariables</key><dict><key>A=</key><string/></dict>"),
            "EnvironmentVariables has a" },
        { with("<key>WorkingDirectory</key><string>w</string>"), "WorkingDirectory is not an absolute path" },
        { with("<key>StandardOutPath</key><string></string>"), "StandardOutPath is not an absolute path" },
        { with("<key>ThrottleInterval</key><integer>-1</integer>"),
            "ThrottleInterval is not an integer from 0" },
        { with("<key>ExitTimeOut</key><real>1.5</real>"), "ExitTimeOut is not an integer" },
        { with("<key>ExitTimeOut</key><integer>9999999999</integer>"), "ExitTimeOut is not an integer" },
    };
    for (const auto& row : rows)
        EXPECT_THAT(ProblemOf(row.keys), HasSubstr(row.problem)) << row.keys;
}

TEST(JobTest, WhatIsNoDictionaryIsRefused)
{
    const std::string whole = PropertyList(good);
    const std::string rows[] = { "", "nonsense", whole.substr(0, whole.size() / 2), "<plist><array/></plist>",
        "bplist00", std::string(maxJobBytes + 1, ' ') };
    for (const std::string& bytes : rows) {
        std::string problem;
        EXPECT_FALSE(ParseJob(bytes, problem)) << bytes.substr(0, 40);
        EXPECT_NE(problem, "");
    }
}

TEST(JobTest, KeepAliveConditionsDecideByHowTheProgramEnded)
{
    const int success = 0;
    const int failure = 1 << 8;
    const int crash = SIGSEGV;
    const int ended = SIGTERM;
    const struct {
        const char* keepAlive;
        int waitStatus;
        bool restarts;
    } rows[] = {
        { "<true/>", success, true },
        { "<false/>", failure, false },
        { "<dict/>", crash, false },
        { "<dict><key>SuccessfulExit</key><true/></dict>", success, true },
        { "<dict><key>SuccessfulExit</key><true/></dict>", failure, false },
        { "<dict><key>SuccessfulExit</key><false/></dict>", success, false },
        { "<dict><key>SuccessfulExit</key><false/></dict>", ended, true },
        { "<dict><key>Crashed</key><true/></dict>", crash, true },
        { "<dict><key>Crashed</key><true/></dict>", ended, false },
        { "<dict><key>Crashed</key><false/></dict>", success, true },
        { "<dict><key>Crashed</key><true/><key>SuccessfulExit</key><true/></dict>", success, true },
    };
    for (const auto& row : rows) {
        const auto job = Parse(good + std::string("<key>KeepAlive</key>") + row.keepAlive);
        ASSERT_TRUE(job);
        EXPECT_EQ(job->keepAlive.restartsAfter(row.waitStatus), row.restarts)
            << row.keepAlive << " after " << row.waitStatus;
    }
}
