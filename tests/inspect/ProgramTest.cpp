#include "tests/support/TestVolume.h"
#include "util/Launch.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

class InspectTest : public testing::Test {
protected:
    /// What the program prints when it succeeds; "failed" else.
    static std::string inspect(const std::vector<std::string>& arguments)
    {
        return OutputOfProgram(VELMORA_INSPECT, arguments).value_or("failed");
    }
    /// The output read as JSON by somebody else, and a question about it answered.
    std::string ask(const std::vector<std::string>& arguments, const std::string& question) const
    {
        const std::filesystem::path file = fVolume.root() / "output.json";
        TestVolume::write(file, inspect(arguments));
        return OutputOfProgram("/usr/bin/python3",
            { "-c", "import json, sys\nfound = json.load(open(sys.argv[1]))\nprint(" + question + ")", file })
            .value_or("no JSON");
    }

    TestVolume fVolume {};
};

}

TEST_F(InspectTest, ProcessesAreListedForPeopleAndPrograms)
{
    const std::string self = std::to_string(getpid());
    EXPECT_EQ(ask({ "processes", "--json" }, "[p['name'] for p in found if p['pid'] == " + self + "]"),
        "['inspect_test']\n");
    EXPECT_EQ(
        ask({ "--json", "processes", "inspect_test" }, "{p['name'] for p in found}"), "{'inspect_test'}\n");
    EXPECT_NE(inspect({ "processes" }).find("velmora-inspect"), std::string::npos);
    EXPECT_EQ(inspect({ "processes", "no such name" }), "failed");
}

TEST_F(InspectTest, FilesBundlesAndVolumesAreDescribed)
{
    fVolume.installAgent("2.1");
    const std::string agent = fVolume.agent();
    const std::string question
        = "[found[0].get(k) for k in ('exists', 'isFolder', 'bundleIdentifier', 'bundleVersion', "
          "'signatureIsValid', 'size')]";
    EXPECT_EQ(
        ask({ "files", "--json", agent }, question), "[True, True, 'com.zek.Velmora', '2.1', False, None]\n");
    TestVolume::write(fVolume.root() / "-odd \"name\"", "12345");
    EXPECT_EQ(ask({ "files", "--json", "--", fVolume.root().string() + "/-odd \"name\"" },
                  "[found[0]['name'], found[0]['size'], found[0].get('isVolume')]"),
        "['-odd \"name\"', 5, None]\n");
    EXPECT_EQ(ask({ "files", "--json", "/" }, "[found[0]['systemVersion'], found[0]['volumeFree'] > 0]"),
        "['10.15.7', True]\n");
    const std::string standard = inspect({ "files" });
    EXPECT_NE(standard.find("/Library/Application Support"), std::string::npos) << standard;
    EXPECT_EQ(inspect({ "files", "/none" }), "failed");
}

TEST_F(InspectTest, OtherCommandLinesAreRefused)
{
    for (const std::vector<std::string>& arguments :
        { std::vector<std::string> {}, { "unheard" }, { "processes", "--unheard" }, { "--", "--json" } })
        EXPECT_EQ(inspect(arguments), "failed");
    EXPECT_NE(inspect({ "--help" }).find("processes"), std::string::npos);
}
