// Who may install the driver on the system's own start-up volume, and what is told to whom.

#include "tests/integration/System.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

namespace {

constexpr const char* kInstall = "zek-velmora-installer --unattended install --accept-license --json";

class RightsTest : public InstalledSystem {
protected:
    /// Installs, and expects it to go no further than the agent.
    static void expectRefusal(const std::string& wrapper = {})
    {
        const CommandResult run = asTester(wrapper + kInstall);
        EXPECT_EQ(run.status, 5) << run.output;
        EXPECT_THAT(
            run.output, AllOf(HasSubstr("The installation failed."), HasSubstr(R"("status": -60006)")));
        EXPECT_FALSE(fs::exists(driver));
        EXPECT_TRUE(fs::exists(agent));
    }
};

}

TEST_F(RightsTest, GrantedRightsInstallTheDriverAsRootsAndRestartTheComputer)
{
    letPolkitAnswer("YES");
    startLoginManager();
    const CommandResult run = asTester(kInstall);
    EXPECT_EQ(run.status, 3) << run.output;
    EXPECT_TRUE(fs::exists(driver / "Contents/Info.plist"));
    EXPECT_EQ(
        asRoot("find '" + driver.string() + "' ! -user root -o ! -group root -o -perm /022").output, "");
    EXPECT_THAT(askedOfLoginManager(), HasSubstr("Reboot True")) << "and it may ask the user";
    EXPECT_EQ(asTester(kInstall).status, 6);
}

TEST_F(RightsTest, RefusedRightsEndTheInstallationAndAreAskedForTheNextTime)
{
    letPolkitAnswer("NO");
    expectRefusal();
    letPolkitAnswer("YES");
    const CommandResult run = asTester(std::string(kInstall) + " --driver");
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.output, HasSubstr("The restart could not be requested.")) << "without a login manager";
}

TEST_F(RightsTest, ReasonsForARefusalAreToldApart)
{
    EXPECT_EQ(asTester("DBUS_SYSTEM_BUS_ADDRESS=none: " RIGHTS_PROBE).output, "-60005\n");
    letPolkitAnswer("NO");
    EXPECT_EQ(asTester(RIGHTS_PROBE).output, "-60005\n");
    letPolkitAnswer("AUTH_ADMIN");
    EXPECT_EQ(asTester(RIGHTS_PROBE).output, "-60007\n") << "nobody can be asked";
    EXPECT_EQ(asTester(DISMISSING_AGENT " " RIGHTS_PROBE).output, "-60006\n");
    letPolkitAnswer("YES");
    EXPECT_EQ(asTester(RIGHTS_PROBE).output, "0\n");
}

TEST_F(RightsTest, ToolsGetTheirArgumentsExactlyAndLeaveNoChildBehind)
{
    letPolkitAnswer("YES");
    EXPECT_EQ(asTester("LD_PRELOAD= ZEK_TEST=1 " RIGHTS_PROBE " " LAUNCH_PROBE
                       R"( report /tmp/report 'two words' '' -- '$HOME %s "\' '--user')")
                  .output,
        "0\n");
    ASSERT_TRUE(Eventually([] { return fs::exists("/tmp/report"); }));
    const std::string report = Contents("/tmp/report");
    EXPECT_THAT(report,
        HasSubstr("argument: <two words>\nargument: <>\nargument: <-->\n"
                  "argument: <$HOME %s \"\\>\nargument: <--user>\nvariable"));
    EXPECT_THAT(report, AllOf(HasSubstr("user: 0 0\n"), HasSubstr("descriptors: 0 1 2\nempty input: 1\n")));
    EXPECT_THAT(report, Not(HasSubstr("ZEK_TEST")));
}

TEST_F(RightsTest, AQuestionThatTheUserDismissesEndsTheInstallation)
{
    letPolkitAnswer("AUTH_ADMIN");
    expectRefusal(DISMISSING_AGENT " ");
}

TEST_F(RightsTest, AnAdministratorIsAskedOnceOnTheTerminal)
{
    startPolkit(); // the policy that the package brings
    asRoot("usermod --append --groups sudo tester && echo tester:secret | chpasswd");
    EXPECT_EQ(onTerminal(kInstall, "Password: ", "wrong").status, 5);
    const CommandResult run = onTerminal(std::string(kInstall) + " --driver", "Password: ", "secret");
    EXPECT_EQ(run.status, 3) << run.output;
    EXPECT_EQ(run.output.find("Password: "), run.output.rfind("Password: ")) << run.output;
    EXPECT_TRUE(fs::exists(driver));
}

TEST_F(RightsTest, AToolThatOthersCouldHaveChangedIsNotStarted)
{
    letPolkitAnswer("YES");
    const fs::path resources = bundle / "Contents/Resources";
    for (const fs::path& place : { resources / "driverinstall", resources, bundle }) {
        asRoot("chown tester '" + place.string() + "'");
        const CommandResult run = asTester(std::string(kInstall) + " --driver");
        EXPECT_EQ(run.status, 1) << place;
        EXPECT_THAT(run.output, HasSubstr(R"("status": -60031)")) << place;
        asRoot("chown root '" + place.string() + "'");
    }
    EXPECT_FALSE(fs::exists(driver));
    EXPECT_EQ(asTester(std::string(kInstall) + " --driver").status, 3);
}
