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
};

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

    /// The moments of an undisturbed run, beginning with the lock; at most `most`, evenly chosen.
    std::vector<Moment> moments(const Arguments& arguments, const Arguments& injections, size_t most)
    {
        reset();
        EXPECT_EQ(run(arguments, tracer(injections)).status, 0);
        std::map<std::string, int> counts;
        std::vector<Moment> found;
        std::ifstream trace(root / "trace");
        for (std::string line; std::getline(trace, line);) {
            const std::string call = line.substr(0, line.find('('));
            const int ordinal = ++counts[call];
            if (counts.contains("flock")
                && call.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789") == std::string::npos)
                found.push_back({ call, ordinal });
        }
        EXPECT_GT(found.size(), 10U);
        std::vector<Moment> chosen;
        for (size_t index = 0; index < std::min(most, found.size()); ++index)
            chosen.push_back(found[index * found.size() / std::min(most, found.size())]);
        return chosen;
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
    for (const Moment& moment : moments(installArguments(), {}, 90))
        interrupt(installArguments(), {}, moment, "signal=KILL", { whole("1"), whole("2") });
}

TEST_F(InterruptionTest, AKilledUninstallLeavesTheOldExtensionWholeOrNothing)
{
    const Arguments arguments = { "uninstall", "drivername", name };
    for (const Moment& moment : moments(arguments, {}, 60))
        interrupt(arguments, {}, moment, "signal=KILL", { whole("1"), {} });
}

TEST_F(InterruptionTest, WhereTheFileSystemCannotSwapTheNextRunRestoresWhatAKilledUpdateLeft)
{
    const Arguments noSwap = { "renameat2:error=EINVAL" };
    for (const Moment& moment : moments(installArguments(), noSwap, 200)) {
        const bool isAfterStaging
            = moment.call == "renameat" || moment.call == "unlinkat" || moment.call == "utimensat";
        if (isAfterStaging)
            interrupt(installArguments(), noSwap, moment, "signal=KILL", { whole("1"), whole("2") }, false);
    }
}

TEST_F(InterruptionTest, AFailedCallLeavesTheOldOrTheNewExtensionWhole)
{
    for (const char* error : { "error=ENOSPC", "error=EIO" }) {
        for (const Moment& moment : moments(installArguments(), {}, 40))
            interrupt(installArguments(), {}, moment, error, { whole("1"), whole("2") });
        const Arguments arguments = { "uninstall", "drivername", name };
        for (const Moment& moment : moments(arguments, {}, 20))
            interrupt(arguments, {}, moment, error, { whole("1"), {} });
    }
}

TEST_F(InterruptionTest, AFullDiskKeepsTheOldExtensionAndGivesTheSpaceBackAtOnce)
{
    const std::vector<Moment> all = moments(installArguments(), {}, 1000);
    const auto copying
        = std::find_if(all.begin(), all.end(), [](const Moment& m) { return m.call == "write"; });
    ASSERT_NE(copying, all.end());
    reset();
    const std::string fromThenOn = "write:error=ENOSPC:when=" + std::to_string(copying->ordinal) + "+";
    EXPECT_EQ(run(installArguments(), tracer({ fromThenOn })).status, 74);
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), Arguments { name });
}

}
