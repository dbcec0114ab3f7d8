#include "TestHost.h"

#include <IOKit/HostScsi.h>
#include <IOKit/Properties.h>
#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

const HostFolder::Texts kTenSectors { { "size", "10" } };

HostFolder::Texts With(HostFolder::Texts attributes)
{
    attributes.merge(HostFolder::Texts(kTenSectors));
    return attributes;
}

/// What the tests of the library ask of a disk.
std::string Interconnect(const iokit::Entry& media) { return Searched(media, "Protocol Characteristics"); }

TEST(HostBus, SharesTheDevicesOnTheWaysToDisks)
{
    TestHost host;
    const std::string root = "sys/devices/pci0000:00/";
    host.add(root + "0000:00:1f.2/",
            { { "vendor", "0x8086\n" }, { "device", "0xa282\n" }, { "class", "0x010601\n" },
                { "label", "Onboard SATA\n" }, { "firmware_node/path", "\\_SB_.PCI0.SAT_\n" } })
        .add(root + "0000:00:1f.2/ata3/ata_port/ata3/", { { "port_no", "3" } })
        .add("run/udev/data/", { { "+pci:0000:00:1f.2", "E:ID_MODEL_FROM_DATABASE=200 Series\n" } })
        .add(root + "0000:00:01.0/",
            { { "vendor", "0x8086\n" }, { "device", "0x1901\n" }, { "class", "0x060400\n" } })
        .add(root + "0000:00:01.0/0000:01:00.0/", { { "vendor", "0x144d\n" }, { "device", "0xa808\n" } })
        .add("sys/bus/pci/slots/4/", { { "address", "0000:01:00\n" } })
        .disk("pci0000:00/0000:00:1f.2/ata3/host2/target2:0:0/2:0:0:0", "sda",
            With({ { "device/model", "K" } }))
        .disk("pci0000:00/0000:00:1f.2/ata3/host2/target2:1:0/2:1:0:0", "sdb",
            With({ { "device/model", "K" } }))
        .disk("pci0000:00/0000:00:01.0/0000:01:00.0/nvme/nvme0", "nvme0n1",
            With({ { "nsid", "1" }, { "device/serial", "  S-1" }, { "device/model", "Gannet  " } }))
        .disk("pci0000:00/0000:00:01.0/0000:01:00.0/nvme/nvme0", "nvme0n2", With({ { "nsid", "2" } }));
    const iokit::Registry registry = host.registry();
    EXPECT_EQ(EntriesOf(registry, "IOPCIDevice").size() + EntriesOf(registry, "IONVMeController").size(), 4U);
    const iokit::Entry& nvme = MediaNamed(registry, "disk0");
    EXPECT_EQ(WayTo(nvme),
        "pci8086,1901@1 > pci144d,a808@0 > IONVMeController > IONVMeBlockStorageDevice@1 > "
        "IOBlockStorageDriver > Gannet Media");
    EXPECT_EQ(Searched(nvme, "Model Number") + Searched(nvme, "Serial Number"), R"("Gannet""S-1")");
    EXPECT_EQ(Searched(nvme, "io-device-location"), R"(<"Slot-4">)");
    const iokit::Entry& sata = MediaNamed(registry, "disk2");
    EXPECT_EQ(WayTo(sata),
        "SAT@1F,2 > PRT2@2 > IOAHCIDevice@0 > AppleAHCIDiskDriver > IOAHCIBlockStorageDevice > "
        "IOBlockStorageDriver > K Media");
    EXPECT_EQ(WayTo(MediaNamed(registry, "disk3")), WayTo(sata)) << "equal disks are two all the same";
    EXPECT_EQ(Searched(sata, "vendor-id") + Searched(sata, "device-id") + Searched(sata, "class-code"),
        "<86800000><82a20000><01060100>");
    EXPECT_EQ(
        Searched(sata, "io-device-location") + Searched(sata, "IOName"), R"(<"Onboard SATA">"pci8086,a282")");

    const std::vector<const iokit::Entry*>& tops = registry.root().children(iokit::Plane::DeviceTree);
    ASSERT_EQ(tops.size(), 1U);
    const std::vector<const iokit::Entry*>& known = tops[0]->children(iokit::Plane::DeviceTree);
    ASSERT_EQ(known.size(), 3U);
    EXPECT_EQ(known[0]->children(iokit::Plane::DeviceTree).size(), 1U) << "the bridge has the disk's device";
    EXPECT_EQ(known[2]->name + known[2]->objectClass->name, "optionsIODTNVRAM");
}

