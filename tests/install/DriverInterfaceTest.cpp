#include "install/DriverInterface.h"

#include "tests/support/TestVolume.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kOldDriver = "ZEKThunderboltDockChargingSupport.kext";

class DriverInterfaceTest : public ::testing::Test {
protected:
    DriverInterfaceTest() { volume.makeInstaller("2.1").carryDriver("1.2").recordDriverTool(); }

    std::string installCall() const
    {
        return "install\ndrivername\nZEKDockChargingSupport.kext\nsourcedirectory\n"
            + volume.resources().string() + "\n\n";
    }
    static std::string uninstallCall(const std::string& name)
    {
        return "uninstall\ndrivername\n" + name + "\n\n";
    }

    /// Makes the privileged tool one that cannot be started.
    void breakTool() { fs::permissions(volume.resources() / "driverinstall", fs::perms(0644)); }

    TestVolume volume;
};

}

TEST_F(DriverInterfaceTest, AnyOtherVersionCountsAsAnUpdate)
{
    const struct {
        const char* installed;
        bool canInstall, canUpdate, restart;
    } cases[] = {
        { "1.2", false, false, false },
        { "1.1", false, true, true },
        { "1.3", false, true, true },
        { "nonsense", true, true, true },
    };
    const DriverInterface* const fresh = DriverInterface::init();
    ASSERT_NE(fresh, nullptr);
    EXPECT_TRUE(fresh->canInstall() && !fresh->canUpdate() && fresh->restartMightBeRequired());
    for (const auto& each : cases) {
        volume.installDriver(each.installed);
        const DriverInterface* const driver = DriverInterface::init();
        ASSERT_EQ(driver, DriverInterface::driverInterfacePtr());
        EXPECT_EQ(driver->canInstall(), each.canInstall) << each.installed;
        EXPECT_EQ(driver->driverPresent(), !each.canInstall) << each.installed;
        EXPECT_EQ(driver->canUpdate(), each.canUpdate) << each.installed;
        EXPECT_EQ(driver->restartMightBeRequired(), each.restart) << each.installed;
        EXPECT_FALSE(driver->restartRequired());
    }
}

TEST_F(DriverInterfaceTest, InstallCallsTheToolAndNeedsARestart)
{
    DriverInterface& driver = *DriverInterface::init();
    EXPECT_EQ(driver.install(), noErr);
    EXPECT_TRUE(driver.restartRequired());
    EXPECT_EQ(volume.callsOnce(installCall()), installCall());
    EXPECT_TRUE(driver.canInstall()) << "the answers are those of the start";
}

TEST_F(DriverInterfaceTest, TheEarlierGenerationIsRemovedWithAnUpdate)
{
    volume.installDriver("1.0", kOldDriver);
    EXPECT_EQ(DriverInterface::init()->update(), noErr);
    const std::string both = uninstallCall(kOldDriver) + installCall();
    const std::string calls = volume.callsOnce(both);
    // Both are started one after the other, but run side by side.
    EXPECT_EQ(calls.size(), both.size());
    EXPECT_NE(calls.find(uninstallCall(kOldDriver)), std::string::npos);
    EXPECT_NE(calls.find(installCall()), std::string::npos);
}

TEST_F(DriverInterfaceTest, UninstallRemovesWhatIsThere)
{
    DriverInterface& nothing = *DriverInterface::init();
    EXPECT_EQ(nothing.uninstall(), noErr);
    EXPECT_FALSE(nothing.restartRequired());

    volume.installDriver("1.0", kOldDriver);
    DriverInterface& onlyOld = *DriverInterface::init();
    EXPECT_EQ(onlyOld.uninstall(), noErr);
    EXPECT_FALSE(onlyOld.restartRequired()) << "the earlier generation alone needs none";
    EXPECT_EQ(volume.callsOnce(uninstallCall(kOldDriver)), uninstallCall(kOldDriver));

    fs::remove_all(volume.extensions() / kOldDriver);
    volume.installDriver("1.2");
    DriverInterface& current = *DriverInterface::init();
    EXPECT_EQ(current.uninstall(), noErr);
    EXPECT_TRUE(current.restartRequired());
    const std::string calls = uninstallCall(kOldDriver) + uninstallCall("ZEKDockChargingSupport.kext");
    EXPECT_EQ(volume.callsOnce(calls), calls);
}

TEST_F(DriverInterfaceTest, AToolThatCannotBeStartedIsReportedAndNeedsNoRestart)
{
    breakTool();
    DriverInterface& driver = *DriverInterface::init();
    EXPECT_EQ(driver.uninstall(), noErr) << "there is nothing to remove, so nobody is called";
    EXPECT_EQ(driver.install(), errAuthorizationToolExecuteFailure);
    EXPECT_FALSE(driver.restartRequired());
    volume.installDriver("1.0", kOldDriver);
    volume.installDriver("1.0");
    EXPECT_EQ(driver.update(), errAuthorizationToolExecuteFailure);
    EXPECT_EQ(driver.uninstall(), errAuthorizationToolExecuteFailure);
    EXPECT_FALSE(driver.restartRequired());
    fs::permissions(volume.resources() / "driverinstall", fs::perms(0755));
    EXPECT_EQ(driver.callDriverInstallWithArguments({ "allowed" }), noErr);
    EXPECT_EQ(volume.callsOnce("allowed\n\n"), "allowed\n\n") << "nothing was started before";
}

TEST_F(DriverInterfaceTest, AFailureForgetsThatARestartWasNeeded)
{
    DriverInterface& driver = *DriverInterface::init();
    EXPECT_EQ(driver.install(), noErr);
    volume.callsOnce(installCall());
    breakTool();
    EXPECT_NE(driver.install(), noErr);
    EXPECT_FALSE(driver.restartRequired());
}
