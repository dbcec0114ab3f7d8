// Runs that meet.

#include "tests/driverinstall/Trial.h"

#include "tools/driverinstall/DriverInstall.h"
#include "tools/driverinstall/ExtensionsFolder.h"
#include <atomic>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace {

using std::chrono::milliseconds;

class LockTest : public Trial {
protected:
    ExitCode take(ExtensionsFolder& folder) const
    {
        return folder.open(extensions.string(), ExtensionsFolder::Missing::accept, milliseconds(0)).code;
    }
};

TEST_F(LockTest, ARunWaitsForTheOneBeforeItAndThenReadsTheSource)
{
    std::optional<ExtensionsFolder> before(std::in_place);
    ASSERT_EQ(take(*before), ExitCode::ok);
    EXPECT_EQ(UninstallExtension(extensions.string(), name, milliseconds(0)).code, ExitCode::busy);
    const Child waiting = start(installArguments());
    usleep(300'000);
    EXPECT_TRUE(waiting.isRunning());
    EXPECT_FALSE(std::filesystem::exists(installed));
    std::filesystem::remove_all(bundle);
    makeBundle(bundle, "3");
    before.reset();
    EXPECT_EQ(waiting.wait().errors, "driverinstall: installed Dock.kext 3\n");
}

TEST_F(LockTest, NoStrangerCanHoldUpRoot)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs a second user";
    std::optional<ExtensionsFolder> before(std::in_place);
    ASSERT_EQ(take(*before), ExitCode::ok);
    ASSERT_EQ(seteuid(nobody), 0);
    std::vector<int> held;
    for (const std::string& path : { extensions.string(), (extensions / entries().at(0)).string() }) {
        held.push_back(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        (void)flock(held.back(), LOCK_EX | LOCK_NB);
    }
    ASSERT_EQ(seteuid(0), 0);
    before.reset();
    EXPECT_EQ(UninstallExtension(extensions.string(), name, milliseconds(0)).code, ExitCode::ok);
    for (const int descriptor : held)
        close(descriptor);
}

TEST_F(LockTest, OneRunAtATimeHasTheFolderAndTheLastLeavesNothingInIt)
{
    std::atomic<int> inside = 0;
    std::atomic<int> meetings = 0;
    const auto comeAndGo = [&] {
        for (int turns = 0; turns < 2000;) {
            ExtensionsFolder folder;
            if (take(folder) != ExitCode::ok)
                continue;
            meetings += inside++;
            ++turns;
            --inside;
        }
    };
    std::thread other(comeAndGo);
    comeAndGo();
    other.join();
    EXPECT_EQ(meetings, 0);
    EXPECT_TRUE(entries().empty());
}

TEST_F(LockTest, RunsAtTheSameTimeEachLeaveAWholeExtension)
{
    makeBundle(root / "other" / name, "3");
    std::vector<Child> children;
    for (int turn = 0; turn < 4; ++turn) {
        children.push_back(start(installArguments()));
        children.push_back(
            start({ "install", "drivername", name, "sourcedirectory", (root / "other").string() }));
    }
    for (const Child& child : children)
        EXPECT_EQ(child.wait().status, 0);
    EXPECT_TRUE(snapshot(installed) == whole("2") || snapshot(installed) == whole("3"));
    EXPECT_EQ(entries(), std::vector<std::string> { name });
}

}
