#include "Flat.h"
#include "MacTool.h"

#include "tests/support/HostFolder.h"
#include "tests/support/Python.h"
#include "tests/support/TestVolume.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <profile/Reports.h>
#include <profile/SystemProfiler.h>

#include <sstream>

namespace {

using namespace profile;
using testing::HasSubstr;
using testing::Not;

class SystemProfilerTest : public testing::Test {
protected:
    std::string text(const Arguments& arguments, int status = 0) const
    {
        std::ostringstream out;
        EXPECT_EQ(WriteSystemProfile(arguments, host.tree(), out), status);
        return out.str();
    }

    TestVolume volume;
    HostFolder host;
};

TEST_F(SystemProfilerTest, ListsMountedVolumesOnceEachWithTheirSpace)
{
    host.add("proc/self/",
        { { "mountinfo",
            "21 1 0:5 / /proc rw - proc proc rw\n"
            "22 1 8:2 / / rw,noatime shared:1 - ext4 /dev/sda2 rw\n"
            "23 22 8:2 /home /srv/home rw - ext4 /dev/sda2 rw\n"
            "24 22 0:40 /sub /media/My\\040Disk ro,relatime master:2 - btrfs /dev/sdb1 rw\n" } });
    host.add("sys/",
        { { "devices/x/sda2/dev", "8:2\n" }, { "class/block/sda2", "-> sys/devices/x/sda2" },
            { "dev/block/8:2", "-> sys/devices/x/sda2" } });
    host.disk("pci0000:00/ata2/host1/target1:0:0/1:0:0:0", "sdb", { { "dev", "8:16" }, { "size", "4096" } })
        .partition(1, { { "dev", "8:17" }, { "start", "8" }, { "size", "4000" } });
    host.add("run/udev/data/", { { "b8:2", "E:ID_FS_LABEL_ENC=Main\\x20=1\nE:ID_FS_UUID=aa-bb\n" } });
    const Item::List items = StorageItems(host.tree());

    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].text("_name"), "Main =1");
    EXPECT_EQ(items[0].text("volume_uuid"), "aa-bb");
    EXPECT_THAT(Flat(items[0]), HasSubstr("free_space_in_bytes: "));
    EXPECT_EQ(Flat(items[1]),
        "{_name: My Disk, bsd_name: disk0s1, file_system: btrfs, mount_point: /media/My Disk, writable: no}");
}

TEST_F(SystemProfilerTest, TellsTheVolumesSystemVersionAndTheHostsKernel)
{
    host.add("proc/",
        { { "sys/kernel/ostype", "Linux\n" }, { "sys/kernel/osrelease", "6.1.0\n" },
            { "uptime", "93784.5 1.0\n" }, { "cmdline", "root=/dev/sda2 single\n" } });
    const Item item = SoftwareItems(host.tree()).front();

    EXPECT_EQ(item.text("os_version"), "macOS 10.15.7 (19H2)");
    EXPECT_EQ(item.text("kernel_version"), "Linux 6.1.0");
    EXPECT_EQ(item.text("boot_mode"), "safe_boot");
    EXPECT_EQ(item.text("uptime"), "up 1:2:03:04");
}

TEST_F(SystemProfilerTest, ListsBundlesWithThoseTheyCarryAndWithoutFollowingLinks)
{
    TestVolume::writeBundle(
        volume.root() / "Library/Extensions/Driver.kext", "1.2", "1.2.3", "org.example.driver");
    TestVolume::write(
        volume.root() / "Library/Extensions/Driver.kext/Contents/PlugIns/Damaged.kext/Contents/Info.plist",
        "?");
    std::filesystem::create_directory_symlink(".", volume.root() / "Library/Extensions/Loop");
    TestVolume::writeBundle(volume.home() / "Applications/Tools/Editor.app", "3.0", "");

    EXPECT_THAT(Flat(ExtensionItems(host.tree())),
        testing::MatchesRegex(
            "\\[\\{_name: Driver, spext_bundleid: org.example.driver, version: 1.2, spext_version: 1.2.3, "
            "spext_path: /Library/Extensions/Driver.kext, spext_lastModified: @[0-9]+\\}, "
            "\\{_name: Damaged, spext_path: [^,]*PlugIns/Damaged.kext, spext_lastModified: @[0-9]+\\}\\]"));
    EXPECT_THAT(Flat(ApplicationItems(host.tree())), HasSubstr("_name: Editor, version: 3.0, path: "));
}

