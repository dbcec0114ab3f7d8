#include "tests/DiskArbitration/Disks.h"

#include <DiskArbitration/MountTable.h>

#include <cstdlib>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace {

class MountTest : public Disks {
protected:
    MountTest() { usePartitions(); }

    std::string folder(const char* name) { return described(name, kDADiskDescriptionVolumePathKey); }
    std::string kind(const char* name) { return described(name, kDADiskDescriptionVolumeKindKey); }
    std::string diskAt(const char* path)
    {
        const cf::Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(nullptr,
            reinterpret_cast<const UInt8*>(path), static_cast<CFIndex>(std::string(path).size()), true));
        const cf::Owned<DADiskRef> disk(DADiskCreateFromVolumePath(nullptr, session.get(), url.get()));
        return disk ? DADiskGetBSDName(disk.get()) : "";
    }
};

/// @return what went wrong, in a mount namespace of its own; 0 for nothing, -1 where it may not have one.
int MountAndUnmount(const char* folder)
{
    if (unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return -1;
    da::MountTable table { HostTree() };
    struct stat status { };
    if (table.find(0, "") != nullptr)
        return 1;
    if (::mount("none", folder, "tmpfs", 0, nullptr) != 0 || stat(folder, &status) != 0)
        return -1;
    const HostMount* const mount = table.find(status.st_dev, "");
    if (mount == nullptr || mount->folder != folder || mount->type != "tmpfs")
        return 2;
    if (::mount("none", folder, "tmpfs", 0, nullptr) != 0)
        return -1;
    if (table.find(status.st_dev, "") != nullptr)
        return 3;
    umount(folder);
    if (table.find(status.st_dev, "") == nullptr)
        return 4;
    umount(folder);
    return table.find(status.st_dev, "") == nullptr ? 0 : 5;
}

}

TEST_F(MountTest, IsFoundByTheNumbersOfTheDeviceAndShownOnceItIsThere)
{
    EXPECT_EQ(folder("disk0s1"), "");
    mount("20 1 8:2 / / rw shared:1 - ext4 /dev/root rw\n"
          "21 20 8:1 /inner /srv/inner rw - vfat /dev/sda1 rw\n"
          "22 20 8:1 / /media/My\\040Disk\\134040 rw,nosuid shared:5 master:2 - vfat /dev/sda1 rw\n"
          "23 20 8:1 / /mnt rw - vfat /dev/sda1 rw\n");
    EXPECT_EQ(folder("disk0s1"), "/media/My Disk\\040");
    EXPECT_EQ(kind("disk0s1"), "msdos");
    EXPECT_EQ(folder("disk0s2"), "/");
    EXPECT_EQ(kind("disk0s2"), "ext4");
    EXPECT_EQ(folder("disk0"), "");
    EXPECT_EQ(diskAt("/media/My Disk\\040"), "disk0s1");
    EXPECT_EQ(diskAt("/"), "disk0s2");
    EXPECT_EQ(diskAt("/media"), "");
    mount("");
    EXPECT_EQ(folder("disk0s1"), "");
}

TEST_F(MountTest, OfAProgramHasTheKindThatWasFoundOnTheDisk)
{
    host.add("run/udev/data/", { { "b8:1", "E:ID_FS_USAGE=filesystem\nE:ID_FS_TYPE=ntfs\n" } });
    mount("20 1 8:1 / /media/win rw - fuseblk /dev/sda1 rw\n");
    EXPECT_EQ(folder("disk0s1"), "/media/win");
    EXPECT_EQ(kind("disk0s1"), "ntfs");
}

TEST_F(MountTest, IsNotWhereAnotherOneHidesItOrAFolderWasRemoved)
{
    mount("23 20 0:9 / / rw - ext4 none rw\n" // as after the first root was left, below which it was made
          "20 1 8:9 / / rw - ext4 /dev/sdb1 rw\n"
          "24 23 8:1 / /mnt/a rw - vfat /dev/sda1 rw\n"
          "25 23 8:2 / /mnt rw - vfat /dev/sda2 rw\n"
          "26 25 8:0 / /mnt/gone//deleted rw - vfat /dev/sda rw\n");
    EXPECT_EQ(folder("disk0s1"), "");
    EXPECT_EQ(folder("disk0s2"), "/mnt");
    EXPECT_EQ(folder("disk0"), "");
}

TEST_F(MountTest, OfFilesWithNumbersOfTheirOwnIsFoundByItsSource)
{
    mount("20 1 0:30 /@ / rw - btrfs /dev/sda2 rw,subvol=/@\n"
          "21 20 0:30 /@home /home rw - btrfs /dev/sda2 rw\n"
          "22 20 0:31 / /proc rw - proc proc rw\n");
    EXPECT_EQ(folder("disk0s2"), "/");
    EXPECT_EQ(kind("disk0s2"), "btrfs");
    EXPECT_EQ(folder("disk0s1"), "");
}

TEST_F(MountTest, InsideTheStartupVolumeHasAMacsPath)
{
    const std::string volume = host.root() + "/volume";
    setenv("ZEK_STARTUP_VOLUME", volume.c_str(), 1);
    mount("20 21 8:1 / " + volume + "/Volumes/STICK rw - exfat /dev/sda1 rw\n21 1 8:2 / " + volume
        + " rw - ext4 /dev/sda2 rw\n");
    EXPECT_EQ(folder("disk0s1"), "/Volumes/STICK");
    EXPECT_EQ(folder("disk0s2"), "/");
    EXPECT_EQ(diskAt("/Volumes/STICK"), "disk0s1");
    unsetenv("ZEK_STARTUP_VOLUME");
}

TEST_F(MountTest, TableOfNonsenseIsSurvived)
{
    using namespace std::string_literals;
    mount("\n  \n1 2 3\n20 1 8: / /x rw - vfat /dev/sda1 rw\n20 1 8:1 / relative rw - vfat s rw\n"
          "21 21 8:1 / /loop rw\n22 23 8:1 / /a rw - \n23 22 8:1 / /a/b rw - x\n\0\xff"s
        + std::string(100000, '\\'));
    EXPECT_EQ(folder("disk0s1"), "/a");
}

TEST(MountTableTest, FollowsTheKernels)
{
    const TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0)
        _exit(MountAndUnmount(folder.path().c_str()) & 0xFF);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WEXITSTATUS(status) == 0xFF)
        GTEST_SKIP() << "nothing may be mounted here";
    EXPECT_EQ(status, 0);
}
