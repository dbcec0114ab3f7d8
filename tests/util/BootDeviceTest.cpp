#include "util/BootDevice.h"

#include "tests/util/RecordedMac.h"
#include "tests/util/UtilityTest.h"
#include <IOKit/Properties.h>

#include <cstring>

namespace {

constexpr const char* kBless = "/usr/sbin/bless";
constexpr const char* kNvram = "/usr/sbin/nvram";

class BootDeviceTest : public UtilityTest, protected MacRecorder {
protected:
    BootDeviceTest()
    {
        fVolume.recordTool(kBless);
        fVolume.recordTool(kNvram);
    }

    /// A GUID disk with four slices, the third for starting, and an older one.
    static void recordDisks()
    {
        record({ { "IOMedia", { R"("BSD Name" = "disk0")" } },
            { "IOPartitionScheme", { R"("Content Mask" = "GUID_partition_scheme")" } },
            { "IOMedia", { R"("BSD Name" = "disk0s2")" } },
            { "IOMedia",
                { R"("BSD Name" = "disk0s3")", R"("Content Hint" = "426F6F74-0000-11AA-AA11-00306543ECAC")" },
                3 },
            { "IOMedia", { R"("BSD Name" = "disk0s10")", R"("Content Hint" = "Apple_Boot")" }, 3 },
            { "IOPartitionScheme", { R"("Content Mask" = "Apple_partition_scheme")" }, 1 },
            { "IOMedia", { R"("BSD Name" = "disk1s2")", R"("Content Hint" = "Apple_Boot")" } },
            { "IOMedia", { R"("BSD Name" = "disk1s3")", R"("Content Mask" = "other")" }, 2 } });
    }

    /// "disk0s3 yes" for the partition beside, and whether it is one for starting.
    static std::string beside(const std::string& start, const std::string& name)
    {
        const IORef partition(IOServiceGetMatchingService(
            kIOMasterPortDefault, IOBSDNameMatching(kIOMasterPortDefault, 0, start.c_str())));
        char text[32] = {};
        std::strcpy(text, name.c_str());
        const bool isForStarting = GetBSDSliceNumberForAppleBootPartition(partition.get(), text);
        return text + std::string(isForStarting ? " yes" : " no");
    }
    static std::string beside(const std::string& name) { return beside(name, name); }

