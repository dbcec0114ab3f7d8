#include "tests/inspect/Inspection.h"

#include <gmock/gmock.h>

#include <unistd.h>

using testing::ContainsRegex;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

class CaptureTest : public InspectTest {
protected:
    Run capture() const { return run({ "capture", fFolder }); }

    /// Puts a shell script into the place of a tool.
    void replaceTool(const std::string& name, const std::string& script) const
    {
        const fs::path tool = fVolume.root() / "usr/sbin" / name;
        fs::create_directories(tool.parent_path());
        TestVolume::write(tool, "#!/bin/sh\n" + script + '\n');
        fs::permissions(tool, fs::perms::owner_all);
    }

    const std::string fFolder = fVolume.root() / "cap ture";
};

}

TEST_F(CaptureTest, FillsAFolderThatTakesTheComputersPlace)
{
    const Run first = capture();
    EXPECT_EQ(first.status, 0) << first.error;
    EXPECT_EQ(first.out, "");
    EXPECT_THAT(first.error, ContainsRegex("^device registry: ioreg.txt, [0-9.]+ [KM]B, [0-9]+.[0-9] s\n"));
    EXPECT_THAT(first.error, HasSubstr("system profile: system_profiler.xml, "));
    const std::string disks = "[[d.get(k) for k in ('name', 'disk', 'size', 'bus', 'model', 'serialNumber', "
                              "'partitionType', 'label')] for d in found]";
    std::string recorded;
    EXPECT_TRUE(Eventually([&] { // other tests attach disks meanwhile
        const std::string before = ask({ "disks", "--json" }, disks);
        capture();
        recorded = ask({ "disks", "--json", "--registry", fFolder }, disks);
        return recorded == before;
    })) << recorded;
    EXPECT_EQ(ask({ "system", "--json", "--registry", fFolder }, "found[0]['systemVersion']"), "10.15.7\n");

    TestVolume::write(fs::path(fFolder) / "pmset.txt", "of an earlier one");
    EXPECT_EQ(ask({ "capture", "--json", fFolder }, "[(p['file'], p['size'] > 0) for p in found]"),
        "[('ioreg.txt', True), ('kextstat.txt', True), ('diskutil.txt', True), ('pmset.txt', True), "
        "('system_profiler.xml', True)]\n");
    EXPECT_NE(TestVolume::read(fs::path(fFolder) / "pmset.txt"), "of an earlier one");
}

TEST_F(CaptureTest, LeavesFoldersAloneThatHoldAnythingElse)
{
    const fs::path folder = fFolder;
    const auto isRefused = [&] {
        fs::create_directories(folder);
        TestVolume::write(folder / "kextstat.txt", "earlier");
        const Run refused = capture();
        return refused.status == 1 && refused.error.starts_with("velmora-inspect: " + fFolder + ": it holds ")
            && TestVolume::read(folder / "kextstat.txt") == "earlier" && fs::remove_all(folder) == 3;
    };
    fs::create_directories(folder);
    TestVolume::write(folder / "letter.txt", "");
    EXPECT_TRUE(isRefused());
    fs::create_directories(folder / "ioreg.txt");
    EXPECT_TRUE(isRefused()) << "a folder under a capture's name";
    fs::create_directories(folder);
    fs::create_symlink("/", folder / "ioreg.txt");
    EXPECT_TRUE(isRefused()) << "a link under a capture's name";

    EXPECT_EQ(run({ "capture", fFolder + "/below" }).status, 1) << "its parent is missing";
    EXPECT_FALSE(fs::exists(folder));
    TestVolume::write(folder, "a file");
    EXPECT_EQ(capture().status, 1);
    EXPECT_EQ(TestVolume::read(folder), "a file");
}

TEST_F(CaptureTest, GoesOnAfterToolsThatFailOrSayNothing)
{
    replaceTool("kextstat", "echo partly; exit 3");
    replaceTool("diskutil", "exit 0");
    const Run done = capture();
    EXPECT_EQ(done.status, 1);
    EXPECT_THAT(
        done.error, HasSubstr("\nkernel extensions: failed\ndisks: empty\npower settings: pmset.txt, "));
    EXPECT_THAT(done.error, HasSubstr("\nvelmora-inspect: not complete: kernel extensions, disks\n"));
}

TEST_F(CaptureTest, TellsWhatIsCompleteWhenItIsInterrupted)
{
    fs::create_directories(fFolder);
    TestVolume::write(fs::path(fFolder) / "pmset.txt", "of an earlier one");
    replaceTool("diskutil", "kill -INT $PPID; kill -INT $$");
    const Run stopped = capture();
    EXPECT_EQ(stopped.status, 1);
    EXPECT_THAT(stopped.error,
        HasSubstr(
            "\ndisks: failed\nvelmora-inspect: interrupted; complete: device registry, kernel extensions\n"));
    EXPECT_FALSE(fs::exists(fs::path(fFolder) / "pmset.txt")) << "it would be taken for one of this time";
}
