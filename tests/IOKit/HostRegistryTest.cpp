#include "TestHost.h"

#include <IOKit/CurrentRegistry.h>
#include <gmock/gmock.h>
#include <registry/RegistryText.h>

#include <sstream>

using testing::HasSubstr;

namespace {

std::vector<std::string> BsdNames(const iokit::Registry& registry)
{
    std::vector<std::string> names;
    for (const iokit::Entry* media : EntriesOf(registry, "IOMedia"))
        names.push_back(Property(*media, "BSD Name"));
    return names;
}

TEST(HostRegistry, ShowsASataDiskAsAMacDoes)
{
    TestHost host;
    host.sataDisk().add("",
        { { "etc/machine-id", "3d1219c7c4c5404aaa1f6d2a48adfda4\n" },
            { "sys/class/dmi/id/product_name", "Desk 3\n" }, { "sys/class/dmi/id/sys_vendor", "Cormorant\n" },
            { "sys/class/dmi/id/board_name", "Board-77\n" },
            { "sys/class/dmi/id/product_version", "System Version\n" },
            { "sys/class/dmi/id/product_serial", "Default string\n" } });
    RegistryView view;
    view.allProperties = true;
    std::ostringstream text;
    PrintRegistry(text, host.registry(), view);
    EXPECT_EQ(text.str(), R"text(+-o Root  <class IORegistryEntry, id 0x100000100, retain 2>
  | {
  |   "IORegistryPlanes" = {"IOService"="IOService","IODeviceTree"="IODeviceTree"}
  | }
  | 
  +-o Desk 3  <class IOPlatformExpertDevice, id 0x100000101, registered, matched, active, busy 0 (0 ms), retain 4>
    | {
    |   "compatible" = <"Desk 3">
    |   "board-id" = <"Board-77">
    |   "manufacturer" = <"Cormorant">
    |   "model" = <"Desk 3">
    |   "product-name" = <"Desk 3">
    |   "IOPlatformUUID" = "3D1219C7-C4C5-404A-AA1F-6D2A48ADFDA4"
    | }
    | 
    +-o IOAHCIDevice@0  <class IOAHCIDevice, id 0x100000102, registered, matched, active, busy 0 (0 ms), retain 3>
    | | {
    | |   "IOUnit" = 0
    | |   "Protocol Characteristics" = {"Physical Interconnect"="SATA","Physical Interconnect Location"="Internal"}
    | | }
    | | 
    | +-o AppleAHCIDiskDriver  <class AppleAHCIDiskDriver, id 0x100000103, registered, matched, active, busy 0 (0 ms), retain 3>
    |   | {
    |   |   "Model" = "Kestrel SSD 500GB Series 7"
    |   |   "Revision" = "2B6Q"
    |   |   "Serial Number" = "K7X0042"
    |   |   "Physical Interconnect Location" = "Internal"
    |   | }
    |   | 
    |   +-o IOAHCIBlockStorageDevice  <class IOAHCIBlockStorageDevice, id 0x100000104, registered, matched, active, busy 0 (0 ms), retain 3>
    |     | {
    |     |   "device-type" = "Generic"
    |     |   "IOStorageFeatures" = {"Unmap"=Yes}
    |     |   "IOMaximumByteCountRead" = 1310720
    |     |   "IOMaximumByteCountWrite" = 1310720
    |     |   "Device Characteristics" = {"Product Name"="Kestrel SSD 500GB Series 7","Product Revision Level"="2B6Q","Serial Number"="K7X0042","Medium Type"="Solid State","Logical Block Size"=512,"Physical Block Size"=4096}
    |     |   "Protocol Characteristics" = {"Physical Interconnect"="SATA","Physical Interconnect Location"="Internal"}
    |     | }
    |     | 
    |     +-o IOBlockStorageDriver  <class IOBlockStorageDriver, id 0x100000105, registered, matched, active, busy 0 (0 ms), retain 3>
    |       | {
    |       |   "Statistics" = {"Operations (Read)"=200,"Bytes (Read)"=2048000,"Total Time (Read)"=70000000,"Operations (Write)"=100,"Bytes (Write)"=819200,"Total Time (Write)"=30000000}
    |       | }
    |       | 
    |       +-o Kestrel SSD 500GB Series 7 Media  <class IOMedia, id 0x100000106, registered, matched, active, busy 0 (0 ms), retain 3>
    |         | {
    |         |   "BSD Name" = "disk0"
    |         |   "BSD Unit" = 0
    |         |   "BSD Major" = 8
    |         |   "BSD Minor" = 0
    |         |   "Size" = 500107862016
    |         |   "Preferred Block Size" = 512
    |         |   "Removable" = No
    |         |   "Ejectable" = No
    |         |   "Writable" = Yes
    |         |   "Whole" = Yes
    |         |   "Leaf" = No
    |         |   "Content" = "GUID_partition_scheme"
    |         |   "Content Hint" = ""
    |         | }
    |         | 
    |         +-o IOGUIDPartitionScheme  <class IOGUIDPartitionScheme, id 0x100000107, !registered, !matched, active, busy 0 (0 ms), retain 4>
    |           | {
    |           |   "Content Mask" = "GUID_partition_scheme"
    |           |   "UUID" = "6D1B2F4E-8C1D-4B53-9C76-0A1F5E2D7C33"
    |           | }
    |           | 
    |           +-o EFI System Partition@1  <class IOMedia, id 0x100000108, registered, matched, active, busy 0 (0 ms), retain 2>
    |           |   {
    |           |     "BSD Name" = "disk0s1"
    |           |     "BSD Unit" = 0
    |           |     "BSD Major" = 8
    |           |     "BSD Minor" = 1
    |           |     "Size" = 314572800
    |           |     "Preferred Block Size" = 512
    |           |     "Removable" = No
    |           |     "Ejectable" = No
    |           |     "Writable" = Yes
    |           |     "Whole" = No
    |           |     "Leaf" = Yes
    |           |     "Partition ID" = 1
    |           |     "Base" = 1048576
    |           |     "Content" = "C12A7328-F81F-11D2-BA4B-00A0C93EC93B"
    |           |     "Content Hint" = "C12A7328-F81F-11D2-BA4B-00A0C93EC93B"
    |           |     "UUID" = "0B6F1C5E-5D0C-4F29-9D1A-3C1D1A0F7A11"
    |           |   }
    |           |   
    |           +-o Untitled 2@2  <class IOMedia, id 0x100000109, registered, matched, active, busy 0 (0 ms), retain 2>
    |               {
    |                 "BSD Name" = "disk0s2"
    |                 "BSD Unit" = 0
    |                 "BSD Major" = 8
    |                 "BSD Minor" = 2
    |                 "Size" = 499791167488
    |                 "Preferred Block Size" = 512
    |                 "Removable" = No
    |                 "Ejectable" = No
    |                 "Writable" = No
    |                 "Whole" = No
    |                 "Leaf" = Yes
    |                 "Partition ID" = 2
    |                 "Base" = 315621376
    |                 "Content" = "48465300-0000-11AA-AA11-00306543ECAC"
    |                 "Content Hint" = "48465300-0000-11AA-AA11-00306543ECAC"
    |               }
    |               
    +-o options  <class IODTNVRAM, id 0x10000010a, registered, matched, active, busy 0 (0 ms), retain 2>
        {
        }
        
)text");
}

TEST(HostRegistry, TellsOfABoardAsItsDeviceTreeDoes)
{
    TestHost host;
    host.add("sys/firmware/devicetree/base/",
        { { "model", std::string("Heron 4 B\0", 10) },
            { "serial-number", std::string("100000003d1d1c36\0", 17) },
            { "compatible", std::string("heron,4-b\0maker,chip2711\0", 25) } });
    const iokit::Registry registry = host.registry();
    const iokit::Entry& computer = *EntriesOf(registry, "IOPlatformExpertDevice").at(0);
    EXPECT_EQ(Property(computer, "model") + Property(computer, "IOPlatformSerialNumber"),
        R"(<"Heron 4 B">"100000003d1d1c36")");
    EXPECT_EQ(Property(computer, "compatible"), R"(<"heron,4-b","maker,chip2711">)");
}

TEST(HostRegistry, DescribesAnNvmeDiskThatUdevDoesNotKnow)
{
    TestHost host;
    const iokit::Registry registry = host.nvmeDisk().registry();
    const iokit::Entry& device = *EntriesOf(registry, "IOBlockStorageDevice").at(0);
    EXPECT_EQ(device.objectClass->name + '@' + device.location, "IONVMeBlockStorageDevice@1");
    EXPECT_EQ(Property(device, "Device Characteristics"),
        R"({"Product Name"="Gannet M.2 1TB","Product Revision Level"="1.07","Serial Number"="G-0815-X","Medium Type"="Solid State"})");
    EXPECT_THAT(Property(device, "Protocol Characteristics"), HasSubstr(R"("PCI-Express")"));
    // Nobody tells the kind of table; the kernel's own name of the partition is there, without what moves a cursor.
    const iokit::Entry& scheme = *EntriesOf(registry, "IOPartitionScheme").at(0);
    EXPECT_EQ(scheme.objectClass->name, "IOPartitionScheme");
    EXPECT_EQ(scheme.children().at(0)->name, "Root [2J");
    EXPECT_EQ(Property(*scheme.children().at(0), "Content"), R"("")");
}

TEST(HostRegistry, NamesThePartitionsOfAnMbrAndLeavesTheirFrameOut)
{
    TestHost host;
    const iokit::Registry registry = host.usbStick().registry();
    const std::vector<const iokit::Entry*> media = EntriesOf(registry, "IOMedia");
    ASSERT_EQ(
        BsdNames(registry), (std::vector<std::string> { R"("disk0")", R"("disk0s1")", R"("disk0s10")" }));
    EXPECT_EQ(media[0]->name, "Heron Pocket Media");
    EXPECT_EQ(Property(*media[0], "Removable") + Property(*media[0], "Ejectable"), "YesYes");
    EXPECT_EQ(Property(*media[0], "Writable") + Property(*media[1], "Writable"), "Yes")
        << "not told of the second";
    EXPECT_EQ(Property(*media[1], "Content"), R"("Windows_FAT_32")");
    EXPECT_EQ(Property(*media[1], "UUID"), "") << "it is none";
    EXPECT_EQ(Property(*media[2], "Content"), R"("0xEF")");
    EXPECT_EQ(media[1]->parent()->objectClass->name, "IOFDiskPartitionScheme");
    const iokit::Entry& device = *EntriesOf(registry, "IOBlockStorageDevice").at(0);
    EXPECT_EQ(
        Property(device, "Device Characteristics"), R"({"Vendor Name"="Heron","Product Name"="Pocket"})")
        << "that it rotates is only what the kernel supposes";
}

TEST(HostRegistry, ShowsALoopDeviceWithAFileAsADiskImage)
{
    TestHost host;
    host.diskImage().disk("virtual", "loop4", { { "dev", "7:4" }, { "size", "0" } });
    const iokit::Registry registry = host.registry();
    const std::vector<const iokit::Entry*> devices = EntriesOf(registry, "IOBlockStorageDevice");
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_EQ(Property(*devices[0], "Protocol Characteristics"),
        R"({"Physical Interconnect"="Virtual Interface","Physical Interconnect Location"="File","Virtual Interface Location Path"=<"/home/ada/Tools.img">})");
    const iokit::Entry& media = *EntriesOf(registry, "IOMedia").at(0);
    EXPECT_EQ(
        Property(media, "Writable") + Property(media, "Ejectable") + Property(media, "Leaf"), "NoYesYes");
}

TEST(HostRegistry, NumbersDisksByTheirPlaceAndDrivesWithoutAMediumNotAtAll)
{
    TestHost host;
    host.disk("pci0000:00/ata10/host9/target9:0:0/9:0:0:0", "sda", { { "dev", "8:0" }, { "size", "30" } })
        .disk("pci0000:00/ata2/host1/target1:0:0/1:0:0:0", "sdb", { { "dev", "8:16" }, { "size", "20" } })
        .disk("pci0000:00/ata1/host0/target0:0:0/0:0:0:0", "sr0",
            { { "dev", "11:0" }, { "size", "2097151" } }, { { "ID_CDROM", "1" }, { "ID_CDROM_DVD", "1" } })
        .disk("pci0000:00/ata3/host2/target2:0:0/2:0:0:0", "sr1", { { "dev", "11:1" }, { "size", "700000" } },
            { { "ID_CDROM_MEDIA", "1" }, { "ID_CDROM_MEDIA_DVD", "1" } })
        .disk("pci0000:00/ata4/host3/target3:0:0/3:0:0:0", "sr2", { { "size", "2097151" } });
    const iokit::Registry registry = host.registry();
    EXPECT_EQ(EntriesOf(registry, "IODVDBlockStorageDevice").size(), 1U);
    const std::vector<const iokit::Entry*> media = EntriesOf(registry, "IOMedia");
    ASSERT_EQ(BsdNames(registry), (std::vector<std::string> { R"("disk0")", R"("disk1")", R"("disk2")" }));
    EXPECT_EQ(
        Property(*media[0], "Size") + ' ' + media[1]->objectClass->name + ' ' + Property(*media[2], "Size"),
        "10240 IODVDMedia 15360");
}

TEST(HostRegistry, NeverGivesANumberTwice)
{
    TestHost host;
    host.sataDisk().usbStick();
    iokit::HostSource source(host.tree());
    const auto first = source.read();
    const auto second = source.read();
    EXPECT_GT(second->root().id, first->entries().back().id);
}

TEST(HostRegistry, TakesWhatIsLeftOfDevicesThatAreGoing)
{
    TestHost host;
    host.disk("pci0000:00/ata1", "sda",
            { { "size", "8" }, { "dev", "x" }, { "stat", "7 what" }, { "ro", "-1" },
                { "device/vpd_pg80", std::string("\0\x80\0\4 X-9", 8) } })
        .partition(1, {})
        .disk("pci0000:00/ata2", "sdb", {});
    host.add("sys/block/", { { "sdc", "-> sys/devices/gone" } });
    const iokit::Registry registry = host.registry();
    EXPECT_EQ(EntriesOf(registry, "IOBlockStorageDriver").size(), 2U);
    const std::vector<const iokit::Entry*> media = EntriesOf(registry, "IOMedia");
    ASSERT_EQ(media.size(), 2U);
    EXPECT_EQ(media[0]->name, "Media");
    EXPECT_EQ(
        Property(*media[0], "BSD Major") + Property(*media[0], "Writable") + Property(*media[1], "Size"), "");
    EXPECT_EQ(Property(*EntriesOf(registry, "IOBlockStorageDriver")[0], "Statistics"),
        R"text({"Operations (Read)"=7})text");
    EXPECT_EQ(Property(*EntriesOf(registry, "IOBlockStorageDevice")[0], "Device Characteristics"),
        R"({"Serial Number"="X-9"})");
    EXPECT_EQ(iokit::ReadHostRegistry(HostTree("/nowhere")).root().children().size(), 1U);
}

}
