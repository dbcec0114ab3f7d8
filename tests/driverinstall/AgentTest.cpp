#include "tests/driverinstall/Trial.h"

#include <csignal>
#include <fstream>
#include <iterator>
#include <regex>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class AgentTest : public Trial {
protected:
    AgentTest()
    {
        std::ifstream stream(AGENT_INFO_TEMPLATE);
        const std::string text { std::istreambuf_iterator<char>(stream), {} };
        WriteText(contents / "Info.plist", std::regex_replace(text, std::regex("@PROJECT_VERSION@"), "4.5"));
        fs::create_directories(contents / "MacOS");
        fs::copy_file(AGENT_PROGRAM, contents / "MacOS/ZEK Velmora");
    }

    void writePreferences(const std::string& pairs) const
    {
        WriteText(root / "home/Library/Preferences/com.zek.Velmora.plist",
            "<plist><dict>" + pairs + "</dict></plist>");
    }

    /// Waits until the agent has written `text`.
    static bool says(const Child& agent, const std::string& text)
    {
        for (int turn = 0; turn < 200; ++turn, usleep(50'000)) {
            if (agent.errors().find(text) != std::string::npos)
                return true;
        }
        return false;
    }

    fs::path contents = root / "ZEK Velmora.app/Contents";
};

TEST_F(AgentTest, StaysAliveReadsItsSettingsAgainOnHangUpAndEndsOnTerminate)
{
    Child agent({ (contents / "MacOS/ZEK Velmora").string() },
        { { "CFFIXED_USER_HOME", (root / "home").string() },
            { "ZEK_STARTUP_VOLUME", (root / "volume").string() } },
        root / "agent-errors");
    EXPECT_TRUE(says(agent,
        "version 4.5, installed version none, launch at login on, usage info on, check for updates on\n"));
    EXPECT_TRUE(agent.isRunning());

    writePreferences("<key>Agent Version</key><string>4.4</string><key>Collect Usage Info</key><false/>");
    kill(agent.pid(), SIGHUP);
    EXPECT_TRUE(says(agent,
        "version 4.5, installed version 4.4, launch at login on, usage info off, check for updates on\n"));
    EXPECT_TRUE(agent.isRunning());
    kill(agent.pid(), SIGTERM);
    EXPECT_EQ(agent.wait().status, 0);
}

}
