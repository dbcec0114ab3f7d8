#include "MacTool.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

TEST(RegistryTools, ListTheRegistryOfThisComputer)
{
    const ToolRun tree = RunMacTool("/usr/sbin/ioreg", { "-l", "-x", "-w", "256" });
    EXPECT_EQ(tree.status, 0);
    EXPECT_THAT(tree.out, StartsWith("+-o Root  <class IORegistryEntry, id 0x100000100, retain "));
    EXPECT_THAT(tree.out, HasSubstr("<class IOPlatformExpertDevice, id 0x100000101, registered, matched, "));
    EXPECT_THAT(RunMacTool("/usr/sbin/ioreg", { "-p", "IODeviceTree", "-w0" }).out,
        AllOf(StartsWith("+-o Root  <"), HasSubstr("<class IOPlatformExpertDevice, id 0x100000101, "),
            Not(HasSubstr("IOBlockStorageDriver"))));
    EXPECT_THAT(RunMacTool("/usr/sbin/ioreg", { "-arc", "IOPlatformExpertDevice", "-d1" }).out,
        HasSubstr("<array>\n<dict>\n\t<key>IOObjectClass</key>\n\t<string>IOPlatformExpertDevice</string>"));
    EXPECT_EQ(RunMacTool("/usr/sbin/diskutil", { "list" }).status, 0);
    EXPECT_THAT(
        RunMacTool("/usr/sbin/diskutil", { "list", "-plist" }).out, HasSubstr("<key>WholeDisks</key>"));
}

TEST(RegistryTools, RefuseWhatTheyCannotDo)
{
    for (const std::vector<std::string>& arguments :
        { std::vector<std::string> { "-z" }, { "-w", "x" }, { "-d" }, { "tree" } }) {
        const ToolRun run = RunMacTool("/usr/sbin/ioreg", arguments);
        EXPECT_EQ(run.status, 1) << arguments[0];
        EXPECT_THAT(run.error, StartsWith("usage: ioreg ")) << arguments[0];
    }
    EXPECT_EQ(RunMacTool("/usr/sbin/ioreg", { "-p", "IOUSB" }).error, "ioreg: there is no plane \"IOUSB\"\n");
    const ToolRun verb = RunMacTool("/usr/sbin/diskutil", { "eraseDisk", "disk0" });
    EXPECT_EQ(verb.status, 1);
    EXPECT_EQ(verb.error, "diskutil: did not recognize verb \"eraseDisk\"; type \"diskutil\" for a list\n");
    EXPECT_EQ(RunMacTool("/usr/sbin/diskutil", { "list", "disk999" }).status, 1);
}

}
