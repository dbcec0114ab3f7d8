#include "MacTool.h"

#include "tests/support/TestVolume.h"

#include <boot/Nvram.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

class NvramToolTest : public testing::Test {
protected:
    static ToolRun run(const std::vector<std::string>& arguments)
    {
        return RunMacTool("/usr/sbin/nvram", arguments);
    }

    const TestVolume volume;
    const std::filesystem::path file = volume.root() / "private/var/db/nvram.plist";
};

TEST_F(NvramToolTest, SetsTellsAndDeletesInTheOrderOfTheArguments)
{
    const ToolRun all = run(
        { "boot-device=/pci@1f,0:2,\\\\:tbxi", "a=1=2", "a", "a=%00%fF%25", "-p", "-d", "a", "b=", "-p" });
    EXPECT_EQ(all.error, "");
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.out,
        "a\t1=2\n"
        "a\t%00%ff%25\nboot-device\t/pci@1f,0:2,\\\\:tbxi\n"
        "b\t\nboot-device\t/pci@1f,0:2,\\\\:tbxi\n");
    EXPECT_THAT(run({ "-xp" }).out, HasSubstr("<key>b</key>\n\t<string></string>"));
    EXPECT_EQ(run({ "-c", "-p" }).out, "");
}

TEST_F(NvramToolTest, StopsAtWhatCannotBeDone)
{
    const ToolRun unknown = run({ "a=1", "none", "a=2" });
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.error, "nvram: Error getting variable - 'none': (iokit/common) data was not found\n");
    EXPECT_EQ(run({ "a" }).out, "a\t1\n");
    EXPECT_EQ(run({ "-d", "none" }).error,
        "nvram: Error deleting variable - 'none': (iokit/common) data was not found\n");
    EXPECT_THAT(run({ "=1" }).error, StartsWith("nvram: Error setting variable - '': there can be no such"));
    for (const std::vector<std::string>& wrong :
        { std::vector<std::string> {}, { "-" }, { "-d" }, { "-z" }, { "--plist" } }) {
        EXPECT_EQ(run(wrong).status, 1);
        EXPECT_THAT(run(wrong).error, StartsWith("usage: nvram "));
    }
    TestVolume::write(file, "damaged");
    EXPECT_EQ(run({ "-p" }).error, "nvram: Error getting variables: the variables' file is damaged\n");
    EXPECT_EQ(run({ "a=3" }).status, 1);
    EXPECT_EQ(TestVolume::read(file), "damaged");
    if (geteuid() == 0) {
        EXPECT_EQ(
            AsStranger([] { return run({ "a=3" }).error.ends_with(": Permission denied\n") ? 7 : 0; }), 7);
    }
}

TEST(NvramValues, AreTakenAsTheyAreWhereAnEscapeIsNone)
{
    for (const char* text : { "50%", "%4", "%4x1", "%41%", "% 1", "%+1" })
        EXPECT_EQ(NvramValue(text), text);
    EXPECT_EQ(NvramValue("%41%7e%0A"), "A~\n");
    EXPECT_EQ(NvramText("A\x7f\x80%~ \n"), "A%7f%80%25~ %0a");
}

}
