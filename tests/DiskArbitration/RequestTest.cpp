// What the disk service is asked for, and what is made of its answers.

#include "tests/DiskArbitration/Requests.h"

namespace {

class RequestTest : public Requests { };

const std::string udisks = "org.freedesktop.UDisks2.Error.";

}

TEST_F(RequestTest, IsOneCallOfTheDiskService)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    const Told answer = mountDisk("disk0s1");
    EXPECT_EQ(answer.refusal, std::nullopt);
    EXPECT_EQ(answer.disk, "disk0s1");
    EXPECT_EQ(service.asked(1), Calls { "first Mount" });
    mountDisk(
        "disk0s2", 0, { CFSTR("perm"), CFSTR("nobrowse"), CFSTR("rdonly"), CFSTR("nosuid"), CFSTR("async") });
    EXPECT_EQ(service.asked(1), Calls { "second Mount options=x-gvfs-hide,ro,nosuid" });
    unmountDisk("disk0s1");
    EXPECT_EQ(service.asked(1), Calls { "first Unmount" });
    unmountDisk("disk0s1", kDADiskUnmountOptionForce);
    EXPECT_EQ(service.asked(1), Calls { "first Unmount force=true" });
    renameDisk("disk0s1", CFSTR("Größer, 2"));
    EXPECT_EQ(service.asked(1), Calls { "first SetLabel Größer, 2" });
    DADiskRename(disk("disk0s1").get(), CFSTR(""), kDADiskRenameOptionDefault, nullptr, nullptr);
    EXPECT_TRUE(isSilent());
    EXPECT_EQ(service.asked(1), Calls { "first SetLabel " }) << "nobody need be told";
}

TEST_F(RequestTest, ForTheWholeDiskIsForAllVolumesThatAreNotYetAsWished)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    EXPECT_EQ(unmountDisk("disk0", kDADiskUnmountOptionWhole).refusal, std::nullopt)
        << "nothing has to be done";
    EXPECT_EQ(mountDisk("disk0s3", kDADiskMountOptionWhole).refusal, std::nullopt);
    EXPECT_EQ(service.asked(2), (Calls { "first Mount", "second Mount" }));
    mount("22 20 8:1 / /media/one rw - vfat /dev/sda1 rw\n");
    mountDisk("disk0", kDADiskMountOptionWhole);
    EXPECT_EQ(service.asked(1), Calls { "second Mount" });
    unmountDisk("disk0", kDADiskUnmountOptionWhole | kDADiskUnmountOptionForce);
    EXPECT_EQ(service.asked(1), Calls { "first Unmount force=true" });
    mount("");
    service.answer("Mount", udisks + "NotAuthorized");
    EXPECT_EQ(mountDisk("disk0", kDADiskMountOptionWhole).refusal, kDAReturnNotPrivileged);
    EXPECT_EQ(service.asked(2), (Calls { "first Mount", "second Mount" }));
    EXPECT_TRUE(isSilent()) << "one answer for all";
}

TEST_F(RequestTest, ToEjectIsForTheWholeDiskAsItsDriveCan)
{
    const MessageBus bus(socket);
    {
        DiskService service(bus.address(), objects(true, true));
        EXPECT_EQ(ejectDisk("disk0s2").refusal, std::nullopt);
        EXPECT_EQ(service.asked(1), Calls { "D Eject" });
        EXPECT_EQ(ejectDisk("disk1").refusal, std::nullopt);
        EXPECT_EQ(service.asked(1), Calls { "loop3 Delete" });
        mount("22 20 8:1 / /media/one rw - vfat /dev/sda1 rw\n");
        EXPECT_EQ(ejectDisk("disk0s2").refusal, kDAReturnBusy);
        EXPECT_EQ(service.asked(0), Calls {});
        mount("");
    }
    {
        DiskService service(bus.address(), objects(false, true));
        ejectDisk("disk0");
        EXPECT_EQ(service.asked(1), Calls { "D PowerOff" });
    }
    DiskService service(bus.address(), objects());
    EXPECT_EQ(ejectDisk("disk0").refusal, kDAReturnUnsupported);
    EXPECT_EQ(service.asked(0), Calls {});
}

TEST_F(RequestTest, IsRefusedForTheReasonThatTheServiceHas)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    const std::pair<std::string, DAReturn> reasons[] = {
        { udisks + "NotAuthorizedDismissed", kDAReturnNotPrivileged },
        { udisks + "AlreadyMounted", kDAReturnBusy },
        { udisks + "NotMounted", kDAReturnNotMounted },
        { udisks + "OptionNotPermitted", kDAReturnNotPermitted },
        { udisks + "NotSupported", kDAReturnUnsupported },
        { udisks + "Failed", kDAReturnError },
        { "org.freedesktop.DBus.Error.UnknownMethod", kDAReturnUnsupported },
        { "org.freedesktop.DBus.Error.TimedOut", kDAReturnNotReady },
        { "com.example.Odd", kDAReturnError },
    };
    for (const auto& [error, status] : reasons) {
        service.answer("Mount", error);
        const Told answer = mountDisk("disk0s1");
        EXPECT_EQ(answer.refusal, status) << error;
        EXPECT_EQ(answer.sentence, "It does not work.");
        EXPECT_EQ(answer.process, 0);
    }
}

