#include "app/unattended/Options.h"

#include <gtest/gtest.h>

namespace {

std::string ErrorOf(const std::vector<std::string>& arguments)
{
    std::string error;
    return ParseOptions(arguments, error) ? "" : error;
}

}

TEST(Options, CommandsAndTheirFlagsAreRead)
{
    std::string error;
    const auto options = ParseOptions(
        { "--unattended", "install", "--driver", "--json", "--accept-license", "--no-usage-data" }, error);
    ASSERT_TRUE(options);
    EXPECT_EQ(options->command, Options::Command::install);
    EXPECT_TRUE(options->driver && options->json && options->acceptLicense && options->noUsageData);

    const auto plain = ParseOptions({ "--unattended", "uninstall" }, error);
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->command, Options::Command::uninstall);
    EXPECT_FALSE(plain->driver || plain->json || plain->acceptLicense || plain->noUsageData);
    EXPECT_EQ(ParseOptions({ "--unattended", "uninstall", "--wait", "5", "--json" }, error)->wait,
        std::chrono::seconds(5));
    EXPECT_EQ(ParseOptions({ "--status", "--json" }, error)->command, Options::Command::status);
    EXPECT_EQ(ParseOptions({}, error)->command, Options::Command::windows);
}

TEST(Options, WhatIsNotUnderstoodIsNamed)
{
    EXPECT_EQ(ErrorOf({ "install" }), "unknown argument: install");
    EXPECT_EQ(ErrorOf({ "--unattended" }), "--unattended needs install, update or uninstall");
    EXPECT_EQ(ErrorOf({ "--unattended", "remove" }), "--unattended cannot do this: remove");
    EXPECT_EQ(ErrorOf({ "--unattended", "install", "--jsn" }), "unknown argument: --jsn");
    EXPECT_EQ(ErrorOf({ "--unattended", "uninstall", "--driver", "--accept-license", "--no-usage-data" }), "")
        << "one set of options serves every operation";
    EXPECT_EQ(ErrorOf({ "--status", "--wait", "5" }), "--wait does not go with what was asked for");
    for (const std::vector<std::string>& wait :
        { std::vector<std::string> {}, { "" }, { "x" }, { "5s" }, { "-1" }, { "3601" }, { "99999999999" } }) {
        std::vector<std::string> arguments { "--unattended", "uninstall", "--wait" };
        arguments.insert(arguments.end(), wait.begin(), wait.end());
        EXPECT_EQ(ErrorOf(arguments), "--wait needs a number of seconds, at most 3600");
    }
    EXPECT_EQ(
        ErrorOf({ "--status", "--accept-license" }), "--accept-license does not go with what was asked for");
}
