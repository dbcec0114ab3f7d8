#include "MacTool.h"

#include "tests/support/HostFolder.h"

#include <gtest/gtest.h>
#include <power/Pmset.h>
#include <power/PowerSettings.h>

#include <sstream>

namespace {

class PmsetTest : public testing::Test {
protected:
    std::string answer(const Arguments& arguments) const
    {
        std::ostringstream out;
        EXPECT_EQ(WritePowerState(arguments, host.tree(), out), 0);
        return out.str();
    }

    HostFolder host;
};

TEST_F(PmsetTest, ShowsTheLoginManagersSleepSettingsWithLaterFilesOverridingEarlierOnes)
{
    host.add("sys/", { { "power/state", "freeze mem disk\n" } });
    host.add("run/systemd/",
        { { "seats/seat0", "" }, { "logind.conf.d/20-lid.conf", "[Login]\nHandlePowerKey=suspend\n" } });
    host.add(
        "usr/lib/systemd/", { { "logind.conf", "[Login]\nHandlePowerKey=hibernate\nIdleAction=suspend\n" } });
    host.add("etc/systemd/",
        { { "logind.conf", "[Login]\n#IdleAction=ignore\nIdleActionSec=5min\n" },
            { "logind.conf.d/10-idle.conf", "[Login]\nIdleAction = hybrid-sleep\nIdleActionSec=1h 30s\n" },
            { "logind.conf.d/20-lid.conf", "" }, { "logind.conf.d/30.conf.bak", "IdleAction=ignore\n" } });

    EXPECT_EQ(answer({ "-g" }),
        "System-wide power settings:\nCurrently in use:\n"
        " hibernatemode        3\n"
        " sleep                61\n"
        " Sleep On Power Button 0\n");
}

TEST_F(PmsetTest, LeavesSleepOutWhereNobodyWouldSendTheComputerToSleep)
{
    host.add("",
        { { "etc/systemd/logind.conf", "[Login]\nIdleAction=suspend\n" }, { "sys/power/state", "mem\n" } });

    EXPECT_EQ(answer({ "-g", "live" }), "System-wide power settings:\nCurrently in use:\n");
}

TEST_F(PmsetTest, TellsWhatWakesTheComputerForEachSourceOfPower)
{
    host.add("sys/class/net/",
        { { "eth0/device/power/wakeup", "enabled\n" }, { "lo/address", "0" },
            { "wlan0/device/power/wakeup", "disabled\n" } });
    host.add("sys/",
        { { "bus/acpi/devices/PNP0C0D:00/power/wakeup", "disabled\n" },
            { "bus/acpi/devices/PNP0C0C:00/power/wakeup", "enabled\n" },
            { "firmware/acpi/platform_profile", "low-power\n" } });
    const std::string settings
        = " womp                 1\n lidwake              0\n lowpowermode         1\n";

    EXPECT_EQ(answer({ "-g", "custom" }), "AC Power:\n" + settings);
    EXPECT_EQ(answer({ "-g", "cap" }), "Capabilities for AC Power:\n womp\n lidwake\n lowpowermode\n");

    host.add("sys/class/power_supply/BAT0/", { { "type", "Battery\n" }, { "status", "Discharging\n" } });
    EXPECT_EQ(answer({ "-g", "custom" }), "Battery Power:\n" + settings + "AC Power:\n" + settings);
}

TEST_F(PmsetTest, TellsHowLongTheBatteriesLast)
{
    const std::string supplies = "sys/class/power_supply/";
    host.add(supplies + "BAT0/",
        { { "type", "Battery\n" }, { "present", "1\n" }, { "status", "Discharging\n" },
            { "capacity", "55\n" }, { "energy_now", "20500000\n" }, { "power_now", "10000000\n" } });
    host.add(supplies + "BAT1/", { { "type", "Battery\n" }, { "present", "0\n" } });
    host.add(supplies + "mouse/",
        { { "type", "Battery\n" }, { "scope", "Device\n" }, { "status", "Discharging\n" } });
    host.add(supplies + "AC/", { { "type", "Mains\n" }, { "online", "0\n" } });
    EXPECT_EQ(answer({ "-g", "batt" }),
        "Now drawing from 'Battery Power'\n -InternalBattery-0\t55%; discharging; 2:03 remaining present: "
        "true\n");

    host.add(
        supplies, { { "BAT0/status", "Charging\n" }, { "BAT0/energy_full", "0\n" }, { "AC/online", "1\n" } });
    EXPECT_EQ(answer({ "-g", "ps" }),
        "Now drawing from 'AC Power'\n -InternalBattery-0\t55%; charging; (no estimate) present: true\n");

    host.add(supplies, { { "BAT0/status", "Full\n" } });
    EXPECT_EQ(answer({ "-g", "ps" }),
        "Now drawing from 'AC Power'\n -InternalBattery-0\t55%; charged; 0:00 remaining present: true\n");
}

TEST(TimeSpan, IsReadAsTheHostsConfigurationHasIt)
{
    EXPECT_EQ(TimeSpanSeconds("90"), 90);
    EXPECT_EQ(TimeSpanSeconds("1h 30min"), 5400);
    EXPECT_EQ(TimeSpanSeconds("2 days 1500ms"), 172802);
    for (const char* const wrong : { "infinity", "5 minuten", "min", "-3", "1e30", "9999999999999w" })
        EXPECT_EQ(TimeSpanSeconds(wrong), std::nullopt) << wrong;
}

TEST(Pmset, AnswersOnThisMachineAndRefusesToChangeAnything)
{
    EXPECT_EQ(RunMacTool("/usr/bin/pmset", { "-g" }).status, 0);
    for (const Arguments& refused :
        { Arguments { "-a", "sleep", "10" }, { "-g", "assertions" }, {}, { "-g", "ps", "2" } }) {
        const ToolRun run = RunMacTool("/usr/bin/pmset", refused);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.error, "");
    }
}

}
