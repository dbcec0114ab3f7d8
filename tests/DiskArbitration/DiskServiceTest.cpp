#include "tests/DiskArbitration/DiskService.h"
#include "tests/DiskArbitration/Disks.h"
#include "tests/support/MessageBus.h"

#include <sys/socket.h>
#include <sys/sysmacros.h>
#include <sys/un.h>

namespace {

/// Two devices, 8:1 with a volume of FAT's and 8:2 with encrypted data; other interfaces and properties beside.
int AppendDevices(sd_bus_message* message)
{
    return sd_bus_message_append(message, "a{oa{sa{sv}}}", 3, //
        "/org/freedesktop/UDisks2/Manager", 0, //
        "/org/freedesktop/UDisks2/block_devices/sda1", 2, //
        "org.freedesktop.UDisks2.Filesystem", 1, "MountPoints", "as", 1, "x", //
        "org.freedesktop.UDisks2.Block", 6, "DeviceNumber", "t", makedev(8, 1), "IdUsage", "s", "filesystem",
        "IdLabel", "s", "SERVED", "IdType", "s", "vfat", "IdUUID", "s", "", "Size", "t", uint64_t { 7 }, //
        "/org/freedesktop/UDisks2/block_devices/sda2", 1, //
        "org.freedesktop.UDisks2.Block", 3, "DeviceNumber", "t", makedev(8, 2), "IdUsage", "s", "crypto",
        "IdType", "s", "crypto_LUKS");
}

class DiskServiceTest : public Disks {
protected:
    DiskServiceTest()
    {
        usePartitions();
        host.add("run/udev/data/",
            { { "b8:1",
                  "E:ID_FS_USAGE=filesystem\nE:ID_FS_LABEL_ENC=UDEV\\x20ONE\nE:ID_FS_UUID=0b6f1c5e-5d0c-4f29-"
                  "9d1a-"
                  "3c1d1a0f7a11\nE:ID_FS_TYPE=hfsplus\n" },
                { "b8:2", "E:ID_FS_USAGE=crypto\nE:ID_FS_TYPE=crypto_LUKS\n" } });
        host.add("run/dbus/", { { "place", "" } });
    }

    std::string name(const char* disk) { return described(disk, kDADiskDescriptionVolumeNameKey); }
    std::string kind(const char* disk) { return described(disk, kDADiskDescriptionVolumeKindKey); }
    void expectUdevs()
    {
        EXPECT_EQ(name("disk0s1"), "UDEV ONE");
        EXPECT_EQ(kind("disk0s1"), "hfs");
        EXPECT_EQ(
            described("disk0s1", kDADiskDescriptionVolumeUUIDKey), "0B6F1C5E-5D0C-4F29-9D1A-3C1D1A0F7A11");
        EXPECT_EQ(kind("disk0s2"), "");
        EXPECT_EQ(described("disk0s2", kDADiskDescriptionVolumeMountableKey), "false");
    }

    std::string socket = host.root() + "/run/dbus/system_bus_socket";
};

}

TEST_F(DiskServiceTest, IsAskedOnceAndTellsMoreThanUdev)
{
    const MessageBus bus(socket);
    const DiskService service(bus.address(), AppendDevices);
    EXPECT_EQ(name("disk0s1"), "SERVED");
    EXPECT_EQ(kind("disk0s1"), "msdos");
    EXPECT_EQ(described("disk0s1", kDADiskDescriptionVolumeMountableKey), "true");
    EXPECT_EQ(kind("disk0s2"), "");
    EXPECT_EQ(described("disk0s1", kDADiskDescriptionVolumeUUIDKey), "0B6F1C5E-5D0C-4F29-9D1A-3C1D1A0F7A11");
    EXPECT_EQ(service.calls(), 1);
    usePartitions(); // there may be other disks now
    EXPECT_EQ(name("disk0s1"), "SERVED");
    EXPECT_EQ(service.calls(), 2);
}

TEST_F(DiskServiceTest, IsDoneWithoutWhereItIsNotThereOrSilent)
{
    expectUdevs(); // no bus
    startAnew();
    {
        const std::string mark = host.root() + "/started";
        host.add("run/dbus/system_bus_socket.services/",
            { { "udisks.service",
                "[D-BUS Service]\nName=org.freedesktop.UDisks2\nExec=/usr/bin/touch " + mark } });
        const MessageBus bus(socket);
        expectUdevs(); // nobody on it
        EXPECT_FALSE(std::filesystem::exists(mark)) << "the service was started";
        startAnew();
        const DiskService service(bus.address(), nullptr);
        expectUdevs();
        expectUdevs();
        EXPECT_EQ(service.calls(), 1) << "is waited for once";
    }
    startAnew();
    sockaddr_un silent { AF_UNIX, {} };
    unlink(socket.c_str());
    socket.copy(static_cast<char*>(silent.sun_path), sizeof silent.sun_path - 1);
    const Descriptor listener(::socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&silent), sizeof silent), 0);
    ASSERT_EQ(listen(listener.get(), 5), 0);
    expectUdevs();
}

TEST_F(DiskServiceTest, MaySayAnything)
{
    const MessageBus bus(socket);
    {
        const DiskService service(bus.address(),
            [](sd_bus_message* message) { return sd_bus_message_append(message, "s", "no objects"); });
        expectUdevs();
        EXPECT_EQ(service.calls(), 1);
    }
    startAnew();
    {
        const DiskService service(bus.address(), [](sd_bus_message* message) {
            return sd_bus_message_append(message, "a{oa{sa{sv}}}", 1, "/x", 1,
                "org.freedesktop.UDisks2.Block", 5, "IdLabel", "ai", 2, 1, 2, "IdUsage", "s", "filesystem",
                "IdUUID", "v", "u", 5, "IdType", "s", "xfs", "DeviceNumber", "t", makedev(8, 1));
        });
        EXPECT_EQ(name("disk0s1"), "UDEV ONE");
        EXPECT_EQ(kind("disk0s1"), "xfs") << "what is as it should be counts";
    }
    startAnew();
    const DiskService service(bus.address(), [](sd_bus_message* message) {
        int done = sd_bus_message_open_container(message, 'a', "{oa{sa{sv}}}");
        for (unsigned i = 1; i <= 10000 && done >= 0; ++i)
            done = sd_bus_message_append(message, "{oa{sa{sv}}}", ("/d" + std::to_string(i)).c_str(), 1,
                "org.freedesktop.UDisks2.Block", 3, "IdLabel", "s", i == 10000 ? "LAST\n\x1b[2J" : "x",
                "IdUsage", "s", "filesystem", "DeviceNumber", "t",
                i == 10000 ? makedev(8, 1) : makedev(200, i));
        return done < 0 ? done : sd_bus_message_close_container(message);
    });
    EXPECT_EQ(name("disk0s1"), "LAST");
}