TEST_F(SystemProfilerTest, ShowsTheLastLinesOfLogsThatAreText)
{
    std::string lines;
    for (int i = 0; lines.size() < 100000; ++i)
        lines += "line " + std::to_string(i) + " \x1B[31m\u009B\xC3(\n";
    host.add("var/log/",
        { { "syslog", lines }, { "wtmp", std::string("a\0b", 3) }, { "old.gz", "x\n" },
            { "self", "-> var/log/syslog" } });
    const Item::List items = LogItems(host.tree());

    ASSERT_EQ(items.size(), 1U);
    const std::string contents = items[0].text("contents");
    EXPECT_TRUE(contents.starts_with("line ")) << contents.substr(0, 20);
    EXPECT_TRUE(contents.ends_with(" [31m\uFFFD(\n")) << contents.substr(contents.size() - 20);
    EXPECT_LT(contents.size(), 64U * 1024);
}

TEST_F(SystemProfilerTest, WritesWordsInsteadOfKeysForPeople)
{
    const std::string card = "sys/class/drm/card0";
    host.add("proc/", { { "cpuinfo", "model name : Fast 7\n" } });
    host.add(card,
        { { "/device/vendor", "0x1002\n" }, { "-eDP-1/status", "connected\n" },
            { "-eDP-1/modes", "800x600\n" } });
    host.add("sys/bus/usb/devices/",
        { { "usb1/version", "2.00" }, { "1-1/product", "Hub" }, { "1-1.1/product", "Key" } });

    EXPECT_EQ(text({ "SPHardwareDataType", "SPFireWireDataType", "SPDisplaysDataType", "SPUSBDataType" }),
        "Hardware:\n\n    Hardware Overview:\n\n      Processor Name: Fast 7\n\n"
        "FireWire:\n\n"
        "Graphics/Displays:\n\n    card0:\n\n      Chipset Model: card0\n      Type: GPU\n      Vendor ID: "
        "0x1002\n"
        "      Displays:\n        eDP-1:\n          Resolution: 800x600\n          Connection Type: "
        "Internal\n"
        "          Online: No\n\n"
        "USB:\n\n    USB 2.00 Bus:\n\n\n        Hub:\n\n\n            Key:\n\n\n");
}

TEST_F(SystemProfilerTest, WritesWhatIsAskedForInThatOrderAndComplainsOfTheRest)
{
    host.add("proc/sys/kernel/", { { "hostname", "secret\n" }, { "ostype", "Linux\n" } });
    host.add("var/log/", { { "syslog", "secret\n" } });
    const Arguments asked { "-xml", "SPSoftwareDataType", "SPNonsense", "-timeout", "5", "SPPowerDataType" };

    EXPECT_EQ(PythonOfPropertyList(text(asked),
                  "print([(d['_dataType'], d['_parentDataType'], len(d['_items'])) for d in p], "
                  "p[0]['_SPCommandLineArguments'][1:3])"),
        "[('SPSoftwareDataType', 'SPRootDataType', 1), ('SPPowerDataType', 'SPHardwareDataType', 1)] "
        "['-xml', 'SPSoftwareDataType']\n");
    EXPECT_EQ(PythonOfPropertyList(text({ "-xml", "SPNonsense" }, 1), "print(p)"), "[]\n");
    EXPECT_THAT(text({ "SPSoftwareDataType", "SPLogsDataType" }), HasSubstr("secret"));
    EXPECT_THAT(
        text({ "-detailLevel", "mini", "SPSoftwareDataType", "SPLogsDataType" }), Not(HasSubstr("secret")));
    EXPECT_THAT(text({ "-detailLevel", "basic" }), Not(HasSubstr("Logs:")));
    EXPECT_EQ(text({ "-detailLevel", "some" }, 1) + text({ "-timeout" }, 1) + text({ "-json" }, 1), "");
}

TEST_F(SystemProfilerTest, ReportsAboutEverythingOnThisMachine)
{
    const ToolRun run = RunMacTool("/usr/sbin/system_profiler", { "-xml" });
    const ToolRun list = RunMacTool("/usr/sbin/system_profiler", { "-listDataTypes" });

    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
    EXPECT_EQ("Available Datatypes:\n" + PythonOfPropertyList(run.out, "for d in p: print(d['_dataType'])"),
        list.out);
    EXPECT_EQ(PythonOfPropertyList(run.out, "print(len(p), p[14]['_items'][0]['os_version'])"),
        "19 macOS 10.15.7 (19H2)\n");
}

}
