// Runs that end in the middle: killed before, or refused by the system in, each of the calls that they make
// after they have taken the lock. The tool runs under strace, which does the killing and refusing.

#include "tests/driverinstall/Trial.h"

#include <fstream>
#include <map>

namespace fs = std::filesystem;

namespace {

/// The calls that change the disk. A "?" lets strace pass over those that this kind of Linux does not have.
constexpr const char* changes
    = "flock,mkdirat,write,fchown,fchmod,fsync,?utimensat,?renameat,renameat2,unlinkat";
constexpr const char* readings = ",openat,getdents64,read";

/// A run to be interrupted, where version 1 is installed.
struct Plan {
    Texts arguments;
    std::vector<Texts> outcomes; ///< the snapshots of which one has to be there, that of success last
    Texts injections = {}; ///< what goes wrong besides
    bool atOnce = true; ///< whether an outcome has to be there already before the next run
};

class InterruptionTest : public Trial {
protected:
    void SetUp() override
    {
        if (Child({ STRACE, "-o", "/dev/null", "/bin/true" }, root / "errors").wait().status != 0)
            GTEST_SKIP() << "strace may not trace here: runs cannot be interrupted";
    }

    /// The leak check cannot run in a program that is being traced.
    Texts tracer(const Texts& injections, const std::string& calls = "all") const
    {
        Texts command = { STRACE, "-qq", "-o", (root / "trace").string(), "-E", "ASAN_OPTIONS=detect_leaks=0",
            "-e", "trace=" + calls };
        for (const std::string& injection : injections)
            command.insert(command.end(), { "-e", "inject=" + injection });
        return command;
    }

    void reset() const
    {
        fs::remove_all(extensions);
        makeBundle(installed, "1");
    }

    /// The calls of the run when nothing more goes wrong, beginning with the lock, as "CALL:when=ORDINAL".
    Texts moments(const Plan& plan, const std::string& calls)
    {
        reset();
        EXPECT_EQ(run(plan.arguments, tracer(plan.injections, calls)).status, 0);
        std::map<std::string, int> counts;
        Texts found;
        std::ifstream trace(root / "trace");
        for (std::string line; std::getline(trace, line);) {
            const std::string call = line.substr(0, line.find('('));
            const int ordinal = ++counts[call];
            if (counts.contains("flock"))
                found.push_back(call + ":when=" + std::to_string(ordinal));
        }
        EXPECT_GT(found.size(), 10U);
        return found;
    }

    /// Ends the run at `moment` as `how` says and checks what is left, then and after the next run.
    void interrupt(const Plan& plan, const std::string& moment, const std::string& how)
    {
        reset();
        Texts injections = plan.injections;
        injections.push_back(moment + how);
        const Ended ended = run(plan.arguments, tracer(injections));
        SCOPED_TRACE(plan.arguments[0] + " with " + injections.back() + ": " + ended.errors);
        EXPECT_EQ(ended.status > 127, how == ":signal=KILL") << ended.status;
        const Texts left = snapshot(installed);
        EXPECT_TRUE(ended.status != 0 || left == plan.outcomes.back()) << testing::PrintToString(left);

        EXPECT_EQ(uninstall("Absent.kext").status, 0);
        const Texts after = snapshot(installed);
        EXPECT_THAT(plan.outcomes, testing::Contains(after));
        EXPECT_TRUE(!plan.atOnce || after == left) << testing::PrintToString(left);
        EXPECT_EQ(entries(), after.empty() ? Texts {} : Texts { name });
    }

    Plan update = { installArguments, { whole("1"), whole("2") } };
    Plan removal = { { "uninstall", "drivername", name }, { whole("1"), {} } };
};

TEST_F(InterruptionTest, AKilledRunLeavesTheOldOrTheNewStateWhole)
{
    for (const Plan& plan : { update, removal }) {
        for (const std::string& moment : moments(plan, changes))
            interrupt(plan, moment, ":signal=KILL");
    }
}

TEST_F(InterruptionTest, WhereTheFileSystemCannotSwapTheNextRunRestoresWhatAKilledUpdateLeft)
{
    update.injections = { "renameat2:error=EINVAL" };
    update.atOnce = false;
    for (const std::string& moment : moments(update, "flock,renameat,fsync,unlinkat"))
        interrupt(update, moment, ":signal=KILL");
}

TEST_F(InterruptionTest, AFailedCallLeavesTheOldOrTheNewStateWhole)
{
    for (const Plan& plan : { update, removal }) {
        for (const std::string& moment : moments(plan, std::string(changes) + readings))
            interrupt(plan, moment, ":error=EIO");
    }
}

TEST_F(InterruptionTest, AFullDiskKeepsTheOldExtensionAndGivesTheSpaceBackAtOnce)
{
    reset();
    // Full from the second folder on. Writing is left alone: sanitizers write to pipes of their own.
    EXPECT_EQ(run(installArguments, tracer({ "mkdirat:error=ENOSPC:when=2+" })).status, 74);
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), Texts { name });
    fs::remove_all(extensions);
    EXPECT_EQ(run(installArguments, tracer({ "/^mkdir:error=ENOSPC" })).status, 74);
}

TEST_F(InterruptionTest, EvenARefusedCallOpensNothingThatItsEnvironmentNames)
{
    Texts command = tracer({}, "openat");
    command.insert(command.end(), { "-E", "TZ=:/named/zone" });
    EXPECT_EQ(run({ "uninstall" }, command).status, 64);
    EXPECT_THAT(ReadText(root / "trace"), testing::Not(testing::HasSubstr("/named/zone")));
}

}
