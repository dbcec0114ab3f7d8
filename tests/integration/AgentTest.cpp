// The agent under the user's own systemd manager, from the package to its removal.

#include "tests/integration/System.h"

#include <csignal>

namespace fs = std::filesystem;

namespace {

class AgentTest : public InstalledSystem {
protected:
    const fs::path unit = home / ".config/systemd/user/com.zek.Velmora.service";
};

}

TEST_F(AgentTest, RunsUnderTheUserManagerAndComesBackAfterBeingKilled)
{
    letPolkitAnswer("YES");
    startUserManager();
    const CommandResult installation
        = asTester("zek-velmora-installer --unattended install --accept-license --json");
    EXPECT_EQ(installation.status, 3) << installation.output;
    EXPECT_TRUE(fs::exists(unit));
    EXPECT_EQ(asTester("systemctl --user is-active com.zek.Velmora").output, "active\n");
    EXPECT_EQ(asTester("systemctl --user is-enabled com.zek.Velmora").output, "enabled\n");

    const pid_t first = agentProcess();
    ASSERT_GT(first, 0);
    EXPECT_EQ(kill(first, SIGKILL), 0);
    EXPECT_TRUE(Eventually([&] { return agentProcess() > 0 && agentProcess() != first; }));

    const CommandResult removal = asTester("zek-velmora-installer --unattended uninstall");
    EXPECT_EQ(removal.status, 3) << removal.output;
    EXPECT_EQ(agentProcess(), 0);
    EXPECT_FALSE(fs::exists(unit));
    EXPECT_NE(asTester("systemctl --user cat com.zek.Velmora").status, 0) << "nothing is left to be started";
}

TEST_F(AgentTest, StartedBeforeThereWasAUserManagerItIsRemovedWithOne)
{
    letPolkitAnswer("YES");
    asRoot("install -d -o nobody " + (volume / "private/tmp").string() + "/launchd.$(id -u tester)");
    EXPECT_EQ(asTester("zek-velmora-installer --unattended install --accept-license").status, 3)
        << "in spite of somebody who was there first";
    const pid_t supervised = agentProcess();
    EXPECT_GT(supervised, 0);
    EXPECT_FALSE(fs::exists(unit));

    startUserManager();
    EXPECT_EQ(agentProcess(), supervised);
    const CommandResult removal = asTester("zek-velmora-installer --unattended uninstall");
    EXPECT_EQ(removal.status, 3) << removal.output;
    EXPECT_NE(kill(supervised, 0), 0);
    EXPECT_TRUE(Eventually([] { return !fs::exists(home / ".launchd"); }))
        << "the supervisor ends with its last job";
}
