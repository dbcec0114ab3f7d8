#include "install/AgentInstaller.h"

#include "app/AppController.h"
#include "settings/Preferences.h"
#include "tests/support/RecordingFrontEnd.h"
#include "tests/support/TestVolume.h"
#include "util/CFText.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

class AgentInstallerTest : public ::testing::Test {
protected:
    AgentInstallerTest() { volume.makeInstaller("2.1").carryDriver("1.0").recordTool("/bin/launchctl"); }

    /// The agent installer of an installer that starts now.
    AgentInstaller& started()
    {
        AppController::init(frontEnd);
        return *AgentInstaller::agentInstallerPtr();
    }
    std::string call(const std::string& verb) const
    {
        return verb + "\n" + volume.launchAgent().string() + "\n\n";
    }

    TestVolume volume;
    RecordingFrontEnd frontEnd;
};

}

TEST_F(AgentInstallerTest, WhatCanBeDoneFollowsTheInstalledVersion)
{
    const struct {
        const char* installed;
        bool install, update, newer;
    } cases[] = {
        { "2.0.15", false, true, false },
        { "2.1b200", false, true, false },
        { "2.1", false, false, false },
        { "2.1.1", false, false, true },
        { "10.0", false, false, true },
        { "nonsense", true, false, false },
        { "", true, false, false },
        { "2.0\xC3\xA9", true, false, false },
    };
    EXPECT_TRUE(started().canInstall()) << "nothing is installed";
    for (const auto& each : cases) {
        volume.installAgent(each.installed);
        const AgentInstaller& agent = started();
        EXPECT_EQ(agent.canInstall(), each.install) << each.installed;
        EXPECT_EQ(agent.canUpdate(), each.update) << each.installed;
        EXPECT_EQ(agent.installedVersionNewer(), each.newer) << each.installed;
    }
    volume.installAgent("2.1");
    TestVolume::write(volume.agent() / "Contents/Resources/en.lproj/InfoPlist.strings",
        "\"CFBundleShortVersionString\" = \"Version 2.1\";");
    EXPECT_FALSE(started().canInstall()) << "texts for people are no versions";
}

TEST_F(AgentInstallerTest, InstallCopiesTheAgentWritesItsLaunchAgentAndLoadsIt)
{
    fs::create_symlink("Contents/Info.plist", volume.resources() / "ZEK Velmora.app/inside");
    fs::create_symlink("nowhere", volume.resources() / "ZEK Velmora.app/dangling");
    AgentInstaller& agent = started();
    ASSERT_EQ(agent.install(), noErr);

    EXPECT_EQ(agent.agentVersion(), 0x02108000U);
    EXPECT_EQ(fs::read_symlink(volume.agent() / "inside"), "Contents/Info.plist");
    EXPECT_EQ(fs::read_symlink(volume.agent() / "dangling"), "nowhere");
    struct stat program { };
    ASSERT_EQ(stat((volume.agent() / "Contents/MacOS/ZEK Velmora").c_str(), &program), 0);
    EXPECT_EQ(program.st_mode & 0777, 0755U);

    const std::string path = (volume.agent() / "Contents/MacOS/ZEK Velmora").string();
    const std::string plist = TestVolume::read(volume.launchAgent());
    EXPECT_NE(plist.find("<plist"), std::string::npos) << "an XML property list";
    std::string entries = plist.substr(plist.find("<dict>"));
    std::erase_if(entries, [](char c) { return c == '\n' || c == '\t'; });
    EXPECT_EQ(entries,
        "<dict><key>Disabled</key><false/><key>KeepAlive</key><true/><key>Label</key>"
        "<string>com.zek.Velmora</string><key>LimitLoadToSessionType</key><array><string>Aqua</string></"
        "array>"
        "<key>Program</key><string>"
            + path + "</string><key>ProgramArguments</key><array><string>" + path
            + "</string></array></dict></plist>");
    EXPECT_EQ(volume.callsOnce(call("load")), call("load"));
    EXPECT_TRUE(agent.canInstall()) << "the answers are those of the start";
}

TEST_F(AgentInstallerTest, InstallNeverReplacesWhatIsThere)
{
    volume.installAgent("");
    TestVolume::write(volume.agent() / "mine", "kept");
    EXPECT_EQ(started().install(), permErr);
    EXPECT_EQ(TestVolume::read(volume.agent() / "mine"), "kept");
    EXPECT_FALSE(fs::exists(volume.launchAgent()));
    EXPECT_EQ(volume.calls(), "");
}

