#include "tests/inspect/Inspection.h"

#include "util/Launch.h"

#include <sys/stat.h>

namespace {

class VolumesTest : public InspectTest { };

/// Whether the file system that holds the start-up volume is the one at "/", and on a disk.
bool IsRootOnDisk(const std::filesystem::path& volume)
{
    struct stat own { };
    struct stat root { };
    const auto source = OutputOfProgram("/usr/bin/findmnt", { "-no", "SOURCE", "/" });
    return stat(volume.c_str(), &own) == 0 && stat("/", &root) == 0 && own.st_dev == root.st_dev && source
        && source->starts_with("/dev/");
}

}

TEST_F(VolumesTest, OfARecordingAreThoseThatCouldBeMountedThere)
{
    std::string capture = TestVolume::read(DRIVES);
    capture.replace(capture.find("Data@1"), 4, "Da\x07\"");
    const std::string file = fVolume.root() / "capture.txt";
    TestVolume::write(file, capture);
    EXPECT_EQ(inspect({ "volumes", "--registry", file }),
        "NAME      VOLUME  KIND  MEDIUM  PARTITION    ROLE  LABEL\n"
        "disk0s2   -       -     465 GB  HFS          -     Music\n"
        "disk0s10  -       -     619 MB  Apple_Boot   -     Boot\n"
        "disk2s1   Da?\"    apfs  460 GB  APFS volume  VM\n");
    EXPECT_EQ(ask({ "volumes", "--json", "--registry", file, "/dev/disk2s1" },
                  "[(v['name'], v['volumeName'], v['role'], v['isMountable'], v.get('volumePath'), "
                  "v.get('volumeSize'), v.get('isIndexed')) for v in found]"),
        "[('disk2s1', 'Da\\x07\"', 'VM', True, None, None, None)]\n");
    const Run missing = run({ "volumes", "--registry", file, "disk0", "/", "disk0s2" });
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.error,
        "velmora-inspect: no volume has the name or the path /\n"
        "velmora-inspect: no volume has the name or the path disk0\n");
    EXPECT_NE(missing.out.find("Name              disk0s2\n"), std::string::npos) << missing.out;
}

TEST_F(VolumesTest, OfThisComputerHaveTheSpaceThatOthersSee)
{
    if (!IsRootOnDisk(fVolume.root()))
        GTEST_SKIP() << "the root's disk is not known, or the test's folder lies elsewhere";
    const auto told = OutputOfProgram("/usr/bin/findmnt", { "-rnbo", "SIZE,FSTYPE", "/" });
    EXPECT_EQ(ask({ "volumes", "--json" },
                  "[f\"{v['volumeSize']} {v['kind']}\" for v in found if v.get('volumePath') == '/'][0]"),
        told.value_or("no findmnt"));
    EXPECT_EQ(ask({ "volumes", "--json", "/" },
                  "[(len(found), v['size'] >= v['volumeSize'] >= v['volumeFree'] >= v['volumeAvailable'], "
                  "v['isMountable']) for v in found]"),
        "[(1, True, True)]\n");
}
