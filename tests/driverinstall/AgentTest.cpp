#include "tests/driverinstall/Trial.h"

#include <csignal>
#include <regex>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// Waits until the program has written `text`.
bool Says(const Child& program, const std::string& text)
{
    for (int turn = 0; turn < 200 && program.errors().find(text) == std::string::npos; ++turn)
        usleep(50'000);
    return program.errors().find(text) != std::string::npos;
}

class AgentTest : public Trial { };

TEST_F(AgentTest, StaysAliveReadsItsSettingsAgainOnHangUpAndEndsOnTerminate)
{
    const fs::path contents = root / "ZEK Velmora.app/Contents";
    const std::string info = ReadText(AGENT_INFO_TEMPLATE);
    WriteText(contents / "Info.plist", std::regex_replace(info, std::regex("@PROJECT_VERSION@"), "4.5"));
    fs::create_directories(contents / "MacOS");
    fs::copy_file(AGENT_PROGRAM, contents / "MacOS/ZEK Velmora");
    const Child agent({ "/usr/bin/env", "CFFIXED_USER_HOME=" + (root / "home").string(),
                          (contents / "MacOS/ZEK Velmora").string() },
        root / "agent-errors");
    EXPECT_TRUE(Says(agent,
        "version 4.5, installed version none, launch at login on, usage info on, check for updates on\n"));

    WriteText(root / "home/Library/Preferences/com.zek.Velmora.plist",
        "<plist><dict><key>Agent Version</key><string>4.4</string><key>Collect Usage Info</key><false/>"
        "</dict></plist>");
    kill(agent.pid(), SIGHUP);
    EXPECT_TRUE(Says(agent,
        "version 4.5, installed version 4.4, launch at login on, usage info off, check for updates on\n"));
    EXPECT_TRUE(agent.isRunning());
    kill(agent.pid(), SIGTERM);
    EXPECT_EQ(agent.wait().status, 0);
}

}
