#include "TestHost.h"

#include <IOKit/Properties.h>
#include <gmock/gmock.h>
#include <registry/DiskList.h>
#include <registry/ValueText.h>

#include <sstream>

namespace {

std::string Table(const TestHost& host, const std::string& identifier = "")
{
    const std::vector<ListedDisk> disks = DisksOf(host.registry(), host.tree());
    std::ostringstream text;
    PrintDisks(text, identifier.empty() ? disks : DisksNamed(disks, identifier));
    return text.str();
}

TEST(DiskList, IsATableAsOnAMac)
{
    TestHost host;
    EXPECT_EQ(Table(host.sataDisk().usbStick().diskImage()),
        R"(/dev/disk0 (external, physical):
   #:                       TYPE NAME                    SIZE       IDENTIFIER
   0:     FDisk_partition_scheme                        *16.0 GB    disk0
   1:             Windows_FAT_32                         1.0 GB     disk0s1
   2:                       0xEF                         2.1 MB     disk0s10

/dev/disk1 (internal, physical):
   #:                       TYPE NAME                    SIZE       IDENTIFIER
   0:      GUID_partition_scheme                        *500.1 GB   disk1
   1:                        EFI EFI                     314.6 MB   disk1s1
   2:                  Apple_HFS Müsli HD                499.8 GB   disk1s2

/dev/disk2 (disk image):
   #:                       TYPE NAME                    SIZE       IDENTIFIER
   0:                                                   +10.5 MB    disk2

)");
}

TEST(DiskList, FindsADiskOrAPartitionByItsIdentifierAndNode)
{
    TestHost host;
    host.sataDisk().usbStick();
    EXPECT_EQ(Table(host, "/dev/disk1s2"), R"(/dev/disk1s2 (internal, physical):
   #:                       TYPE NAME                    SIZE       IDENTIFIER
   0:                  Apple_HFS Müsli HD                499.8 GB   disk1s2

)");
    EXPECT_EQ(Table(host, "/dev/rdisk0"), Table(host, "disk0"));
    EXPECT_EQ(Table(host, "disk9") + Table(host, "disk") + Table(host, "/dev/"), "");
}

TEST(DiskList, IsAPropertyListOfTheSame)
{
    TestHost host;
    host.sataDisk();
    std::string text;
    AppendValue(text, DisksAsPropertyList(DisksOf(host.registry(), host.tree())).get(), false);
    EXPECT_EQ(text,
        R"text({"AllDisks"=("disk0","disk0s1","disk0s2"),"AllDisksAndPartitions"=({"DeviceIdentifier"="disk0",)text"
        R"text("Size"=500107862016,"Content"="GUID_partition_scheme","Partitions"=({"DeviceIdentifier"="disk0s1",)text"
        R"text("Size"=314572800,"Content"="EFI","VolumeName"="EFI","DiskUUID"="0B6F1C5E-5D0C-4F29-9D1A-3C1D1A0F7A11"},)text"
        R"text({"DeviceIdentifier"="disk0s2","Size"=499791167488,"Content"="Apple_HFS","VolumeName"="Müsli HD"})}),)text"
        R"text("VolumesFromDisks"=("EFI","Müsli HD"),"WholeDisks"=("disk0")})text");
}

TEST(DiskList, ShowsSizesInTheUnitThatReadsBest)
{
    EXPECT_EQ(SizeText(0), "0 B");
    EXPECT_EQ(SizeText(999), "999 B");
    EXPECT_EQ(SizeText(1000), "1.0 KB");
    EXPECT_EQ(SizeText(999949), "999.9 KB");
    EXPECT_EQ(SizeText(999950), "1.0 MB");
    EXPECT_EQ(SizeText(2000398934016), "2.0 TB");
    EXPECT_EQ(SizeText(UINT64_MAX), "18.4 EB");
}

}
