#include "tests/DiskArbitration/Disks.h"

#include <IOKit/IOKitLib.h>

namespace {

using iokit::Properties;

/// A USB stick as a Mac shows it, with a partition, and a medium without a drive.
iokit::Registry Stick()
{
    iokit::Registry registry;
    iokit::Entry& computer = registry.add(registry.root(), "IOPlatformExpertDevice", "Model1,1", "", nullptr);
    iokit::Entry& controller = registry.add(computer, "IOPCIDevice", "XHC1", "14", nullptr);
    Properties protocol;
    protocol.text("Physical Interconnect", "USB").text("Physical Interconnect Location", "External");
    Properties device;
    device
        .dictionary("Device Characteristics",
            Properties().text("Product Name", "Pocket").text("Vendor Name", "Heron"))
        .dictionary("Protocol Characteristics", protocol)
        .number("SCSI Logical Unit Number", 3);
    iokit::Entry& drive = registry.add(controller, "IOBlockStorageDevice", "Nub", "", device.take());
    Properties whole;
    whole.text("BSD Name", "disk7").flag("Whole", true).flag("Leaf", false).text("Size", "not a number");
    iokit::Entry& media = registry.add(drive, "IOMedia", "Heron Pocket Media", "", whole.take());
    iokit::Entry& scheme = registry.add(media, "IOPartitionScheme", "Scheme", "", nullptr);
    Properties part;
    part.text("BSD Name", "disk7s1")
        .flag("Whole", false)
        .number("Size", 1048576)
        .flag("Writable", true)
        .text("Content", "Windows_FAT_32")
        .text("UUID", "0b6f1c5e-5d0c-4f29-9d1a-3c1d1a0f7a11");
    registry.add(scheme, "IOMedia", "Untitled 1", "1", part.take());
    registry.add(scheme, "IOMedia", "Nameless", "2", nullptr);
    registry.add(computer, "IOMedia", "Image", "", Properties().text("BSD Name", "disk8").take());
    registry.completeDeviceTree();
    return registry;
}

class DiskTest : public Disks { };

}

TEST_F(DiskTest, IsDescribedByItsMediumItsDeviceAndItsBus)
{
    use(Stick());
    const char* const part = "disk7s1";
    EXPECT_EQ(described(part, kDADiskDescriptionMediaNameKey), "Untitled 1");
    EXPECT_EQ(described(part, kDADiskDescriptionMediaBSDNameKey), "disk7s1");
    EXPECT_EQ(described(part, kDADiskDescriptionMediaKindKey), "IOMedia");
    EXPECT_EQ(described(part, kDADiskDescriptionMediaContentKey), "Windows_FAT_32");
    EXPECT_EQ(described(part, kDADiskDescriptionMediaSizeKey), "1048576");
    EXPECT_EQ(described(part, kDADiskDescriptionMediaWritableKey), "true");
    EXPECT_EQ(described(part, kDADiskDescriptionMediaUUIDKey), "0B6F1C5E-5D0C-4F29-9D1A-3C1D1A0F7A11");
    EXPECT_EQ(described(part, kDADiskDescriptionDeviceModelKey), "Pocket");
    EXPECT_EQ(described(part, kDADiskDescriptionDeviceVendorKey), "Heron");
    EXPECT_EQ(described(part, kDADiskDescriptionDeviceProtocolKey), "USB");
    EXPECT_EQ(described(part, kDADiskDescriptionDeviceInternalKey), "false");
    EXPECT_EQ(described(part, kDADiskDescriptionDeviceUnitKey), "3");
    const std::string device = "IOService:/XHC1@14/Nub";
    EXPECT_EQ(described(part, kDADiskDescriptionDevicePathKey), device);
    EXPECT_EQ(
        described(part, kDADiskDescriptionMediaPathKey), device + "/Heron Pocket Media/Scheme/Untitled 1@1");
    EXPECT_EQ(described(part, kDADiskDescriptionBusNameKey), "XHC1");
    EXPECT_EQ(described(part, kDADiskDescriptionBusPathKey), "IODeviceTree:/XHC1@14");
    EXPECT_EQ(described("disk8", kDADiskDescriptionBusNameKey), "") << "the computer is no bus";
    // What is not known, or has another type than it should, is left out.
    for (CFStringRef const key :
        { kDADiskDescriptionMediaSizeKey, kDADiskDescriptionMediaUUIDKey, kDADiskDescriptionMediaContentKey,
            kDADiskDescriptionVolumeKindKey, kDADiskDescriptionVolumePathKey })
        EXPECT_EQ(described("disk7", key), "") << cf::TextOf(key);
}