TEST(HostBus, KnowsWhatIsPluggedInThroughThunderbolt)
{
    TestHost host;
    const std::string port = "sys/devices/pci0000:00/0000:00:1c.4/";
    host.add("sys/bus/thunderbolt/devices/", { { "domain0/security", "user" } })
        .add(port, { { "vendor", "0x8086\n" }, { "device", "0x9d14\n" }, { "removable", "fixed\n" } });
    for (const char* const outside : { "0000:04:00.0/", "0000:04:00.0/0000:05:00.0/" }) {
        host.add(port + outside,
            { { "vendor", "0x8086\n" }, { "device", "0x15d3\n" }, { "removable", "removable\n" } });
    }
    host.disk("pci0000:00/0000:00:1c.4/0000:04:00.0/0000:05:00.0/nvme/nvme1", "nvme1n1", kTenSectors)
        .disk("pci0000:00/0000:00:1c.4/0000:06:00.0/nvme/nvme2", "nvme2n1", kTenSectors);
    const iokit::Registry registry = host.registry();
    const iokit::Entry& outside = MediaNamed(registry, "disk0");
    EXPECT_EQ(
        Searched(outside, "Thunderbolt Path"), R"("IOService:/IOPlatformExpertDevice/pci8086,9d14@1C,4")");
    EXPECT_THAT(Interconnect(outside), HasSubstr("External"));
    EXPECT_EQ(Property(outside, "Ejectable") + Property(outside, "Removable"), "YesNo");
    const iokit::Entry& inside = MediaNamed(registry, "disk1");
    EXPECT_EQ(Searched(inside, "Thunderbolt Path"), "");
    EXPECT_THAT(Interconnect(inside), HasSubstr("Internal"));
}

TEST(HostBus, DescribesUsbDevicesAndTheHubsAboveThem)
{
    TestHost host;
    const std::string hub = "sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/";
    host.usbStick()
        .add(hub,
            { { "devnum", "3\n" }, { "speed", "480\n" }, { "serial", "HUB\n" }, { "removable", "fixed\n" } })
        .add(hub + "2-1.4/",
            { { "devnum", "7\n" }, { "busnum", "2\n" }, { "devpath", "1.4\n" }, { "speed", "5000\n" },
                { "idVendor", "05ac\n" }, { "idProduct", "12a8\n" }, { "bcdDevice", "0510\n" },
                { "manufacturer", "Heron\n" }, { "product", "Pocket\n" }, { "serial", "H-77\n" } })
        .disk(
            "pci0000:00/0000:00:14.0/usb2/2-1/2-1.4/2-1.4:1.0/host7/target7:0:0/7:0:0:1", "sdc", kTenSectors);
    const iokit::Registry registry = host.registry();
    const iokit::Entry& disk = MediaNamed(registry, "disk0");
    EXPECT_EQ(WayTo(disk),
        "IOUSBHostDevice > Pocket@02140000 > IOSCSILogicalUnitNub@1 > IOBlockStorageServices > "
        "IOBlockStorageDriver > Media");
    EXPECT_EQ(
        Searched(disk, "USB Address") + Searched(disk, "USB Serial Number") + Searched(disk, "Device Speed"),
        R"(7"H-77"3)");
    EXPECT_EQ(Searched(disk, "idVendor") + ' ' + Searched(disk, "idProduct") + ' '
            + Searched(disk, "bcdDevice") + ' ' + Searched(disk, "locationID"),
        "1452 4776 1296 34865152");
    EXPECT_THAT(Interconnect(disk), HasSubstr(R"("USB","Physical Interconnect Location"="External")"));
    const iokit::Entry& builtIn = MediaNamed(registry, "disk1");
    EXPECT_EQ(Searched(builtIn, "Device Speed"), "2");
    EXPECT_THAT(Interconnect(builtIn), HasSubstr("Internal"));
}

TEST(HostBus, TellsTheBusesOfScsiDisksApart)
{
    TestHost host;
    const std::string port = "pci0000:00/host1/rport-1:0-2";
    host.add("sys/devices/" + port + "/fc_remote_ports/rport-1:0-2/",
            { { "node_name", "0x50060160bce02b1c\n" } })
        .disk(port + "/target1:0:2/1:0:2:5", "sda", kTenSectors)
        .disk("pci0000:00/host3/port-3:0/end_device-3:0/target3:0:0/3:0:0:0", "sdb",
            With({ { "device/vpd_pg80", std::string("\0\x80\0\4 S-9", 8) },
                { "device/vpd_pg83",
                    std::string(
                        "\0\x83\0\x18\2\1\0\4ABCD\1\3\0\10\x50\0\xc5\0\x12\x34\x56\x78\1\3\0\xff", 28) } }))
        .disk("pci0000:00/host4/target4:0:3/4:0:3:1", "sdc", kTenSectors)
        .disk("platform/host5/session1/target5:0:0/5:0:0:0", "sdd", kTenSectors)
        .add("sys/devices/pci0000:00/fw1/", { { "guid", "0xfedcba9876543210\n" } })
        .disk("pci0000:00/fw1/fw1.0/host6/target6:0:0/6:0:0:0", "sde", kTenSectors);
    const iokit::Registry registry = host.registry();
    const std::vector<const iokit::Entry*> media = EntriesOf(registry, "IOMedia");
    ASSERT_EQ(media.size(), 5U);
    EXPECT_EQ(Interconnect(MediaNamed(registry, "disk1")),
        R"({"Physical Interconnect"="Fibre Channel Interface","Node World Wide Name"=<50060160bce02b1c>,"SCSI Target Identifier"=2,"SCSI Logical Unit Number"=5})");
    const iokit::Entry& sas = MediaNamed(registry, "disk2");
    EXPECT_THAT(Interconnect(sas), HasSubstr(R"("SAS")"));
    EXPECT_EQ(Searched(sas, "Serial Number"), R"("S-9")");
    EXPECT_EQ(Searched(sas, "INQUIRY Device Identification"),
        R"(({"Identifier Type"=3,"Identifier Code Set"=1,"Association"=0,"Identifier"=<5000c50012345678>},{"Identifier Type"=1,"Identifier Code Set"=2,"Association"=0,"Identifier"="ABCD"}))");
    const iokit::Entry& scsi = MediaNamed(registry, "disk3");
    EXPECT_EQ(Interconnect(scsi),
        R"({"Physical Interconnect"="SCSI","SCSI Target Identifier"=3,"SCSI Logical Unit Number"=1})");
    EXPECT_EQ(Searched(scsi, "SCSI Logical Unit Number"), "1");
    EXPECT_THAT(Interconnect(MediaNamed(registry, "disk4")), HasSubstr(R"("iSCSI")"));
    const iokit::Entry& fireWire = MediaNamed(registry, "disk0");
    EXPECT_THAT(Interconnect(fireWire), HasSubstr(R"("FireWire")"));
    EXPECT_EQ(iokit::NumberOf(EntriesOf(registry, "IOFireWireDevice").at(0)->property("GUID")),
        0xfedcba9876543210U);
}