    std::string chosenVolume(const std::string& script, bool answer = true)
    {
        plant(kBless, script);
        char name[8] = "1234567";
        EXPECT_EQ(GetBootVolumeBSD_Name(name, sizeof name), answer) << script;
        return name;
    }
};

std::string PropertyList(const std::string& value)
{
    return "echo '<plist version=\"1.0\"><dict><key>Boot Volume</key>" + value + "</dict></plist>'";
}

TEST_F(BootDeviceTest, IsReadFromTheFirmwaresVariable)
{
    record(
        { { "IOPlatformExpertDevice", {} }, { "IODTNVRAM", { R"("boot-device" = "mac-io/ata-4@1f000")" } } });
    iokit::Registry registry;
    iokit::Entry& computer = registry.add(registry.root(), "IOPlatformExpertDevice", "Mac", "", nullptr);
    registry.add(computer, "IODTNVRAM", "options", "",
        iokit::Properties().text("boot-device", "mac-io/ata-4@1f000").take());
    registry.completeDeviceTree();
    use(std::move(registry));
    char path[32] = "unchanged";
    EXPECT_TRUE(GetBootPath(path, sizeof path));
    EXPECT_STREQ(path, "mac-io/ata-4@1f000");
    EXPECT_TRUE(GetBootPath(path, 20));
    EXPECT_FALSE(GetBootPath(path, 19)) << "two bytes are kept free";
    EXPECT_STREQ(path, "");
    EXPECT_FALSE(GetBootPath(path, 1) || GetBootPath(nullptr, sizeof path));
    use(iokit::Registry());
    EXPECT_FALSE(GetBootPath(path, sizeof path));
}

TEST_F(BootDeviceTest, IsSetByTheSystemsTools)
{
    EXPECT_TRUE(SetBootPath("IODeviceTree:/PCI/disk@2") && SetBootPath("PCI/IODeviceTree:/disk@2"));
    EXPECT_TRUE(SetBootDeviceWithBSD_Name("disk0s2"));
    EXPECT_TRUE(SetBootVolumeWithVolumePathname("/") && SetBootVolumeWithVolumePathname("/Volumes/My Disk/"));
    for (const char* name : { "", "../../x", "disk0/s2", "disk0 s2",
             "disk0s2222222222222222222222222222222222", static_cast<const char*>(nullptr) })
        EXPECT_FALSE(SetBootDeviceWithBSD_Name(name));
    EXPECT_FALSE(SetBootPath(nullptr) || SetBootVolumeWithVolumePathname(nullptr)
        || SetBootVolumeWithBSD_Name("disk0s2"));
    EXPECT_EQ(fVolume.calls(),
        "nvram\nboot-device=/PCI/disk@2,\\\\:tbxi\n\nnvram\nboot-device=PCI/IODeviceTree:/"
        "disk@2,\\\\:tbxi\n\n"
        "bless\n-device\n/dev/disk0s2\n-setBoot\n\n"
        "bless\n-folder\n/System/Library/CoreServices\n-setBoot\n\n"
        "bless\n-folder\n/Volumes/My Disk//System/Library/CoreServices\n-setBoot\n\n");
    plant(kBless, "exit 1");
    EXPECT_FALSE(SetBootDeviceWithBSD_Name("disk0s2"));
    plant(kBless, "kill -9 $$");
    EXPECT_FALSE(SetBootVolumeWithVolumePathname("/"));
    spoil(kBless);
    EXPECT_TRUE(SetBootDeviceWithBSD_Name("disk0s2")) << "who cannot be started has not failed";
}

TEST_F(BootDeviceTest, TheChosenVolumeIsWhatBlessTellsInOnePiece)
{
    EXPECT_EQ(chosenVolume(PropertyList("<string>/dev/disk0s2</string>")), "disk0s2");
    EXPECT_EQ(chosenVolume(PropertyList("<string>/dev/disk10s2</string>")), "disk10s") << "cut";
    EXPECT_EQ(
        chosenVolume(PropertyList("<string>/d</string>")) + chosenVolume(PropertyList("<string></string>")),
        "");
    EXPECT_EQ(
        chosenVolume(PropertyList("<string>/dev/disk0s3" + std::string(19, '1') + "</string>")), "disk0s3");
    EXPECT_EQ(
        chosenVolume(PropertyList("<string>/dev/disk0s3" + std::string(20, '1') + "</string>"), false), "");
    EXPECT_EQ(chosenVolume(PropertyList("<string>/dev/disk0</string>") + "; exec 2>&1", true), "disk0");
    EXPECT_EQ(chosenVolume("printf '<plist version=\"1.0\">%2100s<dict><key>Boot "
                           "Volume</key><string>/dev/disk0</string></dict></plist>'",
                  false),
        "")
        << "what is beyond the first 2048 bytes is not seen";
    EXPECT_EQ(chosenVolume(PropertyList("<string>/dev/dïsk0</string>"), false), "");
    EXPECT_TRUE(GetBootVolumeBSD_Name(nullptr, 0)) << "there is one";
    EXPECT_EQ(chosenVolume(PropertyList("<integer>1</integer>"), false), "");
    EXPECT_EQ(chosenVolume(PropertyList("<string>/dev/disk0s2</string>") + "; exit 1", false), "")
        << "failed";
    EXPECT_EQ(chosenVolume("echo none", false), "");
    EXPECT_EQ(chosenVolume("exit 0", false), "");
    plant(kBless,
        "test \"$*\" = '-info -getBoot -plist' && " + PropertyList("<string>/dev/disk3</string>")
            + "; sleep 0.1; yes | head -c 200000 || exit 1"); // more is read, and forgotten
    char name[8] = "";
    EXPECT_TRUE(GetBootVolumeBSD_Name(name, sizeof name));
    EXPECT_STREQ(name, "disk3");
    spoil(kBless);
    EXPECT_EQ(answerOfCopy([] { return GetBootVolumeBSD_Name(nullptr, 0) ? 1 : 0; }), 0);
}

TEST_F(BootDeviceTest, ThePartitionForStartingIsTheNextOneOrTheOneBefore)
{
    recordDisks();
    EXPECT_EQ(beside("disk0s2"), "disk0s3 yes");
    EXPECT_EQ(beside("disk0s3"), "disk0s4 no");
    EXPECT_EQ(beside("disk0s2", "disk0s9"), "disk0s10 yes");
    EXPECT_EQ(beside("disk1s3"), "disk1s2 yes") << "its own mask is no GUID disk's";
    EXPECT_EQ(beside("disk1s2"), "disk1s1 no");
    EXPECT_EQ(beside("disk1s2", "disk1s0"), "disk1s-1 no");
    EXPECT_EQ(beside("disk0s2", "volume"), "volume no");
    EXPECT_EQ(beside("disk0s2", "disk0"), "dis1 no");
    EXPECT_FALSE(GetBSDSliceNumberForAppleBootPartition(0, nullptr));
}

TEST_F(BootDeviceTest, ARootVolumeIsStartedFromBesideItsFirstBootDevice)
{
    const auto chosenFor = [this](const std::string& property) {
        std::filesystem::remove(fVolume.root() / "calls");
        record({ { "IOPartitionScheme", { R"("Content Mask" = "GUID_partition_scheme")" } },
            { "IOMedia", { R"("BSD Name" = "disk0s2")" } },
            { "IOMedia", { R"("BSD Name" = "disk2")", property }, 1 } });
        SetBootDeviceForBootRootVolume("disk2");
        return fVolume.calls();
    };
    const std::string path = R"("IOBootDevicePath"="IOService:/Entry")";
    EXPECT_EQ(chosenFor(R"("IOBootDevice" = ({)" + path + R"(},{"IOBootDevicePath"="IOService:/"}))"),
        "bless\n-device\n/dev/disk0s3\n-setBoot\n\n")
        << "although nothing is known of it";
    for (const std::string& property : { std::string(R"("Other" = 1)"), std::string(R"("IOBootDevice" = ())"),
             R"("IOBootDevice" = {)" + path + "}", std::string(R"("IOBootDevice" = (1))"),
             std::string(R"("IOBootDevice" = ({"IOBootDevicePath"=1}))"),
             std::string(R"("IOBootDevice" = ({"IOBootDevicePath"="IOService:/"}))"),
             R"("IOBootDevice" = ({"IOBootDevicePath"="IOService:/)" + std::string(1024, 'x') + R"("}))" })
        EXPECT_EQ(chosenFor(property), "") << property;
    record({ { "IOMedia", { R"("IOBootDevice" = ({)" + path + "})" } },
        { "IOMedia", { R"("BSD Name" = "disk2")" } } });
    SetBootDeviceForBootRootVolume("disk2"); // says nothing itself
    SetBootDeviceForBootRootVolume("disk7");
    SetBootDeviceForBootRootVolume(nullptr);
    EXPECT_EQ(fVolume.calls(), "");
}

}
