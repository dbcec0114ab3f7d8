#include "tests/driverinstall/Trial.h"

#include "tools/driverinstall/Arguments.h"
#include "tools/driverinstall/BundleSwap.h"

namespace {

class ArgumentsTest : public Trial { };

TEST_F(ArgumentsTest, AnythingButTheTwoFormsIsAUsageError)
{
    const std::string folder = source.string();
    for (const Texts& refused : std::vector<Texts> {
             {},
             { "install", "drivername", name },
             { "install", "drivername", name, "sourcedirectory" },
             { "install", "drivername", name, "sourcedirectory", folder, "" },
             { "install", "sourcedirectory", folder, "drivername", name },
             { "update", "drivername", name, "sourcedirectory", folder },
             { "uninstall", "name", name },
             { "uninstall", "drivername", name, "sourcedirectory", folder },
         }) {
        const Ended ended = run(refused);
        EXPECT_EQ(ended.status, 64) << testing::PrintToString(refused);
        EXPECT_EQ(ended.errors, std::string("driverinstall: ") + usageText + "\n");
    }
}

TEST_F(ArgumentsTest, OnlyBareBundleNamesAreTaken)
{
    const std::string longest = std::string(longestName - 5, 'n') + ".kext";
    for (const std::string& good : Texts { name, "Z\xc3\xa9 K.kext", "\xc2\xa0.kext", "a.b.kext", longest })
        EXPECT_TRUE(IsExtensionName(good)) << good;
    for (const std::string& bad :
        Texts { "", ".kext", "Dock", "Dock.KEXT", "Dock.kext/", "../Dock.kext", "/Dock.kext", "a/Dock.kext",
            "..kext", ".Dock.kext", "Dock.kext ", "Dock\n.kext", "Dock\x7f.kext", "Dock\xc2\x85.kext",
            "Dock\xff.kext", "Dock\xc0\xaf.kext", { "a\0b.kext", 8 }, "n" + longest })
        EXPECT_FALSE(IsExtensionName(bad)) << bad;
    // Nor can a refused name forge a line of the log or command a terminal.
    const Ended ended = uninstall("x\ny\xc2\x9bz\xc3\xa9.kext");
    EXPECT_EQ(ended.status, 65);
    EXPECT_EQ(ended.errors, "driverinstall: not the name of a kernel extension: x?y?z\xc3\xa9.kext\n");
}

TEST_F(ArgumentsTest, TheLongestNameCanBeInstalledAndRemoved)
{
    installArguments[2] = std::string(longestName - 5, 'n') + ".kext";
    makeBundle(source / installArguments[2], "2");
    EXPECT_EQ(install().status, 0);
    EXPECT_EQ(install().status, 0);
    EXPECT_EQ(uninstall(installArguments[2]).status, 0);
    EXPECT_TRUE(entries().empty());
}

}
