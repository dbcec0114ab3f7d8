#include "LaunchctlFixture.h"

#include "platform/tools/launchd/job/Job.h"

#include <gmock/gmock.h>

#include <csignal>

using namespace launchd;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

const std::string good = "<key>Label</key><string>a.b-c_1</string><key>Program</key><string>/bin/a</string>";

std::optional<Job> Parse(const std::string& keys)
{
    std::string problem;
    return ParseJob(PropertyList(keys), problem);
}

std::string ProblemOf(const std::string& bytes)
{
    std::string problem;
    EXPECT_FALSE(ParseJob(bytes, problem));
    return problem;
}

}

TEST(JobTest, EveryKeyReachesItsPlace)
{
    const auto job = Parse(good + R"(
        <key>ProgramArguments</key><array><string>b</string><string></string></array>
        <key>Disabled</key><true/><key>RunAtLoad</key><true/><key>Unknown</key><date>2020-01-01T00:00:00Z</date>
        <key>KeepAlive</key><dict><key>SuccessfulExit</key><false/><key>NetworkState</key><true/></dict>
        <key>LimitLoadToSessionType</key><array><string>Aqua</string><string>Background</string></array>
        <key>EnvironmentVariables</key><dict><key>A</key><string>1=2</string></dict>
        <key>WorkingDirectory</key><string>/w</string><key>StandardOutPath</key><string>/o</string>
        <key>StandardErrorPath</key><string>/e</string>
        <key>ThrottleInterval</key><integer>0</integer><key>ExitTimeOut</key><integer>3</integer>)");
    ASSERT_TRUE(job);
    EXPECT_EQ(job->label + ' ' + job->program, "a.b-c_1 /bin/a");
    EXPECT_THAT(job->arguments, ElementsAre("b", ""));
    EXPECT_TRUE(job->disabled && job->runAtLoad && !job->keepAlive.always && !job->keepAlive.crashed);
    EXPECT_EQ(job->keepAlive.successfulExit, false);
    EXPECT_TRUE(job->isFor("Background") && !job->isFor("LoginWindow"));
    EXPECT_THAT(job->environment, ElementsAre(Pair("A", "1=2")));
    EXPECT_EQ(job->workingDirectory + job->standardOutPath + job->standardErrorPath, "/w/o/e");
    EXPECT_EQ(job->throttleInterval.count(), 1) << "no interval at all would keep the machine busy";
    EXPECT_EQ(job->exitTimeOut.count(), 3);
}

TEST(JobTest, TheShortestJobGetsTheUsualValues)
{
    const auto job = Parse("<key>Label</key><string>a</string>"
                           "<key>ProgramArguments</key><array><string>/bin/b</string></array>");
    ASSERT_TRUE(job);
    EXPECT_EQ(job->program, "/bin/b");
    EXPECT_TRUE(job->isFor("Aqua") && !job->disabled && !job->startsAtLoad());
    EXPECT_EQ(job->throttleInterval.count(), 10);
    EXPECT_EQ(job->exitTimeOut.count(), 20);
    EXPECT_THAT(Parse(good)->arguments, ElementsAre("/bin/a"));
}

TEST(JobTest, RefusalsNameTheKeyAtFault)
{
    const std::string label = "<key>Label</key><string>a</string>";
    const std::string program = "<key>Program</key><string>/bin/a</string>";
    const auto text = [](const std::string& key, const std::string& value) {
        return "<key>" + key + "</key><string>" + value + "</string>";
    };
    const std::pair<std::string, const char*> rows[] = {
        { program, "Label is missing" },
        { "<key>Label</key><integer>1</integer>" + program, "Label is not a string" },
        { text("Label", "") + program, "Label is not 1 to 255" },
        { text("Label", "a/b") + program, "Label is not 1 to 255" },
        { text("Label", std::string(256, 'a')) + program, "Label is not 1 to 255" },
        { label, "Program and ProgramArguments are both missing" },
        { label + text("Program", ""), "Program is empty" },
        { label + text("Program", "bin/a"), "Program is not an absolute path" },
        { label + text("Program", "/" + std::string(5000, 'a')), "Program is too long" },
        { label + "<key>ProgramArguments</key><array/>", "ProgramArguments is empty" },
        { label + "<key>ProgramArguments</key><array><string>a</string></array>", "is not an absolute path" },
        { label + "<key>ProgramArguments</key><array><true/></array>", "is not an array of strings" },
        { label + text("ProgramArguments", "/a"), "ProgramArguments is not an array of strings" },
        { good + text("RunAtLoad", "yes"), "RunAtLoad is not a boolean" },
        { good + "<key>LimitLoadToSessionType</key><true/>", "SessionType is not an array" },
        { good + text("WorkingDirectory", "w"), "WorkingDirectory is not an absolute path" },
        { good + text("StandardOutPath", ""), "StandardOutPath is not an absolute path" },
        { good + text("KeepAlive", "yes"), "KeepAlive is not a boolean" },
        { good + "<key>KeepAlive</key><dict>" + text("Crashed", "") + "</dict>",
            "KeepAlive: Crashed is not a bool" },
        { good + "<key>EnvironmentVariables</key><dict><key>A</key><true/></dict>",
            "EnvironmentVariables is not" },
        { good + "<key>EnvironmentVariables</key><dict>" + text("A=", "") + "</dict>",
            "EnvironmentVariables has a" },
        { good + "<key>ThrottleInterval</key><integer>-1</integer>",
            "ThrottleInterval is not an integer from 0" },
        { good + "<key>ExitTimeOut</key><real>1.5</real>", "ExitTimeOut is not an integer" },
        { good + "<key>ExitTimeOut</key><integer>9999999999</integer>", "ExitTimeOut is not an integer" },
    };
    for (const auto& [keys, problem] : rows)
        EXPECT_THAT(ProblemOf(PropertyList(keys)), HasSubstr(problem)) << keys;
    const std::string whole = PropertyList(good);
    for (const std::string& bytes :
        { std::string(), whole.substr(0, whole.size() / 2), std::string("<plist><array/></plist>"),
            std::string("bplist00"), std::string(maxJobBytes + 1, ' ') })
        EXPECT_NE(ProblemOf(bytes), "") << bytes.substr(0, 40);
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
        const auto job = Parse(good + "<key>KeepAlive</key>" + row.keepAlive);
        ASSERT_TRUE(job);
        EXPECT_EQ(job->keepAlive.restartsAfter(row.waitStatus), row.restarts)
            << row.keepAlive << " after " << row.waitStatus;
    }
}
