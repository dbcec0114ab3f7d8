#include "LaunchctlFixture.h"

#include <gmock/gmock.h>

#include <sys/socket.h>

#include <csignal>
#include <thread>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class SupervisorTest : public LaunchctlFixture { };

TEST_F(SupervisorTest, AJobThatIsKeptAliveComesBack)
{
    const std::string path = writeJob(
        "a.job", runForLong, "<key>KeepAlive</key><true/><key>ThrottleInterval</key><integer>1</integer>");
    const pid_t first = load(path);
    ASSERT_GT(first, 0);
    kill(first, SIGKILL);
    const pid_t second = notedProcess("a.job", 2);
    EXPECT_NE(second, first);
    EXPECT_THAT(list(), HasSubstr(std::to_string(second) + "\t-9\ta.job\tlaunchd\n"));
    EXPECT_EQ(launchctl({ "unload", path }).status(), 0);
    EXPECT_FALSE(IsAlive(second));
}

TEST_F(SupervisorTest, AJobThatEndsAtOnceWaitsForItsThrottleInterval)
{
    const std::string keepAlive = "<key>KeepAlive</key><true/><key>ThrottleInterval</key>";
    const std::string slow = writeJob("a.slow", "echo $$ >> $NOTE", keepAlive + "<integer>600</integer>");
    const std::string quick = writeJob("b.quick", "echo $$ >> $NOTE", keepAlive + "<integer>1</integer>");
    ASSERT_EQ(launchctl({ "load", slow, quick }).status(), 0);
    EXPECT_NE(notedProcess("b.quick", 3), 0);
    EXPECT_EQ(notes("a.slow").size(), 1U);
    EXPECT_EQ(launchctl({ "unload", slow, quick }).status(), 0);
}

TEST_F(SupervisorTest, NothingOfAJobOutlivesIt)
{
    const std::string stubborn = writeJob("a.stubborn",
        "sleep 600 & echo $! >> $NOTE; trap '' TERM; echo $$ >> $NOTE; while :; do wait; done",
        "<key>KeepAlive</key><true/><key>ExitTimeOut</key><integer>1</integer>");
    const pid_t helper = load(stubborn);
    const pid_t leader = notedProcess("a.stubborn", 2);
    const pid_t left = load(writeJob("b.careless", "sleep 600 & echo $! >> $NOTE; exit 0"));
    ASSERT_TRUE(leader > 0 && helper > 0 && left > 0);
    EXPECT_EQ(launchctl({ "unload", stubborn }).status(), 0);
    EXPECT_FALSE(IsAlive(leader));
    EXPECT_TRUE(Eventually([&] { return !IsAlive(helper) && !IsAlive(left); }));
}

TEST_F(SupervisorTest, LoadWaitsForAJobThatIsBeingStoppedAndStartsItAgain)
{
    const std::string path = writeJob("a.job",
        "trap 'echo stopping >> $NOTE; while [ ! -e $NOTE.go ]; do sleep 0.05; done; exit' TERM; echo $$ >> "
        "$NOTE; while :; do sleep 0.05; done");
    const pid_t first = load(path);
    Launchctl unload = start({ "unload", path });
    ASSERT_TRUE(Eventually([&] { return notes("a.job").size() == 2; }));
    // An updater replaces the file in the meantime.
    writeJob("a.job", runForLong);
    Launchctl load = start({ "load", path });
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // so that it meets the job as it stops
    EXPECT_THAT(list(), HasSubstr("-\t0\ta.job\tlaunchd\n"))
        << "a process on its way out is not the job's any more";
    EXPECT_THAT(launchctl({ "list", "a.job" }).out(), Not(HasSubstr("PID")));
    Write(noteFile("a.job").string() + ".go", "");

    EXPECT_EQ(unload.status(), 0);
    EXPECT_EQ(load.status(), 0) << load.error();
    const pid_t second = notedProcess("a.job", 3);
    EXPECT_FALSE(IsAlive(first));
    EXPECT_TRUE(IsAlive(second));
}

TEST_F(SupervisorTest, UnloadFindsAJobByThePathOfALostFileOrTheLabelOfAMovedOne)
{
    const std::string lost = writeJob("a.lost", runForLong);
    const std::string moved = writeJob("b.moved", runForLong);
    ASSERT_EQ(launchctl({ "load", lost, moved }).status(), 0);
    const pid_t job = notedProcess("a.lost", 1);
    fs::rename(fVolume / lost.substr(1), fTemporary / "trash.plist");
    EXPECT_EQ(launchctl({ "unload", lost }).status(), 0);
    EXPECT_FALSE(IsAlive(job));
    fs::rename(fVolume / moved.substr(1), fVolume / "elsewhere.plist");
    EXPECT_EQ(launchctl({ "unload", "/elsewhere.plist" }).status(), 0);
    EXPECT_EQ(list(), "PID\tStatus\tLabel\tManager\n");
}

