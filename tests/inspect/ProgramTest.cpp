#include "tests/inspect/Inspection.h"

#include <unistd.h>

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
    using Arguments = std::vector<std::string>;
    for (const Arguments& arguments : { Arguments {}, Arguments { "unheard" },
             Arguments { "processes", "--unheard" }, Arguments { "--", "--json" },
             Arguments { "--json=yes", "files" }, Arguments { "files", "--registry", "x" },
             Arguments { "registry", "--watch" }, Arguments { "disks", "--registry" },
             Arguments { "disks", "--registry=" }, Arguments { "disks", "--watch=" },
             Arguments { "disks", "--watch=0" }, Arguments { "disks", "--watch=1e3" },
             Arguments { "disks", "--watch=1.2.3" }, Arguments { "disks", "--watch=nan" },
             Arguments { "disks", "--watch=86401" }, Arguments { "disks", "--watch", "--registry", "x" },
             Arguments { "system", "x" }, Arguments { "capture" }, Arguments { "capture", "x", "y" },
             Arguments { "capture", "--registry", "x", "y" } }) {
        const Run refused = run(arguments);
        EXPECT_EQ(refused.status, 2) << testing::PrintToString(arguments);
        EXPECT_NE(refused.error.find("\n\nusage: velmora-inspect "), std::string::npos) << refused.error;
    }
    EXPECT_NE(inspect({ "--help" }).find("processes"), std::string::npos);
}
