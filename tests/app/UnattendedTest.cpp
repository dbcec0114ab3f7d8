#include "tests/support/Installer.h"

#include <Host/HostPath.h>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using ::testing::HasSubstr;

constexpr const char* kLicenseKey = "Last Displayed Version Of End User License";

class UnattendedTest : public ::testing::Test {
protected:
    ~UnattendedTest() override
    {
        // Whatever a test left loaded must not outlive it.
        if (fs::exists(volume.launchAgent()))
            Installer::launchctl("unload", volume);
        else
            run("--unattended uninstall");
    }

    int run(const std::string& arguments) { return installer.run(arguments); }

    TestVolume volume;
    Installer installer { volume };
    std::string& output = installer.output;
};

}

TEST_F(UnattendedTest, InstallsUpdatesAndRemovesForReal)
{
    EXPECT_EQ(run("--unattended install --accept-license"), 3) << output;
    EXPECT_THAT(output, HasSubstr("Installing the agent."));
    EXPECT_TRUE(fs::exists(volume.agent() / "Contents/MacOS/ZEK Velmora"));
    EXPECT_TRUE(fs::exists(volume.extensions() / "ZEKDockChargingSupport.kext/Contents/Info.plist"));
    EXPECT_TRUE(fs::exists(HostRestartRequestPath()));
    EXPECT_EQ(volume.preferences()[kLicenseKey], "1");
    const pid_t agent = Installer::agentProcess();
    ASSERT_GT(agent, 0);
    EXPECT_EQ(kill(agent, 0), 0) << "the agent runs";

    EXPECT_EQ(run("--unattended install"), 6) << "accepted before, and current: " << output;
    EXPECT_EQ(Installer::agentProcess(), agent) << "a running agent is left alone";

    // An older agent with settings of its own.
    TestVolume::writeBundle(volume.agent(), "1.0", "1.0");
    fs::remove_all(volume.extensions() / "ZEKDockChargingSupport.kext");
    EXPECT_EQ(run("--unattended update"), 3) << output;
    EXPECT_THAT(output, HasSubstr("Updating the agent."));
    EXPECT_TRUE(fs::exists(volume.extensions() / "ZEKDockChargingSupport.kext"));
    EXPECT_EQ(volume.preferences()[kLicenseKey], "1") << "an update keeps the settings";
    EXPECT_GT(Installer::agentProcess(), 0);
    EXPECT_NE(Installer::agentProcess(), agent) << "the new agent runs";

    EXPECT_EQ(run("--unattended uninstall"), 3) << output;
    EXPECT_EQ(Installer::agentProcess(), 0);
    EXPECT_FALSE(fs::exists(volume.support()));
    EXPECT_FALSE(fs::exists(volume.launchAgent()));
    EXPECT_TRUE(fs::is_empty(volume.extensions()));
    EXPECT_TRUE(volume.preferences().empty());
    EXPECT_TRUE(fs::exists(volume.trash() / "ZEK Velmora.app"));
    EXPECT_EQ(run("--unattended uninstall"), 6) << output;
}

TEST_F(UnattendedTest, WithoutTheLicenseNothingIsDone)
{
    EXPECT_EQ(run("--unattended install"), 4);
    EXPECT_THAT(output, HasSubstr("--accept-license"));
    EXPECT_FALSE(fs::exists(volume.support()));
    EXPECT_FALSE(fs::exists(volume.preferencesFile()));
}

TEST_F(UnattendedTest, UpdateInstallsNothingWhereNothingIs)
{
    EXPECT_EQ(run("--unattended update --accept-license --driver"), 6);
    EXPECT_FALSE(fs::exists(volume.support()));
}

TEST_F(UnattendedTest, UsageDataIsSentOnlyWhereNobodyEverRefused)
{
    EXPECT_EQ(run("--unattended install --accept-license --no-usage-data"), 3) << output;
    EXPECT_EQ(volume.preferences()["Collect Usage Info"], "false");
    // What an update leaves that was interrupted after the old agent had gone.
    EXPECT_EQ(Installer::launchctl("unload", volume), "");
    fs::remove_all(volume.support());
    EXPECT_EQ(run("--unattended install"), 0) << "the driver is current: " << output;
    EXPECT_EQ(volume.preferences()["Collect Usage Info"], "false");
}

TEST_F(UnattendedTest, TheDriverAloneIsInstalledOnRequest)
{
    ASSERT_EQ(run("--unattended install --accept-license"), 3) << output;
    fs::remove_all(volume.extensions() / "ZEKDockChargingSupport.kext");
    EXPECT_EQ(run("--unattended install"), 6);
    EXPECT_THAT(output, HasSubstr("The driver is not installed; --driver installs it."));
    EXPECT_EQ(run("--unattended install --driver"), 3) << output;
    EXPECT_TRUE(fs::exists(volume.extensions() / "ZEKDockChargingSupport.kext"));
}

TEST_F(UnattendedTest, WhatAnInterruptedInstallationLeftIsRepaired)
{
    ASSERT_EQ(run("--unattended install --accept-license"), 3) << output;
    ASSERT_EQ(Installer::launchctl("unload", volume), "");
    EXPECT_EQ(run("--unattended install"), 0) << "copied and registered, but not loaded: " << output;
    EXPECT_GT(Installer::agentProcess(), 0);

    TestVolume::write(volume.launchAgent(), "<plist version=\"1.0\"><dict><key>Label</key>");
    EXPECT_EQ(run("--unattended install"), 0) << "half a property list: " << output;
    EXPECT_GT(Installer::agentProcess(), 0);
    EXPECT_THAT(TestVolume::read(volume.launchAgent()), HasSubstr("</plist>"));
}