TEST_F(SupervisorTest, FirstLoadsAtTheSameTimeShareOneSupervisor)
{
    std::vector<Launchctl> loads;
    for (const char* label : { "a", "b", "c", "d", "e", "f" })
        loads.push_back(start({ "load", writeJob(label, runForLong) }));
    for (Launchctl& load : loads)
        EXPECT_EQ(load.status(), 0) << load.error();
    const std::string all = list();
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 7) << all;
}

TEST_F(SupervisorTest, ALoadThatMeetsTheEndOfTheSupervisorIsNotLost)
{
    const std::string first = writeJob("a.job", runForLong);
    const std::string second = writeJob("b.job", runForLong);
    for (int round = 0; round < 15; ++round) {
        ASSERT_EQ(launchctl({ "load", first }).status(), 0);
        Launchctl unload = start({ "unload", first });
        Launchctl load = start({ "load", second });
        ASSERT_EQ(unload.status(), 0) << unload.error();
        ASSERT_EQ(load.status(), 0) << load.error();
        ASSERT_THAT(list(), HasSubstr("\tb.job\tlaunchd\n"));
        ASSERT_EQ(launchctl({ "unload", second }).status(), 0);
    }
}

TEST_F(SupervisorTest, ASupervisorThatIsAskedToEndEndsItsJobsProperly)
{
    const std::string path = writeJob("a.job",
        "trap 'echo properly >> $NOTE; exit' TERM; echo $$ >> $NOTE; while :; do sleep 0.05; done",
        "<key>KeepAlive</key><true/>");
    const pid_t job = load(path);
    const pid_t server = supervisor();
    ASSERT_GT(server, 0);
    kill(server, SIGTERM);
    EXPECT_TRUE(Eventually([&] { return !IsAlive(server); }));
    EXPECT_FALSE(IsAlive(job));
    EXPECT_THAT(notes("a.job"), ElementsAre(std::to_string(job), "properly"));
    EXPECT_FALSE(fs::exists(runtimeFolder()));
}

TEST_F(SupervisorTest, AfterASupervisorWasKilledTheNextLoadStartsAfresh)
{
    const std::string path = writeJob("a.job", runForLong);
    const pid_t job = load(path);
    const pid_t server = supervisor();
    ASSERT_GT(server, 0);
    kill(server, SIGKILL);
    EXPECT_TRUE(Eventually([&] { return !IsAlive(server) && !IsAlive(job); })) << "a job must not outlive it";
    EXPECT_EQ(list(), "PID\tStatus\tLabel\tManager\n");
    EXPECT_EQ(launchctl({ "unload", path }).status(), 113);

    Launchctl again = launchctl({ "load", path });
    EXPECT_EQ(again.status(), 0) << again.error();
    EXPECT_TRUE(IsAlive(notedProcess("a.job", 2)));
}

TEST_F(SupervisorTest, ClientsThatHangOrTalkNonsenseKeepNobodyFromBeingServed)
{
    const std::string path = writeJob("a.job", runForLong);
    ASSERT_EQ(launchctl({ "load", path }).status(), 0);
    std::vector<Descriptor> clients;
    for (int count = 0; count < 60; ++count) {
        clients.push_back(connection());
        ASSERT_TRUE(clients.back());
        send(clients.back().get(), "\0\0\1", 3, MSG_NOSIGNAL);
    }
    EXPECT_THAT(list(), HasSubstr("\ta.job\tlaunchd\n"));

    const Descriptor greedy = connection();
    send(greedy.get(), "\377\377\377\377", 4, MSG_NOSIGNAL);
    char byte = 0;
    EXPECT_LE(recv(greedy.get(), &byte, 1, 0), 0) << "a request beyond all bounds is not waited for";

    const Descriptor confused = connection();
    send(confused.get(), "\0\0\0\4what", 8, MSG_NOSIGNAL);
    std::string answer(4096, '\0');
    EXPECT_GT(recv(confused.get(), answer.data(), answer.size(), 0), 0);
    EXPECT_EQ(launchctl({ "unload", path }).status(), 0);
}
