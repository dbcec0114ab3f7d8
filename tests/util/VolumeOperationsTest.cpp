#include "util/VolumeOperations.h"
#include "tests/DiskArbitration/Requests.h"

#include <thread>

namespace {

constexpr const char* kBusy = "org.freedesktop.UDisks2.Error.DeviceBusy";
constexpr const char* kFailed = "org.freedesktop.UDisks2.Error.Failed";
constexpr uint32_t kHolder = 99999;

/// Volumes that a service in place of the host's is asked to mount; a process holds what is mounted.
class VolumeOperationsTest : public Requests {
protected:
    VolumeOperationsTest()
    {
        const std::string process = host.root() + "/proc/" + std::to_string(kHolder);
        std::filesystem::create_symlink("/dev/shm", host.root() + "/volume");
        std::filesystem::create_directories(process);
        std::filesystem::create_symlink("/dev/shm", process + "/cwd");
    }

    void mountFirst() { mount("21 1 8:1 / /volume rw - ext4 /dev/sda1 rw\n"); }

    /// While the service works on the next request, a second, somebody else mounts or unmounts the volume.
    std::thread meanwhile(const std::string& mounts)
    {
        service.take(std::chrono::seconds(1));
        return std::thread([this, mounts, calls = service.calls()] {
            while (service.calls() == calls)
                usleep(1000);
            usleep(300000);
            mount(mounts);
        });
    }

    const MessageBus bus { socket };
    DiskService service { bus.address(), objects(true) };
};

TEST_F(VolumeOperationsTest, ARefusalWithoutAProcessCountsAsDone)
{
    for (const char* method : { "Mount", "Unmount", "Eject", "SetLabel" })
        service.answer(method, kFailed);
    mountFirst();
    uint32_t process = 7;
    EXPECT_TRUE(MountVolume("disk0s2", false) && UnmountVolume("disk0s1", false, &process));
    EXPECT_EQ(process, 0U);
    mount("");
    EXPECT_TRUE(EjectDisk("disk0s2", nullptr) && RenameVolume("disk0s2", "New Name"));
    Calls calls = service.asked(4);
    std::erase(calls, "second Mount options=x-gvfs-hide"); // which may come before nobody wants it any more
    EXPECT_EQ(calls, (Calls { "second Mount", "first Unmount", "D Eject", "second SetLabel New Name" }));
}

TEST_F(VolumeOperationsTest, WhoHoldsAVolumeIsNamed)
{
    service.answer("Unmount", kBusy);
    mountFirst();
    uint32_t process = 0;
    EXPECT_FALSE(UnmountVolume("disk0s1", false, &process) || UnmountVolume("disk0s1", true, nullptr));
    EXPECT_EQ(process, kHolder);
    EXPECT_EQ(service.asked(2), (Calls { "first Unmount", "first Unmount force=true" }));
    process = 0;
    EXPECT_FALSE(EjectDisk("disk0s1", &process));
    EXPECT_EQ(process, kHolder);
    EXPECT_TRUE(EjectDisk("disk0s2", &process)) << "this one is not mounted";
    EXPECT_EQ(process, 0U);
}

TEST_F(VolumeOperationsTest, WhatTurnsOutToBeAsWantedCountsAsDone)
{
    service.answer("Unmount", kBusy);
    mountFirst();
    uint32_t process = 7;
    std::thread other = meanwhile("");
    EXPECT_TRUE(UnmountVolume("disk0s1", false, &process));
    other.join();
    EXPECT_EQ(process, 0U);

    // Nobody looks after all of a disk.
    mountFirst();
    MountUnmountRec record { "disk0s1", 7, false, false, false, true };
    other = meanwhile("");
    EXPECT_FALSE(MountUnmountVolumeWithRec(&record));
    other.join();
    EXPECT_EQ(record.dissenterProcessID, kHolder);
}

TEST_F(VolumeOperationsTest, NothingIsAskedForWhatIsNoDisk)
{
    uint32_t process = 7;
    for (const char* name : { "", "disk7", "../../x", static_cast<const char*>(nullptr) }) {
        EXPECT_FALSE(MountVolume(name, true) || UnmountVolume(name, true, &process)
            || EjectDisk(name, &process) || RenameVolume(name, "x"));
    }
    EXPECT_EQ(process, 0U);
    EXPECT_FALSE(RenameVolume("disk0s1", nullptr) || MountUnmountVolumeWithRec(nullptr));
    EXPECT_EQ(service.calls(), 0);
}

}
