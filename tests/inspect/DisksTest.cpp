#include "tests/inspect/Inspection.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

/// A SATA disk with two partitions, a USB stick with a name that moves cursors ("ESC" is the character), a drive on a bus of its
/// own with a container on it, and a SCSI disk that comes last but is the first to be told of.
std::string Capture()
{
    std::string text = TestVolume::read(DRIVES);
    return text.replace(text.find("ESC"), 3, "\x1b");
}

class DisksTest : public InspectTest {
protected:
    DisksTest() { TestVolume::write(fCapture, Capture()); }

    std::vector<std::string> disks(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), { "disks", "--registry", fCapture });
        return arguments;
    }

    const std::string fCapture = fVolume.root() / "capture.txt";
};
}

TEST_F(DisksTest, AreATableForPeople)
{
    EXPECT_EQ(inspect(disks({})),
        "NAME          SIZE  BUS           TYPE  MAKE     MODEL          FIRMWARE  SERIAL  LOCATION  "
        "PARTITIONS   TRIM  LABEL\n"
        "disk0       465 GB  SATA          SSD   Samsung  850            2B6Q      W-1     Bay 1     "
        "HFS          yes\n"
        "disk0s2     465 GB                                                                          "
        "HFS                Music\n"
        "disk0s10    619 MB                                                                          "
        "Apple_Boot         Boot\n"
        "disk1      1.86 GB  USB 3         disk  Unknown  Evil ?[31mred  -         U\"1\\    -         "
        "-            no\n"
        "disk2       460 GB  Apple Fabric  APFS  Apple    AP0512Q        -         X9      -         "
        "-            no\n"
        "disk2s1     460 GB                                                                          "
        "APFS volume        Data\n"
        "disk2s1s1  0.00 KB                                                                          "
        "-                  com.apple.os.update-779BDF1556C\u2026\n"
        "disk10           -  SCSI          disk  -        -              -         -       -         "
        "-            no\n");
}

TEST_F(DisksTest, AreDescribedInFullByName)
{
    const Run some = run(disks({ "disk0s10", "disk3", "disk0" }));
    EXPECT_EQ(some.status, 1);
    EXPECT_EQ(some.error, "velmora-inspect: no disk or partition has the name disk3\n");
    EXPECT_EQ(some.out.substr(0, some.out.find("\n\n")),
        "Name              disk0\n"
        "Size              500,107,862,016 bytes (465 GB)\n"
        "Media type        SSD\n"
        "Make              Samsung\n"
        "Model             850\n"
        "Firmware          2B6Q\n"
        "Location          Bay 1\n"
        "Bus               SATA\n"
        "Serial number     W-1\n"
        "Partition type    HFS\n"
        "Content           GUID_partition_scheme\n"
        "GPT UUID          23F6399B-C512-8FAF-3369-35ABB4074F18\n"
        "TRIM              yes\n"
        "Removable         no\n"
        "Label             One Media\n"
        "Block size        512 bytes (0.50 KB)\n"
        "Largest transfer  131,072 bytes (128 KB)\n"
        "Operations read   7\n"
        "Bytes read        4096\n"
        "Errors writing    2");
    EXPECT_THAT(some.out, HasSubstr("Name              disk0s10\nPart of           disk0\n"));
    EXPECT_THAT(some.out, HasSubstr("Serial number     W-1\n")) << "of the drive";
}

TEST_F(DisksTest, AreObjectsForPrograms)
{
    EXPECT_EQ(ask(disks({ "--json" }),
                  "'\\n'.join(str([d.get(k) for k in ('name', 'disk', 'size', 'bus', 'mediaType', "
                  "'serialNumber', 'target', 'unit', 'role', 'isRemovable', 'statistics')]) for d in found)"),
        "['disk0', None, 500107862016, 'SATA', 'SSD', 'W-1', None, None, None, False, "
        "{'operationsRead': 7, 'bytesRead': 4096, 'errorsWritten': 2}]\n"
        "['disk0s2', 'disk0', 499457859584, 'SATA', 'SSD', 'W-1', None, None, None, False, None]\n"
        "['disk0s10', 'disk0', 650002432, 'SATA', 'SSD', 'W-1', None, None, None, False, None]\n"
        "['disk1', None, 2000000000, 'USB 3', 'disk', 'U\"1\\\\', 5, None, None, True, None]\n"
        "['disk2', None, 494384795648, 'Apple Fabric', 'APFS', 'X9', None, None, None, False, None]\n"
        "['disk2s1', 'disk2', 494384795648, 'Apple Fabric', 'APFS', 'X9', None, None, 'VM', False, "
        "None]\n"
        "['disk2s1s1', 'disk2', 0, 'Apple Fabric', 'APFS', 'X9', None, None, None, False, None]\n"
        "['disk10', None, None, 'SCSI', 'disk', None, 3, 1, None, False, None]\n");
    EXPECT_EQ(
        ask(disks({ "--json", "disk1" }), "[found[0]['model'], len(found)]"), "['Evil \\x1b[31mred', 1]\n");
    EXPECT_EQ(ask(disks({ "--json" }), "[d['name'] for d in found if 'volumePath' in d]"), "[]\n")
        << "this computer's";
}

TEST_F(DisksTest, OfThisComputerAreListed)
{
    EXPECT_EQ(run({ "disks" }).status, 0);
    EXPECT_EQ(ask({ "disks", "--json" }, "all(d['name'].startswith('disk') for d in found)"), "True\n");
}

TEST_F(DisksTest, OfDamagedAndMissingCapturesAreTheRestOrAProblem)
{
    TestVolume::write(fCapture, Capture().substr(0, Capture().find("\"Size\" = 499457859584")));
    const Run damaged = run(disks({ "--json" }));
    EXPECT_EQ(damaged.status, 0);
    EXPECT_THAT(damaged.error,
        testing::MatchesRegex("velmora-inspect: " + fCapture + ": [1-9] places? could not be read\n"));
    EXPECT_EQ(ask(disks({ "--json" }), "[d['name'] for d in found]"),
        "['disk0', 'disk0s2', 'disk0s10', 'disk10']\n");
    TestVolume::write(fCapture, "nothing of the kind");
    for (const std::string& path : { fCapture, fCapture + "\x1b-none" }) {
        const Run none = run({ "disks", "--registry", path });
        EXPECT_EQ(none.status, 1);
        EXPECT_EQ(none.out, "");
        EXPECT_THAT(none.error, testing::StartsWith("velmora-inspect: " + fCapture));
        EXPECT_EQ(none.error.find('\x1b'), std::string::npos);
    }
}
