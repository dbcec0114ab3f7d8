#include "tests/support/HostFolder.h"
#include "tests/support/RegistryTest.h"
#include "tests/util/UtilityTest.h"
#include "util/CFRef.h"
#include "util/CFText.h"
#include "util/Disks.h"
#include "util/VolumeSpace.h"
#include "util/Volumes.h"

#include <DiskArbitration/Session.h>
#include <IOKit/Properties.h>

#include <csignal>
#include <functional>

namespace {

/// A host with a disk whose second partition is mounted.
class VolumeTest : public RegistryTest {
protected:
    VolumeTest()
    {
        host.add("proc/self/",
            { { "mountinfo",
                "21 1 8:1 / / rw - ext4 /dev/sda1 rw\n22 21 8:2 / /Volumes/My\\040Disk rw - vfat /dev/sda2 "
                "rw\n" } });
        host.add("run/udev/data/",
            { { "b8:2",
                "E:ID_FS_TYPE=vfat\nE:ID_FS_LABEL_ENC=Data\\x20\xc3\xa9\nE:ID_FS_UUID=6b7f60ad-a88e-9a18-"
                "4e73-2d901bb48793\n" } });
        da::UseHost(host.tree());
        iokit::Registry registry;
        for (unsigned minor = 0; minor < 4; ++minor)
            addMedia(
                registry, minor, minor == 3 ? "" : "disk0" + (minor > 0 ? 's' + std::to_string(minor) : ""));
        use(std::move(registry));
    }
    ~VolumeTest() override { da::UseHost(HostTree()); }

    static void addMedia(iokit::Registry& registry, unsigned minor, const std::string& name)
    {
        iokit::Properties properties;
        properties.text("BSD Name", name)
            .number("Size", 1000 + minor)
            .number("BSD Major", 8)
            .number("BSD Minor", minor);
        registry.add(registry.root(), "IOMedia", "Disk", "", properties.take());
        registry.setDeviceFile(name, "/dev/sda" + (minor > 0 ? std::to_string(minor) : ""));
    }

    static std::string text(const std::function<bool(char*, size_t)>& get, size_t size = 64)
    {
        std::string buffer(size, 'x');
        const bool isThere = get(buffer.data(), size);
        EXPECT_TRUE(isThere || buffer == std::string(size, 'x')) << "not to be touched";
        return isThere ? buffer.c_str() : "no";
    }
    static std::string uuid(CFUUIDRef owned)
    {
        const CFRef<CFUUIDRef> value(owned);
        return value
            ? StdString(CFRef<CFStringRef>(CFUUIDCreateString(kCFAllocatorDefault, value.get())).get())
            : "";
    }

    HostFolder host;
};

TEST_F(VolumeTest, IsFoundByItsPathToTheByte)
{
    EXPECT_TRUE(VolumeExistsAtPathname("/") && VolumeExistsAtPathname("/Volumes/My Disk"));
    for (const char* none : { "/Volumes/My Disk/", "/Volumes", "Volumes/My Disk", "" })
        EXPECT_FALSE(VolumeExistsAtPathname(none)) << none;
    EXPECT_FALSE(VolumeExistsAtPathname(nullptr));
    const auto bsdName = [](char* buffer, size_t size) {
        return GetVolumeBSD_NameWithPathname("/Volumes/My Disk", buffer, size);
    };
    EXPECT_EQ(text(bsdName), "disk0s2");
    EXPECT_EQ(text(bsdName, 8) + ' ' + text(bsdName, 7), "disk0s2 no");
    EXPECT_EQ(text([](char* buffer, size_t size) {
        return ExtractVolumeNameFromPathname("/Volumes/My Disk", buffer, size);
    }),
        "Data \xc3\xa9");
    EXPECT_EQ(
        text([](char* buffer, size_t size) { return ExtractVolumeNameFromPathname("/", buffer, size); }),
        "no");
    EXPECT_EQ(NumberBytesInVolumeIOMedia("/Volumes/My Disk"), 1002U);
    EXPECT_EQ(NumberBytesInVolumeIOMedia("/Volumes"), 0U);
    EXPECT_EQ(uuid(CreateVolumeCFUUID("/Volumes/My Disk")), "6B7F60AD-A88E-9A18-4E73-2D901BB48793");
    EXPECT_EQ(uuid(CreateVolumeCFUUID("/Volumes")), "");
}

TEST_F(VolumeTest, IsFoundByItsDisk)
{
    const auto path = [](const char* name) {
        return text(
            [name](char* buffer, size_t size) { return GetVolumePathnameWithBSDName(name, buffer, size); });
    };
    EXPECT_EQ(path("disk0s2"), "/Volumes/My Disk");
    EXPECT_EQ(path("disk0s1"), "/");
    EXPECT_EQ(path("disk0") + path("disk7") + path("") + path(nullptr), "nononono");
    EXPECT_EQ(uuid(CreateVolumeCFUUID_WithBSD_Name("disk0s2")), "6B7F60AD-A88E-9A18-4E73-2D901BB48793");
    EXPECT_EQ(uuid(CreateVolumeCFUUID_WithBSD_Name("disk0s1")), "");
}

TEST_F(VolumeTest, IsNotLookedForBehindAMediumWithoutADescription)
{
    iokit::Registry registry;
    addMedia(registry, 1, "disk0s1");
    addMedia(registry, 3, "");
    addMedia(registry, 2, "disk0s2");
    use(std::move(registry));
    EXPECT_TRUE(VolumeExistsAtPathname("/"));
    EXPECT_FALSE(VolumeExistsAtPathname("/Volumes/My Disk"));
}

TEST_F(VolumeTest, IsAskedForAnotherSizeOnlyWhereThereIsOne)
{
    host.add("proc/self/", { { "mountinfo", "21 1 8:1 / /proc rw - ext4 /dev/sda1 rw\n" } });
    EXPECT_EQ(ResizeVolume("/proc", 1), noErr) << "whatever came of it";
    const auto handler = signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(ResizeVolume("/proc", 1), noErr) << "its child cannot be waited for";
    (void)signal(SIGCHLD, handler);
    EXPECT_EQ(ResizeVolume("/", 1), nsvErr);
    EXPECT_EQ(ResizeVolume(nullptr, 1), nsvErr);
}

using NewUUIDTest = UtilityTest;

TEST_F(NewUUIDTest, IsGivenByTheToolThatTheSystemHas)
{
    constexpr const char* newer = "/System/Library/Filesystems/hfs.fs/Contents/Resources/hfs.util";
    constexpr const char* older = "/System/Library/Filesystems/hfs.fs/hfs.util";
    const std::string calls = path("calls");
    plant(newer, "echo \"newer $@\" >> " + calls + "; yes | head -c 100000 || exit 1; exit 253");
    EXPECT_TRUE(GetNewUUID_ForVolume("disk2s1"));
    plant(older, "echo \"older $@\" >> " + calls + "; exit 0");
    EXPECT_FALSE(GetNewUUID_ForVolume("disk2s1")) << "0 is not its success";
    plant(older, "kill -9 $$");
    EXPECT_FALSE(GetNewUUID_ForVolume("disk2s1"));
    spoil(older);
    EXPECT_FALSE(GetNewUUID_ForVolume("disk2s1"));
    EXPECT_FALSE(GetNewUUID_ForVolume(nullptr) || GetNewUUID_ForVolume("../x"));
    EXPECT_EQ(TestVolume::read(calls), "newer -s disk2s1\nolder -s disk2s1\n");
}

}
