#include "tests/driverinstall/Trial.h"

#include "tools/driverinstall/Arguments.h"
#include "tools/driverinstall/BundleSwap.h"

namespace {

class ArgumentsTest : public Trial { };

TEST_F(ArgumentsTest, AnythingButTheTwoFormsIsAUsageErrorAndChangesNothing)
{
    makeBundle(installed, "1");
    const std::string folder = source.string();
    const std::vector<std::vector<std::string>> refused = {
        {},
        { "install" },
        { "install", "drivername", name },
        { "install", "drivername", name, "sourcedirectory" },
        { "install", "drivername", name, "sourcedirectory", folder, "" },
        { "install", "sourcedirectory", folder, "drivername", name },
        { "install", name, "drivername", folder, "sourcedirectory" },
        { "Install", "drivername", name, "sourcedirectory", folder },
        { "install", "driverName", name, "sourcedirectory", folder },
        { "update", "drivername", name, "sourcedirectory", folder },
        { "uninstall" },
        { "uninstall", "drivername" },
        { "uninstall", "name", name },
        { "uninstall", "drivername", name, "sourcedirectory", folder },
        { "--help" },
    };
    for (const std::vector<std::string>& arguments : refused) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 64) << testing::PrintToString(arguments);
        EXPECT_EQ(ended.errors, std::string("driverinstall: ") + usageText + "\n");
    }
    EXPECT_EQ(snapshot(installed), whole("1"));
}

TEST_F(ArgumentsTest, OnlyBareBundleNamesAreTaken)
{
    const std::string longest = std::string(longestName - 5, 'n') + ".kext";
    for (const std::string& good :
        { std::string(name), std::string("Z\xc3\xa9 K.kext"), std::string("a.b.kext"), longest })
        EXPECT_TRUE(IsExtensionName(good)) << good;
    const std::vector<std::string> hostile = { "", ".kext", "Dock", "Dock.KEXT", "Dock.kext/", "../Dock.kext",
        "/Dock.kext", "a/Dock.kext", "..kext", ".Dock.kext", "..", "Dock.kext ", "Dock\n.kext",
        "Dock\x7f.kext", "Dock\xc2\x85.kext", "Dock\xff.kext", "Dock\xc0\xaf.kext", "n" + longest };
    for (const std::string& bad : hostile) {
        EXPECT_FALSE(IsExtensionName(bad)) << bad;
        EXPECT_EQ(run({ "uninstall", "drivername", bad }).status, 65) << bad;
    }
    EXPECT_FALSE(IsExtensionName(std::string("a\0b.kext", 8)));
}

TEST_F(ArgumentsTest, ARefusedNameCannotForgeALineOfTheLog)
{
    EXPECT_EQ(run({ "uninstall", "drivername", "x\ny.kext" }).errors,
        "driverinstall: not the name of a kernel extension: x?y.kext\n");
}

TEST_F(ArgumentsTest, TheLongestNameCanBeInstalledReplacedAndRemoved)
{
    const std::string longest = std::string(longestName - 5, 'n') + ".kext";
    makeBundle(source / longest, "2");
    for (int turn = 0; turn < 2; ++turn)
        EXPECT_EQ(run({ "install", "drivername", longest, "sourcedirectory", source.string() }).status, 0);
    EXPECT_EQ(entries(), std::vector<std::string> { longest });
    EXPECT_EQ(run({ "uninstall", "drivername", longest }).status, 0);
    EXPECT_TRUE(entries().empty());
}

}