TEST_F(DiskTest, IsFoundByNameAndMediumAndHoldsBoth)
{
    use(Stick());
    for (const char* const name : { "disk7s1", "/dev/disk7s1", "/dev/rdisk7s1" })
        EXPECT_STREQ(DADiskGetBSDName(disk(name).get()), "disk7s1") << name;
    for (const char* const name :
        { "", "/dev/", "rdisk7s1", "disk7s", "disk7s2", "Nameless", static_cast<const char*>(nullptr) })
        EXPECT_EQ(disk(name), nullptr);
    EXPECT_EQ(DADiskCreateFromBSDName(nullptr, nullptr, "disk7"), nullptr);
    EXPECT_EQ(DADiskCreateFromVolumePath(nullptr, session.get(), nullptr), nullptr);
    EXPECT_TRUE(DADiskCopyDescription(nullptr) == nullptr && DADiskCopyIOMedia(nullptr) == IO_OBJECT_NULL
        && DADiskCopyWholeDisk(nullptr) == nullptr && DADiskGetBSDName(nullptr) == nullptr);

    cf::Owned<DADiskRef> part = disk("disk7s1");
    const io_service_t media = DADiskCopyIOMedia(part.get());
    const cf::Owned<DADiskRef> same(DADiskCreateFromIOMedia(nullptr, session.get(), media));
    EXPECT_STREQ(DADiskGetBSDName(same.get()), "disk7s1");
    io_registry_entry_t scheme = 0;
    ASSERT_EQ(IORegistryEntryGetParentEntry(media, kIOServicePlane, &scheme), kIOReturnSuccess);
    EXPECT_EQ(DADiskCreateFromIOMedia(nullptr, session.get(), scheme), nullptr) << "is no medium";
    EXPECT_EQ(IOObjectRelease(scheme), KERN_SUCCESS);
    EXPECT_EQ(IOObjectRelease(media), KERN_SUCCESS);
    EXPECT_EQ(iokit::References::shared().total(), 0U);
    EXPECT_EQ(DADiskCreateFromIOMedia(nullptr, session.get(), media), nullptr) << "was released";

    session.reset();
    use({});
    const cf::Owned<DADiskRef> whole(DADiskCopyWholeDisk(part.get()));
    part.reset();
    EXPECT_STREQ(DADiskGetBSDName(whole.get()), "disk7");
    EXPECT_EQ(DescribedAs(whole.get(), kDADiskDescriptionDeviceModelKey), "Pocket");
    EXPECT_EQ(cf::Owned<DADiskRef>(DADiskCopyWholeDisk(whole.get())), whole);
}

TEST_F(DiskTest, OfARecordingNeverMeetsTheMountsOfThisHost)
{
    mount("30 1 14:0 / /recorded rw - ext4 /dev/disk3 rw\n");
    iokit::Registry recording;
    addMedia(recording, recording.root(), "disk3", 14, 0, "");
    Properties apfs;
    apfs.text("BSD Name", "disk3s1")
        .text("Content", "41504653-0000-11AA-AA11-00306543ECAC")
        .text("UUID", "69E6EAC0-6B2B-9861-96E9-0C02354081AC");
    recording.add(recording.root(), "IOMedia", "Macintosh HD", "1", apfs.take());
    use(std::move(recording));
    EXPECT_EQ(described("disk3", kDADiskDescriptionVolumePathKey), "");
    EXPECT_EQ(described("disk3", kDADiskDescriptionVolumeKindKey), "");
    EXPECT_EQ(described("disk3s1", kDADiskDescriptionVolumeKindKey), "apfs");
    EXPECT_EQ(described("disk3s1", kDADiskDescriptionVolumeNameKey), "Macintosh HD");
    EXPECT_EQ(described("disk3s1", kDADiskDescriptionVolumeUUIDKey), "69E6EAC0-6B2B-9861-96E9-0C02354081AC");
}
