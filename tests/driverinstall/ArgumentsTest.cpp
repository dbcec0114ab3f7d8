#include "tests/driverinstall/Trial.h"

#include "tools/driverinstall/Arguments.h"
#include "tools/driverinstall/BundleSwap.h"

namespace {

class ArgumentsTest : public Trial { };

TEST_F(ArgumentsTest, AnythingButTheTwoFormsIsAUsageError)
{
    const std::string folder = source.string();
    const std::vector<std::vector<std::string>> refused = {
        {},
        { "install", "drivername", name },
        { "install", "drivername", name, "sourcedirectory" },
        { "install", "drivername", name, "sourcedirectory", folder, "" },
        { "install", "sourcedirectory", folder, "drivername", name },
        { "install", "driverName", name, "sourcedirectory", folder },
        { "update", "drivername", name, "sourcedirectory", folder },
        { "uninstall", "drivername" },
        { "uninstall", "name", name },
        { "uninstall", "drivername", name, "sourcedirectory", folder },
    };
    for (const std::vector<std::string>& arguments : refused) {
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.status, 64) << testing::PrintToString(arguments);
        EXPECT_EQ(ended.errors, std::string("driverinstall: ") + usageText + "\n");
    }
    EXPECT_TRUE(entries().empty());
}

TEST_F(ArgumentsTest, OnlyBareBundleNamesAreTaken)
{
    for (const std::string good : { name, "Z\xc3\xa9 K.kext", "\xc2\xa0.kext", "a.b.kext" })
        EXPECT_TRUE(IsExtensionName(good)) << good;
    const std::vector<std::string> hostile = { "", ".kext", "Dock", "Dock.KEXT", "Dock.kext/", "../Dock.kext",
        "/Dock.kext", "a/Dock.kext", "..kext", ".Dock.kext", "..", "Dock.kext ", "Dock\n.kext",
        "Dock\x7f.kext", "Dock\xc2\x85.kext", "Dock\xff.kext", "Dock\xc0\xaf.kext", { "a\0b.kext", 8 } };
    for (const std::string& bad : hostile)
        EXPECT_FALSE(IsExtensionName(bad)) << bad;
    // Nor can a refused name forge a line of the log or command a terminal.
    const Ended ended = run({ "uninstall", "drivername", "x\ny\xc2\x9bz\xc3\xa9.kext" });
    EXPECT_EQ(ended.status, 65);
    EXPECT_EQ(ended.errors, "driverinstall: not the name of a kernel extension: x?y?z\xc3\xa9.kext\n");
}

TEST_F(ArgumentsTest, TheLongestNameCanBeInstalledReplacedAndRemoved)
{
    const std::string longest = std::string(longestName - 5, 'n') + ".kext";
    EXPECT_FALSE(IsExtensionName("n" + longest));
    makeBundle(source / longest, "2");
    for (int turn = 0; turn < 2; ++turn)
        EXPECT_EQ(run({ "install", "drivername", longest, "sourcedirectory", source.string() }).status, 0);
    EXPECT_EQ(entries(), std::vector<std::string> { longest });
    EXPECT_EQ(run({ "uninstall", "drivername", longest }).status, 0);
    EXPECT_TRUE(entries().empty());
}

}