TEST_F(AgentInstallerTest, AMissingAgentResourceChangesNothing)
{
    fs::remove_all(volume.resources() / "ZEK Velmora.app");
    EXPECT_EQ(started().install(), fnfErr);
    EXPECT_FALSE(fs::exists(volume.support()));
    EXPECT_FALSE(fs::exists(volume.launchAgent().parent_path()));
}

TEST_F(AgentInstallerTest, AFolderThatCannotBeMadeIsAPermissionErrorAndWhatWasDoneStays)
{
    fs::create_symlink("nowhere/at/all", volume.launchAgent().parent_path());
    EXPECT_EQ(started().install(), permErr);
    EXPECT_TRUE(fs::exists(volume.agent())) << "nothing is rolled back";
}

TEST_F(AgentInstallerTest, ParentsOfTheAgentsFolderAreNotMade)
{
    fs::remove_all(volume.home() / "Library/Application Support");
    EXPECT_EQ(started().install(), permErr);
    EXPECT_FALSE(fs::exists(volume.home() / "Library/Application Support"));
}

TEST_F(AgentInstallerTest, ALaunchctlThatCannotBeStartedIsReported)
{
    fs::permissions(volume.root() / "bin/launchctl", fs::perms(0644));
    EXPECT_EQ(started().install(), memFullErr);
    EXPECT_TRUE(fs::exists(volume.launchAgent()));
    EXPECT_EQ(started().uninstallAndIsUpdating(false), memFullErr);
    EXPECT_TRUE(fs::exists(volume.agent())) << "nothing is removed";
}

TEST_F(AgentInstallerTest, UninstallMovesEverythingToTheTrashAndForgetsTheSettings)
{
    ASSERT_EQ(started().install(), noErr);
    ASSERT_EQ(volume.callsOnce(call("load")), call("load"));
    TestVolume::write(volume.support() / "data", "the user's");
    Preferences::preferencesPtr()->setLastDisplayedVersionOfEndUserLicense(1);
    ASSERT_EQ(started().uninstallAndIsUpdating(false), noErr);

    EXPECT_FALSE(fs::exists(volume.support()));
    EXPECT_FALSE(fs::exists(volume.launchAgent()));
    EXPECT_TRUE(fs::exists(volume.trash() / "ZEK Velmora.app/Contents/Info.plist"));
    EXPECT_EQ(TestVolume::read(volume.trash() / "ZEK Velmora/data"), "the user's");
    EXPECT_TRUE(fs::exists(volume.trash() / "com.zek.Velmora.plist"));
    EXPECT_TRUE(volume.preferences().empty());
    EXPECT_EQ(volume.callsOnce(call("load") + call("unload")), call("load") + call("unload"));
}

TEST_F(AgentInstallerTest, UninstallingNothingSucceedsAndForgetsTheSettings)
{
    AgentInstaller& agent = started();
    Preferences::preferencesPtr()->setLaunchAtLogin(false);
    EXPECT_EQ(agent.uninstallAndIsUpdating(false), noErr);
    EXPECT_TRUE(volume.preferences().empty());
}

TEST_F(AgentInstallerTest, ATrashThatRefusesStopsTheRemovalAndKeepsTheSettings)
{
    ASSERT_EQ(started().install(), noErr);
    Preferences::preferencesPtr()->setLaunchAtLogin(false);
    volume.breakTrash();
    EXPECT_EQ(started().uninstallAndIsUpdating(false), permErr);
    EXPECT_TRUE(fs::exists(volume.agent()));
    EXPECT_TRUE(fs::exists(volume.launchAgent()));
    EXPECT_EQ(volume.preferences().count("Launch At Login"), 1U);
}

TEST_F(AgentInstallerTest, UpdateReplacesTheAgentAndKeepsTheSettings)
{
    volume.installAgent("1.0");
    AgentInstaller& agent = started();
    Preferences::preferencesPtr()->setLaunchAtLogin(false);
    ASSERT_EQ(agent.update(), noErr);
    EXPECT_EQ(agent.agentVersion(), 0x02108000U);
    EXPECT_EQ(volume.preferences().count("Launch At Login"), 1U);
    // Both are started one after the other, but run side by side.
    const std::string calls = volume.callsOnce(call("unload") + call("load"));
    EXPECT_TRUE(calls == call("unload") + call("load") || calls == call("load") + call("unload")) << calls;
}
