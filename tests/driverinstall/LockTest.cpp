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

class LockTest : public Trial {
protected:
    bool take(ExtensionsFolder& folder) const
    {
        return folder.open(extensions.string(), ExtensionsFolder::Missing::accept, {}).ok();
    }
};

TEST_F(LockTest, ARunWaitsForTheOneBeforeItAndThenReadsTheSource)
{
    std::optional<ExtensionsFolder> before(std::in_place);
    ASSERT_TRUE(take(*before));
    EXPECT_EQ(UninstallExtension(extensions.string(), name, {}).code, ExitCode::busy);
    const Child waiting = start(installArguments);
    usleep(300'000);
    EXPECT_TRUE(waiting.isRunning());
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
    ASSERT_TRUE(take(*before));
    const std::string lock = extensions / entries().at(0);
    ASSERT_EQ(seteuid(nobody), 0);
    const int folder = open(extensions.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_EQ(flock(folder, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(open(lock.c_str(), O_RDONLY | O_CLOEXEC), -1);
    ASSERT_EQ(seteuid(0), 0);
    before.reset();
    EXPECT_EQ(UninstallExtension(extensions.string(), name, {}).code, ExitCode::ok);
    close(folder);
}

TEST_F(LockTest, OneRunAtATimeHasTheFolderAndTheLastLeavesNothingInIt)
{
    std::atomic<int> inside = 0;
    std::atomic<int> meetings = 0;
    const auto comeAndGo = [&] {
        for (int turns = 0; turns < 500;) {
            ExtensionsFolder folder;
            if (!take(folder))
                continue;
            meetings += inside++;
            std::this_thread::sleep_for(std::chrono::microseconds(50));
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

}