TEST_F(RequestTest, IsRefusedWithoutAskingWhereItMakesNoSense)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    EXPECT_EQ(
        mountDisk("disk0s1", 0, { CFSTR("rdonly"), CFSTR("dev=/dev/sda") }).refusal, kDAReturnBadArgument);
    EXPECT_EQ(
        mountDisk("disk0s1", 0, { static_cast<CFStringRef>(static_cast<CFTypeRef>(kCFBooleanTrue)) }).refusal,
        kDAReturnBadArgument);
    const cf::Owned<CFURLRef> folder(
        CFURLCreateWithFileSystemPath(nullptr, CFSTR("/mnt"), kCFURLPOSIXPathStyle, true));
    DADiskMount(disk("disk0s1").get(), folder.get(), 0, OnAnswer, self());
    EXPECT_EQ(next().refusal, kDAReturnUnsupported);
    const UniChar bad[] = { 0xD800, 'a', 0 };
    const cf::Owned<CFStringRef> half(CFStringCreateWithCharacters(nullptr, &bad[0], 1));
    const cf::Owned<CFStringRef> cut(CFStringCreateWithCharacters(nullptr, &bad[1], 2));
    for (CFStringRef const name : { half.get(), cut.get(), static_cast<CFStringRef>(nullptr) })
        EXPECT_EQ(renameDisk("disk0s1", name).refusal, kDAReturnBadArgument);
    DADiskUnmount(nullptr, 0, OnAnswer, self());
    EXPECT_TRUE(isSilent()) << "no disk, no answer";
    iokit::Registry recording;
    addMedia(recording, recording.root(), "disk5", 8, 1, "");
    addMedia(recording, recording.root(), "disk6", 8, 77, "/dev/sdx");
    const cf::Owned<DADiskRef> gone = disk("disk0s1");
    use(std::move(recording));
    EXPECT_EQ(unmountDisk("disk5").refusal, kDAReturnNotFound);
    DADiskUnmount(gone.get(), 0, OnAnswer, self());
    EXPECT_EQ(next().refusal, kDAReturnNotFound) << "its number may be another's by now";
    EXPECT_EQ(unmountDisk("disk6").refusal, kDAReturnNotFound) << "the service does not know it";
    EXPECT_EQ(service.asked(0), Calls {});
}

TEST_F(RequestTest, ForAVolumeNeedsOne)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    EXPECT_EQ(mountDisk("disk0s3").refusal, kDAReturnUnsupported);
    EXPECT_EQ(unmountDisk("disk0s3").refusal, kDAReturnNotMounted);
    EXPECT_EQ(renameDisk("disk0", CFSTR("x")).refusal, kDAReturnUnsupported);
    EXPECT_EQ(service.asked(0), Calls {});
}

TEST_F(RequestTest, StartsTheServiceAndIsRefusedWhereThereIsNone)
{
    EXPECT_EQ(mountDisk("disk0s1").refusal, kDAReturnNotReady) << "no bus";
    const std::string mark = host.root() + "/started";
    host.add("run/dbus/system_bus_socket.services/",
        { { "udisks.service",
            "[D-BUS Service]\nName=org.freedesktop.UDisks2\nExec=/bin/sh -c 'touch " + mark + "; false'" } });
    const MessageBus bus(socket);
    EXPECT_EQ(mountDisk("disk0s1").refusal, kDAReturnNotReady) << "it was started, and ended";
    EXPECT_TRUE(std::filesystem::exists(mark));
    DiskService service(
        bus.address(), [](sd_bus_message* message) { return sd_bus_message_append(message, "s", "odd"); });
    EXPECT_EQ(mountDisk("disk0s1").refusal, kDAReturnNotFound);
}

TEST_F(RequestTest, LetsTheDiskBeDescribedAnewOnceItIsDone)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    const auto asksAnew = [&] {
        const int before = service.calls();
        described("disk0s1", kDADiskDescriptionVolumeNameKey);
        return service.calls() > before;
    };
    EXPECT_TRUE(asksAnew());
    service.answer("SetLabel", udisks + "Failed");
    renameDisk("disk0s1", CFSTR("x"));
    EXPECT_FALSE(asksAnew());
    service.answer("SetLabel", "");
    renameDisk("disk0s1", CFSTR("x"));
    EXPECT_TRUE(asksAnew());
    EXPECT_FALSE(asksAnew());
}
