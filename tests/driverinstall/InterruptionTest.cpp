// Runs that end in the middle: killed before, or refused by the system in, each of the calls that they make
// after they have taken the lock. The tool runs under strace, which does the killing and refusing.

#include "tests/driverinstall/Trial.h"

#include <algorithm>
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

class InterruptionTest : public Trial {
protected:
    using Arguments = std::vector<std::string>;

    void SetUp() override
    {
        if (Child({ STRACE, "-o", "/dev/null", "/bin/true" }, {}, root / "errors").wait().status != 0)
            GTEST_SKIP() << "strace may not trace here: runs cannot be interrupted";
    }

    /// Makes the folder of extensions hold version 1, and a second, unrelated extension.
    void reset() const
    {
        fs::remove_all(extensions);
        makeBundle(installed, "1");
    }

    Arguments tracer(const Arguments& injections) const
    {
        Arguments command
            = { STRACE, "-qq", "-o", (root / "trace").string(), "-e", std::string("trace=") + watchedCalls };
        for (const std::string& injection : injections) {
            command.emplace_back("-e");
            command.push_back("inject=" + injection);
        }
        return command;
    }

    /// The moments of an undisturbed run, beginning with the lock.
    std::vector<Moment> moments(const Arguments& arguments, const Arguments& injections = {})
    {
        reset();
        EXPECT_EQ(run(arguments, tracer(injections)).status, 0);
        std::map<std::string, int> counts;
        std::vector<Moment> found;
        std::ifstream trace(root / "trace");
        for (std::string line; std::getline(trace, line);) {
            const size_t end = line.find('(');
            if (end == std::string::npos)
                continue;
            const std::string call = line.substr(0, end);
            const int ordinal = ++counts[call];
            if (counts.contains("flock"))
                found.push_back({ call, ordinal, ChangesDisk(call, line) });
        }
        EXPECT_GT(found.size(), 10U);
        return found;
    }

    /// Ends a run at `moment` as `how` says and checks what is left, then and after the next run.
    /// @param outcomes the snapshots of which one has to be there. @param atOnce whether already before the
    /// next run.
    void interrupt(const Arguments& arguments, Arguments injections, const Moment& moment,
        const std::string& how, const std::vector<std::vector<std::string>>& outcomes, bool atOnce = true)
    {
        const std::string injection = moment.call + ":" + how + ":when=" + std::to_string(moment.ordinal);
        SCOPED_TRACE(arguments[0] + " with " + injection);
        reset();
        injections.push_back(injection);
        const Ended ended = run(arguments, tracer(injections));
        const bool isKill = how.starts_with("signal");
        EXPECT_EQ(ended.status > 127, isKill) << ended.status << " " << ended.errors;
        const std::vector<std::string> left = snapshot(installed);
        EXPECT_TRUE(!atOnce || std::count(outcomes.begin(), outcomes.end(), left) == 1)
            << ended.errors << testing::PrintToString(left);
        EXPECT_TRUE(ended.status != 0 || left == outcomes.back()) << testing::PrintToString(left);

        EXPECT_EQ(run({ "uninstall", "drivername", "Absent.kext" }).status, 0);
        const std::vector<std::string> after = snapshot(installed);
        EXPECT_THAT(outcomes, testing::Contains(after));
        EXPECT_TRUE(!atOnce || after == left) << testing::PrintToString(after);
        EXPECT_EQ(entries(), after.empty() ? Arguments {} : Arguments { name });
    }
};

TEST_F(InterruptionTest, AKilledUpdateLeavesTheOldOrTheNewExtensionWhole)
{
    for (const Moment& moment : moments(installArguments())) {
        if (moment.changesDisk)
            interrupt(installArguments(), {}, moment, "signal=KILL", { whole("1"), whole("2") });
    }
}

TEST_F(InterruptionTest, AKilledUninstallLeavesTheOldExtensionWholeOrNothing)
{
    const Arguments arguments = { "uninstall", "drivername", name };
    for (const Moment& moment : moments(arguments)) {
        if (moment.changesDisk)
            interrupt(arguments, {}, moment, "signal=KILL", { whole("1"), {} });
    }
}

TEST_F(InterruptionTest, WhereTheFileSystemCannotSwapTheNextRunRestoresWhatAKilledUpdateLeft)
{
    const Arguments noSwap = { "renameat2:error=EINVAL" };
    bool staged = false;
    for (const Moment& moment : moments(installArguments(), noSwap)) {
        staged = staged || moment.call == "renameat";
        if (staged && moment.changesDisk)
            interrupt(installArguments(), noSwap, moment, "signal=KILL", { whole("1"), whole("2") }, false);
    }
    EXPECT_TRUE(staged);
}

TEST_F(InterruptionTest, AFailedCallLeavesTheOldOrTheNewExtensionWhole)
{
    const std::vector<Moment> updating = moments(installArguments());
    for (size_t index = 0; index < updating.size(); index += 2)
        interrupt(installArguments(), {}, updating[index], index % 4 == 0 ? "error=EIO" : "error=ENOSPC",
            { whole("1"), whole("2") });
    const Arguments arguments = { "uninstall", "drivername", name };
    for (const Moment& moment : moments(arguments))
        interrupt(arguments, {}, moment, "error=EIO", { whole("1"), {} });
}

TEST_F(InterruptionTest, AFullDiskKeepsTheOldExtensionAndGivesTheSpaceBackAtOnce)
{
    reset();
    // Full from the second folder on. Writing is left alone: sanitizers write to pipes of their own.
    EXPECT_EQ(run(installArguments(), tracer({ "mkdirat:error=ENOSPC:when=2+" })).status, 74);
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), Arguments { name });
}

}