TEST(HostBus, TellsOldAtaWiresFromSata)
{
    TestHost host;
    const HostFolder::Texts disk = With({ { "device/serial", "P-3" } });
    host.add("sys/devices/pci0000:00/0000:00:07.1/", { { "class", "0x01018a\n" } })
        .add("sys/devices/pci0000:00/0000:00:07.1/ata2/link2/ata_link/link2/",
            { { "sata_spd", "<unknown>\n" } })
        .add("sys/devices/pci0000:00/0000:00:07.1/ata3/link3/ata_link/link3/",
            { { "sata_spd", "3.0 Gbps\n" } })
        .disk("pci0000:00/0000:00:07.1/ata2/host1/target1:0:1/1:0:1:0", "sda", disk)
        .disk("pci0000:00/0000:00:07.1/ata3/host2/target2:0:0/2:0:0:0", "sdb", disk);
    const iokit::Registry registry = host.registry();
    const iokit::Entry& old = MediaNamed(registry, "disk0");
    EXPECT_THAT(Interconnect(old), HasSubstr(R"("ATA")"));
    EXPECT_EQ(Searched(old, "unit number") + Searched(old, "device serial"), R"(1"P-3")");
    EXPECT_THAT(Interconnect(MediaNamed(registry, "disk1")), HasSubstr(R"("SATA")"));
}

TEST(HostBus, FindsTheControllersOfADiskThatHasSeveral)
{
    TestHost host;
    const std::string subsystem = "virtual/nvme-subsystem/nvme-subsys0";
    host.add("sys/devices/",
            { { "pci0000:00/nvme/nvme0/serial", "A\n" }, { "pci0000:80/nvme/nvme1/serial", "B\n" } })
        .disk(subsystem, "nvme0n1", With({ { "device/model", "Gannet" } }))
        .add("sys/devices/" + subsystem + '/',
            { { "nvme0", "-> sys/devices/pci0000:00/nvme/nvme0" },
                { "nvme1", "-> sys/devices/pci0000:80/nvme/nvme1" } })
        .disk("pci0000:00/nvme/nvme0", "nvme0c0n1", With({ { "hidden", "1" } }));
    const iokit::Registry registry = host.registry();
    ASSERT_EQ(EntriesOf(registry, "IOMedia").size(), 1U);
    const iokit::Entry& device = *EntriesOf(registry, "IONVMeBlockStorageDevice").at(0);
    ASSERT_EQ(device.services.parents.size(), 2U);
    EXPECT_EQ(Property(*device.services.parents[1], "Serial Number"), R"("B")");
}

TEST(HostBus, ReadsAddressesAndIdentificationsOfAnyBytes)
{
    for (const char* const name :
        { "", "1:2:3", "1:2:3:4:5", "1:2:3:4 ", "1:2:3:x", "99999999999999999999:0:0:0" })
        EXPECT_FALSE(iokit::ScsiAddressIn(name)) << name;
    EXPECT_EQ(iokit::ScsiAddressIn("7:0:12:3")->target, 12U);
    const std::string page("\0\x83\0\x0c\1\3\0\10ABCDEFGH", 16);
    for (size_t length = 0; length < page.size(); ++length)
        EXPECT_FALSE(iokit::DeviceIdentification(page.substr(0, length))) << length;
    EXPECT_TRUE(iokit::DeviceIdentification(page));
    EXPECT_EQ(iokit::WorldWideName("0x1g") + iokit::WorldWideName("123") + iokit::WorldWideName("0x"), "");
}

}