TEST_F(UnattendedTest, WhatAnInterruptedRemovalLeftIsRemoved)
{
    ASSERT_EQ(run("--unattended install --accept-license"), 3) << output;
    fs::remove_all(volume.agent());
    EXPECT_EQ(run("--unattended uninstall"), 3) << output;
    EXPECT_FALSE(fs::exists(volume.launchAgent()));
    EXPECT_EQ(Installer::agentProcess(), 0);
}

TEST_F(UnattendedTest, FailuresAreReportedAsSuch)
{
    TestVolume::write(volume.agent() / "Contents/Info.plist", "no property list");
    EXPECT_EQ(run("--unattended install --accept-license"), 1) << output;
    EXPECT_THAT(output, HasSubstr("The installation failed."));
    EXPECT_THAT(output, HasSubstr("Error -54: a folder could not be made"));
    fs::remove_all(volume.support());

    fs::remove_all(installer.bundle() / "Contents/Resources/ZEK Velmora.app");
    EXPECT_EQ(run("--unattended install"), 1) << output;
    EXPECT_THAT(output, HasSubstr("Error -43"));
}

TEST_F(UnattendedTest, SomebodyElsesVolumeGivesAnOrdinaryUserNoRights)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become somebody else";
    for (const auto& entry : fs::recursive_directory_iterator(volume.home()))
        ASSERT_EQ(lchown(entry.path().c_str(), 65534, 65534), 0);
    ASSERT_EQ(chown(volume.home().c_str(), 65534, 65534), 0);
    EXPECT_EQ(AsStranger([this] { return run("--unattended install --accept-license"); }), 5);
    EXPECT_EQ(Installer::agentProcess(), 0) << "the stranger's agent is not root's";
    EXPECT_EQ(AsStranger([this] { return run("--unattended uninstall"); }), 0);
    EXPECT_TRUE(fs::exists(volume.trash() / "ZEK Velmora.app"));
}

TEST_F(UnattendedTest, AnUpdateIsDoneOnlyWhenTheNewAgentRuns)
{
    ASSERT_EQ(run("--unattended install --accept-license"), 3) << output;
    const pid_t old = Installer::agentProcess();
    TestVolume::writeBundle(volume.agent(), "1.0", "1.0");
    // An unload that is so slow that the load overtakes it and is refused.
    const std::string real = HostPath("/bin/launchctl");
    TestVolume::write(volume.root() / "bin/launchctl",
        "#!/bin/sh\n[ \"$1\" = unload ] && sleep 0.4\nexec '" + real + "' \"$@\"\n");
    fs::permissions(volume.root() / "bin/launchctl", fs::perms(0755));
    EXPECT_EQ(run("--unattended update"), 0) << output;
    EXPECT_GT(Installer::agentProcess(), 0);
    EXPECT_NE(Installer::agentProcess(), old);
}

TEST_F(UnattendedTest, ANewerAgentStaysAndTheDriverIsInstalledOnRequest)
{
    TestVolume::writeBundle(volume.agent(), "9.0", "9.0");
    EXPECT_EQ(run("--unattended install --accept-license"), 6) << output;
    EXPECT_EQ(run("--unattended install --driver --wait 2"), 3) << output;
    EXPECT_TRUE(fs::exists(volume.extensions() / "ZEKDockChargingSupport.kext"));
}

TEST_F(UnattendedTest, SettingsThatCannotBeStoredAreNoSuccess)
{
    // A folder in the file's place stops root too.
    TestVolume::write(volume.preferencesFile() / "inside", "");
    EXPECT_EQ(run("--unattended install --accept-license --no-usage-data --wait 1"), 7) << output;
    fs::remove_all(volume.preferencesFile());
}

TEST_F(UnattendedTest, AResultThatIsNotOnTheDiskIsNotSuccess)
{
    // The tool can be started, which is all that the installer is told, but it does nothing.
    fs::copy_file("/bin/true", installer.bundle() / "Contents/Resources/driverinstall",
        fs::copy_options::overwrite_existing);
    EXPECT_EQ(run("--unattended install --accept-license --wait 1"), 7) << output;
    fs::remove_all(installer.bundle() / "Contents/Resources/ZEKDockChargingSupport.kext");
    EXPECT_EQ(run("--unattended install --driver --wait 1"), 7) << "a driver that is not carried: " << output;
}

TEST_F(UnattendedTest, StatusAndJSONTellWhatIsThere)
{
    EXPECT_EQ(run("--status --json"), 0);
    EXPECT_THAT(output, HasSubstr("\"installedVersion\": \"\""));
    EXPECT_EQ(installer.run("--unattended install --accept-license --json", "/dev/null"), 3);
    EXPECT_EQ(output.front(), '{');
    EXPECT_THAT(output, HasSubstr("\"result\": \"restart-needed\""));
    EXPECT_EQ(run("--status"), 0);
    EXPECT_THAT(output, HasSubstr(volume.agent().string()));
    EXPECT_THAT(output, HasSubstr("process " + std::to_string(Installer::agentProcess())));
    EXPECT_EQ(run("--unattended fly"), 2);
    EXPECT_THAT(output, HasSubstr("usage:"));
}
