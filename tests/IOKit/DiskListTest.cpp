#include "TestHost.h"

#include <DiskArbitration/Session.h>
#include <IOKit/Properties.h>
#include <gmock/gmock.h>
#include <registry/DiskList.h>
#include <registry/ValueText.h>

#include <sstream>

namespace {

std::vector<ListedDisk> DisksOfHost(const TestHost& host)
{
    da::UseHost(host.tree());
    return DisksOf(std::make_shared<const iokit::Registry>(host.registry()));
}

std::string Table(const std::vector<ListedDisk>& disks, const std::string& identifier = "")
{
    std::ostringstream text;
    PrintDisks(text, identifier.empty() ? disks : DisksNamed(disks, identifier));
    return text.str();
}

std::string Table(const TestHost& host, const std::string& identifier = "")
{
    return Table(DisksOfHost(host), identifier);
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
    AppendValue(text, DisksAsPropertyList(DisksOfHost(host)).get(), false);
    EXPECT_EQ(text,
        R"text({"AllDisks"=("disk0","disk0s1","disk0s2"),"AllDisksAndPartitions"=({"DeviceIdentifier"="disk0",)text"
        R"text("Size"=500107862016,"Content"="GUID_partition_scheme","Partitions"=({"DeviceIdentifier"="disk0s1",)text"
        R"text("Size"=314572800,"Content"="EFI","VolumeName"="EFI","DiskUUID"="0B6F1C5E-5D0C-4F29-9D1A-3C1D1A0F7A11"},)text"
        R"text({"DeviceIdentifier"="disk0s2","Size"=499791167488,"Content"="Apple_HFS","VolumeName"="Müsli HD"})}),)text"
        R"text("VolumesFromDisks"=("EFI","Müsli HD"),"WholeDisks"=("disk0")})text");
}

iokit::Entry& AddMedia(iokit::Registry& registry, iokit::Entry& parent, const char* className,
    const std::string& name, const std::string& bsdName, const char* content, bool isWhole)
{
    iokit::Properties properties;
    properties.text("BSD Name", bsdName).text("Content", content).number("Size", 494384795648);
    return registry.add(parent, className, name, "", properties.flag("Whole", isWhole).take());
}

/// A container on a partition of one disk, and a volume that is put together from partitions of two.
std::shared_ptr<const iokit::Registry> ComposedDisks()
{
    iokit::Registry registry;
    iokit::Entry& device = registry.add(registry.root(), "IOBlockStorageDevice", "Device", "",
        iokit::Properties()
            .dictionary("Protocol Characteristics",
                iokit::Properties().text("Physical Interconnect Location", "Internal"))
            .take());
    iokit::Entry& disk0
        = AddMedia(registry, device, "IOMedia", "One Media", "disk0", "GUID_partition_scheme", true);
    iokit::Entry& disk1
        = AddMedia(registry, device, "IOMedia", "Two Media", "disk1", "GUID_partition_scheme", true);
    iokit::Entry& first = AddMedia(
        registry, disk0, "IOMedia", "Customer", "disk0s2", "53746F72-6167-11AA-AA11-00306543ECAC", false);
    iokit::Entry& second = AddMedia(
        registry, disk1, "IOMedia", "HDD", "disk1s2", "53746F72-6167-11AA-AA11-00306543ECAC", false);
    iokit::Entry& store = AddMedia(
        registry, disk1, "IOMedia", "Untitled 10", "disk1s10", "7C3457EF-0000-11AA-AA11-00306543ECAC", false);
    iokit::Entry& group = registry.add(first, "CoreStorageGroup", "Group", "", nullptr);
    registry.link(second, group);
    AddMedia(registry, group, "CoreStorageLogical", "Macintosh HD", "disk2", "Apple_HFS", true);
    iokit::Entry& scheme = registry.add(store, "AppleAPFSContainerScheme", "Scheme", "", nullptr);
    iokit::Entry& container = AddMedia(registry, scheme, "AppleAPFSMedia", "AppleAPFSMedia", "disk10",
        "EF57347C-0000-11AA-AA11-00306543ECAC", true);
    iokit::Entry& volume = AddMedia(registry, container, "AppleAPFSVolume", "Data", "disk10s1",
        "41504653-0000-11AA-AA11-00306543ECAC", false);
    AddMedia(registry, volume, "AppleAPFSSnapshot", "com.apple.os.\u00fcpdate-779B", "disk10s1s1",
        "41504653-0000-11AA-AA11-00306543ECAC", false);
    return std::make_shared<const iokit::Registry>(std::move(registry));
}

TEST(DiskList, ShowsWhatIsPutTogetherFromPartitions)
{
    const std::vector<ListedDisk> disks = DisksOf(ComposedDisks());
    EXPECT_EQ(Table(disks), R"(/dev/disk0 (internal, physical):
   #:                       TYPE NAME                    SIZE       IDENTIFIER
   0:      GUID_partition_scheme                        *494.4 GB   disk0
   1:          Apple_CoreStorage Macintosh HD            494.4 GB   disk0s2

/dev/disk1 (internal, physical):
   #:                       TYPE NAME                    SIZE       IDENTIFIER
   0:      GUID_partition_scheme                        *494.4 GB   disk1
   1:          Apple_CoreStorage Macintosh HD            494.4 GB   disk1s2
   2:                 Apple_APFS Container disk10        494.4 GB   disk1s10

/dev/disk2 (internal, virtual):
   #:                       TYPE NAME                    SIZE       IDENTIFIER
   0:                  Apple_HFS Macintosh HD           +494.4 GB   disk2
                                 Logical Volume on disk0s2, disk1s2

/dev/disk10 (synthesized):
   #:                       TYPE NAME                    SIZE       IDENTIFIER
   0:      APFS Container Scheme -                      +494.4 GB   disk10
                                 Physical Store disk1s10
   1:                APFS Volume Data                    494.4 GB   disk10s1
   2:              APFS Snapshot com.apple.os.üpdate-... 494.4 GB   disk10s1s1

)");
    std::string list;
    AppendValue(list, DisksAsPropertyList({ disks.back() }).get(), false);
    EXPECT_EQ(list,
        R"text({"AllDisks"=("disk10","disk10s1","disk10s1s1"),"AllDisksAndPartitions"=({"DeviceIdentifier"="disk10",)text"
        R"text("Size"=494384795648,"Content"="APFS Container Scheme","APFSPhysicalStores"=({"DeviceIdentifier"="disk1s10"}),)text"
        R"text("APFSVolumes"=({"DeviceIdentifier"="disk10s1","Size"=494384795648,"Content"="APFS Volume","VolumeName"="Data"},)text"
        R"text({"DeviceIdentifier"="disk10s1s1","Size"=494384795648,"Content"="APFS Snapshot","VolumeName"="com.apple.os.üpdate-779B"})}),)text"
        R"text("VolumesFromDisks"=("Data","com.apple.os.üpdate-779B"),"WholeDisks"=("disk10")})text");
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
