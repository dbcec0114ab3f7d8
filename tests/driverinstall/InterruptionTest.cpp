// Runs that end in the middle: killed before, or refused by the system in, each of the calls that they make
// after they have taken the lock. The tool runs under strace, which does the killing and refusing.

#include "tests/driverinstall/Trial.h"

#include <fstream>

namespace fs = std::filesystem;

namespace {

/// A "?" lets strace pass over calls that the processor's Linux does not have.
constexpr const char* watchedCalls = "flock,openat,getdents64,mkdirat,read,write,fchown,fchmod,fsync,?"
                                     "utimensat,?renameat,renameat2,unlinkat";

/// The `ordinal`th time that a run makes a call, counted from 1.
struct Moment {
    std::string call;
    int ordinal = 0;
    bool changesDisk = false; ///< being killed before any other call leaves what the next such one finds
};

bool ChangesDisk(const std::string& call, const std::string& line)
{
    if (call == "openat")
        return line.find("O_CREAT") != std::string::npos;
    return call != "flock" && call != "getdents64" && call != "read";
}

using Arguments = std::vector<std::string>;

/// A run to be interrupted, where version 1 is installed.
struct Plan {
    Arguments arguments;
    std::vector<Arguments> outcomes; ///< the snapshots of which one has to be there, that of success last
    Arguments injections = {}; ///< what goes wrong besides
    bool atOnce = true; ///< whether an outcome has to be there already before the next run
};

class InterruptionTest : public Trial {
protected:
    void SetUp() override
    {
        if (Child({ STRACE, "-o", "/dev/null", "/bin/true" }, {}, root / "errors").wait().status != 0)
            GTEST_SKIP() << "strace may not trace here: runs cannot be interrupted";
    }

    void reset() const
    {
        fs::remove_all(extensions);
        makeBundle(installed, "1");
    }

    Arguments tracer(const Arguments& injections) const
    {
        Arguments command
            = { STRACE, "-qq", "-o", (root / "trace").string(), "-e", std::string("trace=") + watchedCalls };
        for (const std::string& injection : injections)
            command.insert(command.end(), { "-e", "inject=" + injection });
        return command;
    }

    /// The moments of the run when nothing more goes wrong, beginning with the lock.
    std::vector<Moment> moments(const Plan& plan)
    {
        reset();
        EXPECT_EQ(run(plan.arguments, tracer(plan.injections)).status, 0);
        std::map<std::string, int> counts;
        std::vector<Moment> found;
        std::ifstream trace(root / "trace");
        for (std::string line; std::getline(trace, line);) {
            const std::string call = line.substr(0, line.find('('));
            const int ordinal = ++counts[call];
            if (counts.contains("flock"))
                found.push_back({ call, ordinal, ChangesDisk(call, line) });
        }
        EXPECT_GT(found.size(), 10U);
        return found;
    }

    /// Ends the run at `moment` as `how` says and checks what is left, then and after the next run.
    void interrupt(const Plan& plan, const Moment& moment, const std::string& how)
    {
        const std::string injection = moment.call + ":" + how + ":when=" + std::to_string(moment.ordinal);
        reset();
        Arguments injections = plan.injections;
        injections.push_back(injection);
        const Ended ended = run(plan.arguments, tracer(injections));
        SCOPED_TRACE(plan.arguments[0] + " with " + injection + ": " + ended.errors);
        EXPECT_EQ(ended.status > 127, how.starts_with("signal")) << ended.status;
        const Arguments left = snapshot(installed);
        EXPECT_TRUE(ended.status != 0 || left == plan.outcomes.back()) << testing::PrintToString(left);

        EXPECT_EQ(run({ "uninstall", "drivername", "Absent.kext" }).status, 0);
        const Arguments after = snapshot(installed);
        EXPECT_THAT(plan.outcomes, testing::Contains(after));
        EXPECT_TRUE(!plan.atOnce || after == left) << testing::PrintToString(left);
        EXPECT_EQ(entries(), after.empty() ? Arguments {} : Arguments { name });
    }

    Plan update = { installArguments(), { whole("1"), whole("2") } };
    Plan removal = { { "uninstall", "drivername", name }, { whole("1"), {} } };
};

TEST_F(InterruptionTest, AKilledRunLeavesTheOldOrTheNewStateWhole)
{
    for (const Plan& plan : { update, removal }) {
        for (const Moment& moment : moments(plan)) {
            if (moment.changesDisk)
                interrupt(plan, moment, "signal=KILL");
        }
    }
}

TEST_F(InterruptionTest, WhereTheFileSystemCannotSwapTheNextRunRestoresWhatAKilledUpdateLeft)
{
    update.injections = { "renameat2:error=EINVAL" };
    update.atOnce = false;
    bool staged = false;
    for (const Moment& moment : moments(update)) {
        staged = staged || moment.call == "renameat";
        if (staged && moment.changesDisk)
            interrupt(update, moment, "signal=KILL");
    }
    EXPECT_TRUE(staged);
}

TEST_F(InterruptionTest, AFailedCallLeavesTheOldOrTheNewStateWhole)
{
    for (const Plan& plan : { update, removal }) {
        for (const Moment& moment : moments(plan))
            interrupt(plan, moment, moment.ordinal % 2 == 0 ? "error=EIO" : "error=ENOSPC");
    }
}

TEST_F(InterruptionTest, AFullDiskKeepsTheOldExtensionAndGivesTheSpaceBackAtOnce)
{
    reset();
    // Full from the second folder on. Writing is left alone: sanitizers write to pipes of their own.
    EXPECT_EQ(run(installArguments(), tracer({ "mkdirat:error=ENOSPC:when=2+" })).status, 74);
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), Arguments { name });
    fs::remove_all(extensions);
    EXPECT_EQ(run(installArguments(), tracer({ "/^mkdir:error=ENOSPC" })).status, 74);
}

TEST_F(InterruptionTest, EvenARefusedCallOpensNothingThatItsEnvironmentNames)
{
    Arguments command = tracer({});
    command.insert(command.end(), { "-E", "TZ=:/named/zone" });
    EXPECT_EQ(run({ "uninstall" }, command).status, 64);
    std::ifstream trace(root / "trace");
    for (std::string line; std::getline(trace, line);)
        EXPECT_EQ(line.find("/named/zone"), std::string::npos) << line;
}

}
