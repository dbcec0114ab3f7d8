#include "tests/util/RecordedMac.h"
#include "util/MediaTypes.h"
#include "util/PartitionTypes.h"

namespace {

class MediaTypeTest : public RecordedMac {
protected:
    static uint32_t bus(const std::string& interconnect, const std::vector<std::string>& device = {})
    {
        const IORef media = record({ { "IOUSBDevice", device },
            { "IOBlockStorageDevice",
                { R"("Protocol Characteristics" = {"Physical Interconnect"=)" + interconnect + '}' } },
            { "IOMedia", {} } });
        uint32_t code = 77;
        EXPECT_TRUE(TestForDiskOnSupportedBus(media.get(), &code));
        return code;
    }

    static uint32_t mediaType(const std::vector<Level>& levels)
    {
        return GetMediaTypeWithIOServiceObject(record(levels).get());
    }
};

TEST_F(MediaTypeTest, NamesTheBus)
{
    const std::pair<const char*, uint32_t> buses[] = { { "PCI-Express", kBusPCI }, { "PCI", kBusPCI },
        { "SATA", kBusSATA }, { "ATA", kBusATA }, { "ATAPI", kBusATA }, { "FireWire", kBusFireWire },
        { "SCSI Parallel Interface", kBusSCSI }, { "SAS", kBusSAS },
        { "Fibre Channel Interface", kBusFibreChannel }, { "USB", kBusUSB },
        { "Virtual Interface", kBusUnknown }, { "Secure Digital", kBusUnknown }, { "sata", kBusUnknown },
        { "SCSI PCI", kBusPCI }, { "FireWire SATA Fibre Channel Interface SAS SCSI", kBusSCSI } };
    for (const auto& [interconnect, code] : buses)
        EXPECT_EQ(bus('"' + std::string(interconnect) + '"'), code) << interconnect;
    EXPECT_EQ(bus("5"), kBusUnknown) << "no text";
    uint32_t code = 77;
    EXPECT_FALSE(TestForDiskOnSupportedBus(
        record({ { "IOMedia", { R"("Protocol Characteristics" = {"AHCI Port Number"=0})" } } }).get(),
        &code));
    EXPECT_FALSE(TestForDiskOnSupportedBus(0, &code));
    EXPECT_EQ(code, 77U);
}

TEST_F(MediaTypeTest, TellsUSBsSpeedsApart)
{
    const auto usb = [](const std::vector<std::string>& device) { return bus(R"("USB")", device); };
    EXPECT_EQ(usb({ R"("Device Speed" = 2)", R"("USBSpeed" = 4)" }), kBusUSB);
    EXPECT_EQ(usb({ R"("Device Speed" = 3)", R"("USBSpeed" = 1)" }), kBusFastUSB);
    EXPECT_EQ(usb({ R"("USBSpeed" = 3)" }), kBusUSB);
    EXPECT_EQ(usb({ R"("USBSpeed" = 4)" }), kBusFastUSB);
    EXPECT_EQ(usb({ R"("USBSpeed" = "4")" }), kBusUSB);
}

TEST_F(MediaTypeTest, NamesTheMediumByTheFirstTestThatFits)
{
    constexpr const char* image
        = R"("Protocol Characteristics" = {"Physical Interconnect"="Virtual Interface"})";
    constexpr const char* solid
        = R"("Device Characteristics" = {"Medium Type"="Solid State","Product Name"="An iPod"})";
    constexpr const char* rotating = R"("Device Characteristics" = {"Medium Type"="Rotational"})";
    EXPECT_EQ(
        mediaType({ { "IOBlockStorageDevice", { solid, image } }, { "AppleAPFSMedia", {} } }), kMediaAPFS);
    EXPECT_EQ(mediaType({ { "IOBlockStorageDevice", { solid } }, { "IOCDMedia", {} }, { "IOMedia", {} } }),
        kMediaCD);
    EXPECT_EQ(mediaType({ { "IODVDMedia", { image } } }), kMediaDVD);
    EXPECT_EQ(mediaType({ { "IOBDMedia", {} } }), kMediaBluRay);
    EXPECT_EQ(mediaType({ { "IOBlockStorageDevice", { solid, image } }, { "IOMedia", {} } }), kMediaIPod);
    EXPECT_EQ(mediaType({ { "IOBlockStorageDevice",
                              { image, R"("Device Characteristics" = {"Medium Type"="Solid State"})" } },
                  { "IOMedia", {} } }),
        kMediaImage)
        << "whatever lies below the image";
    EXPECT_EQ(mediaType({ { "KDIFileBackingStore", { rotating } },
                  { "IOMedia", { R"("Content" = "Apple_Xsan")" } } }),
        kMediaImage);
    EXPECT_EQ(mediaType({ { "OwnMedia:AppleAPFSMedia:IOMedia",
                  { R"("Device Characteristics" = {"Medium Type"="Solid State Hybrid"})" } } }),
        kMediaDisk);
    EXPECT_EQ(mediaType({ { "IOBlockStorageDevice", { rotating } },
                  { "IOMedia", { R"("Content" = "Apple_Xsan")" } }, { "IOMedia", {} } }),
        kMediaXsan);
    EXPECT_EQ(mediaType({ { "IOBlockStorageDevice",
                              { R"("Device Characteristics" = {"Medium Type"="Solid State"})" } },
                  { "IOMedia", {} } }),
        kMediaSSD);
    EXPECT_EQ(mediaType({ { "IOBlockStorageDevice", { rotating } }, { "IOMedia", {} } }), kMediaDisk);
    EXPECT_EQ(mediaType({ { "IOMedia", {} } }), kMediaDisk) << "there is nothing to read from";
    EXPECT_FALSE(TestForAPFS_Media(record({ { "AppleAPFSMedia", {} } }).get(), nullptr));
    EXPECT_TRUE(TestForOpticalMedia(record({ { "IOCDMedia", {} } }).get(), nullptr));
}

TEST_F(MediaTypeTest, KnowsTrimAndTheHousesOwnDrives)
{
    const IORef drive = record({ { "IONVMeController", { R"("Model Number" = "ZEK Pellurio M.2 SSD")" } },
        { "IOBlockStorageDevice", { R"("IOStorageFeatures" = {"Unmap"=Yes,"Barrier"=Yes})" } },
        { "IOMedia", {} } });
    EXPECT_TRUE(TestForTRIM_Support(drive.get()) && TestForZEK_SSD(drive.get()));
    const IORef other = record({ { "IONVMeController", { R"("Model Number" = "ZEK Pellurio M.2 SSD 2")" } },
        { "IOMedia", { R"("IOStorageFeatures" = {"Unmap"=No})" } } });
    EXPECT_FALSE(TestForTRIM_Support(other.get()) || TestForZEK_SSD(other.get()));
}

class PartitionTypeTest : public RecordedMac {
protected:
    /// The answer for a disk with partitions of these contents.
    static uint32_t type(const std::string& scheme, const std::vector<std::string>& contents)
    {
        std::vector<Level> levels { { "IOMedia", { R"("Content" = "Apple_HFS")" } },
            { "IOMediaBSDClient", {}, 2 }, { scheme, {}, 2 }, { "IOMedia", {}, 3 } };
        for (const std::string& content : contents)
            levels.push_back({ "IOMedia", { "\"Content\" = " + content }, 3 });
        levels.push_back({ "IOMediaBSDClient", { R"("Content" = "Apple_HFS")" }, 3 });
        (void)record(levels);
        const IORef disk(IOServiceGetMatchingService(kIOMasterPortDefault, IORegistryEntryIDMatching(0x101)));
        return VolumePartitionTypeOnDisk(disk.get());
    }
};

TEST_F(PartitionTypeTest, TheFirstThatIsKnownDecides)
{
    constexpr const char* efi = R"("C12A7328-F81F-11D2-BA4B-00A0C93EC93B")";
    constexpr const char* gpt = "IOGUIDPartitionScheme";
    const std::pair<const char*, uint32_t> contents[]
        = { { "48465300-0000-11AA-AA11-00306543ECAC", kPartitionHFS }, { "Apple_HFS", kPartitionHFS },
              { "52414944-0000-11AA-AA11-00306543ECAC", kPartitionAppleRAID },
              { "Apple_Boot_RAID", kPartitionAppleRAID }, { "Apple_RAID", kPartitionAppleRAID },
              { "FA709C7E-65B1-4593-BFD5-E71D61DE9B02", kPartitionKelvaneRAID },
              { "Apple_Boot_Kelvane_Volume", kPartitionKelvaneRAID },
              { "53746F72-6167-11AA-AA11-00306543ECAC", kPartitionCoreStorage },
              { "7C3457EF-0000-11AA-AA11-00306543ECAC", kPartitionAPFS },
              { "EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", kPartitionMicrosoftBasicData },
              { "Windows_NTFS", kPartitionWindowsNTFS },
              { "7c3457ef-0000-11aa-aa11-00306543ecac", kPartitionUnknown } };
    for (const auto& [content, code] : contents)
        EXPECT_EQ(type(gpt, { efi, "12", '"' + std::string(content) + '"' }), code) << content;
    EXPECT_EQ(type(gpt, { R"("Windows_NTFS")", R"("Apple_HFS")" }), kPartitionWindowsNTFS);
    EXPECT_EQ(type("IOFDiskPartitionScheme", { R"("Apple_HFS")" }), kPartitionHFS);
    EXPECT_EQ(type("IOApplePartitionScheme", { R"("Apple_HFS")" }), kPartitionHFS);
    EXPECT_EQ(type("IOPartitionScheme", { R"("Apple_HFS")" }), kPartitionUnknown);
    EXPECT_EQ(type(gpt, { efi }), kPartitionUnknown) << "what is no medium does not count";
    EXPECT_EQ(VolumePartitionTypeOnDisk(0), 0U);
}

TEST_F(PartitionTypeTest, KnowsRAIDsAndLogicalVolumes)
{
    EXPECT_TRUE(IsAppleRAID_Volume(record(
        { { "IOBlockStorageDriver", { R"("IOClass" = "IOBlockStorageDriver")" } },
            { "AppleRAIDMember", { R"("IOClass" = "AppleRAIDMember")" } },
            { "IOMedia", {} } }).get()));
    EXPECT_FALSE(IsAppleRAID_Volume(record({ { "AppleRAIDMember", { R"("IOClass" = "AppleRAID")" } },
                                               { "IOMedia", { R"("IOClass" = "IOMedia")" } } })
                                        .get()))
        << "the nearest class decides";
    EXPECT_TRUE(IsAppleRAID_Volume(record({ { "IOMedia", { R"("IOClass" = "AppleRAID")" } } }).get()));
    EXPECT_TRUE(IsKelvane_Volume(
        record({ { "IOMedia", { R"("Kelvane Volume ID" = 1)" } }, { "IOMedia", {} } }).get()));
    EXPECT_FALSE(IsKelvane_Volume(record({ { "IOMedia", {} } }).get()));
    EXPECT_TRUE(IsCoreStorageVolume(
        record({ { "CoreStorageLogical", { R"("CoreStorage" = Yes)" } }, { "IOMedia", {} } }).get()));
    EXPECT_FALSE(IsCoreStorageVolume(record({ { "IOMedia", { R"("CoreStorage" = "Yes")" } } }).get()));
}

TEST_F(PartitionTypeTest, FindsAContainerBelowItsPartition)
{
    constexpr const char* store = R"("Content" = "7C3457EF-0000-11AA-AA11-00306543ECAC")";
    constexpr const char* container = R"("Content" = "EF57347C-0000-11AA-AA11-00306543ECAC")";
    (void)record({ { "IOMedia", { R"("BSD Name" = "disk0s2")", store } }, { "IOMediaBSDClient", {}, 2 },
        { "AppleAPFSContainerScheme", {}, 2 },
        { "AppleAPFSMedia", { R"("BSD Name" = "disk1")", container } } });
    char name[16] = "unchanged";
    EXPECT_TRUE(CreateAPFS_ContainerFromIOMediaObjectWithBSD_Names("disk0s2", name, sizeof name));
    EXPECT_STREQ(name, "disk1");
    name[0] = 'x';
    EXPECT_TRUE(CreateAPFS_ContainerFromIOMediaObjectWithBSD_Names("disk0s2", name, 5)) << "no room for it";
    EXPECT_STREQ(name, "xisk1");
    EXPECT_TRUE(CreateAPFS_ContainerFromIOMediaObjectWithBSD_Names("disk0s2", nullptr, 0));
    EXPECT_FALSE(CreateAPFS_ContainerFromIOMediaObjectWithBSD_Names("disk1", name, sizeof name));
    EXPECT_FALSE(CreateAPFS_ContainerFromIOMediaObjectWithBSD_Names("disk7", name, sizeof name));

    io_registry_entry_t none = 77;
    EXPECT_FALSE(CreateAPFS_ContainerFromIOMediaObject(record({ { "IOMedia", { store } } }).get(), &none));
    EXPECT_EQ(none, 0U);
    EXPECT_FALSE(CreateAPFS_ContainerFromIOMediaObject(
        record({ { "IOMedia", { R"("Content" = "Apple_HFS")" } }, { "AppleAPFSMedia", { container } } })
            .get(),
        &none));
}

TEST_F(PartitionTypeTest, ReadsTheFirstOfAVolumesRoles)
{
    const auto role = [](const char* property) {
        return APFS_VolumeRole(record({ { "AppleAPFSVolume", { property } } }).get());
    };
    EXPECT_EQ(role(R"("Role" = ("PreBoot","VM"))"), kAPFSRolePreBoot);
    EXPECT_EQ(role(R"("Role" = ("Recovery"))"), kAPFSRoleRecovery);
    const std::vector<Level> volume { { "AppleAPFSVolume",
        { R"("Role" = ("VM"))", R"("Content" = "41504653-0000-11AA-AA11-00306543ECAC")" } } };
    EXPECT_TRUE(IsAPFS_Volume(record(volume).get()));
    const IORef snapshot = record({ volume[0], { "AppleAPFSSnapshot", {} } });
    EXPECT_FALSE(IsAPFS_Volume(snapshot.get()));
    EXPECT_EQ(APFS_VolumeRole(snapshot.get()), kAPFSRoleNone);
    EXPECT_EQ(role(R"("Role" = ("VM"))"), kAPFSRoleVM);
    EXPECT_EQ(role(R"("Role" = ("Preboot"))"), kAPFSRoleOther) << "the case counts";
    for (const char* none :
        { R"("Role" = ())", R"("Role" = "VM")", R"("Role" = (1,"VM"))", R"("Rolle" = 1)" })
        EXPECT_EQ(role(none), kAPFSRoleNone) << none;
}

}
