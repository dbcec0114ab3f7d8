// The library, the tools and the disk service together, on loop devices.

#include "tests/DiskArbitration/DiskSystem.h"
#include "util/VolumeOperations.h"
#include "util/Volumes.h"

#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

class RealVolumeTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!system.problem().empty())
            GTEST_SKIP() << system.problem();
    }

    /// @param command as of DiskSystem::attach(). @return whether the disk is there.
    bool use(const std::string& command)
    {
        device = system.attach(command);
        name = DiskSystem::bsdName(device);
        return !name.empty();
    }
    std::string folder() const
    {
        char path[1024] = "";
        GetVolumePathnameWithBSDName(name.c_str(), path, sizeof path);
        return path;
    }
    /// @return whether the tools of the host find the volume with that kind and name, and nothing wrong.
    int check(const std::string& kind, const std::string& label, const std::string& fsck) const
    {
        return RunCommand("test \"$(blkid -p -o value -s TYPE " + device + ")\" = " + kind
            + " && test \"$(blkid -p -o value -s LABEL " + device + ")\" = '" + label + "' && " + fsck + ' '
            + device);
    }
    bool make(uint32_t type) const
    {
        CreateFileSystemRec made {};
        std::strncpy(made.bsdName, name.c_str(), sizeof made.bsdName - 1);
        std::strcpy(made.volumeName, "My Volume");
        made.fileSystemType = type;
        return CreateFileSystem(&made);
    }

    DiskSystem system;
    std::string device {};
    std::string name {};
};

TEST_F(RealVolumeTest, FileSystemsAreWhatWasAskedForAndNothingIsMadeOnAVolumeInUse)
{
    ASSERT_TRUE(use("mkfs.ext4 -q $image"));
    EXPECT_TRUE(make(kFAT32FileSystem));
    EXPECT_EQ(check("vfat", "MY VOLUME", "fsck.vfat -n"), 0);
    EXPECT_TRUE(make(kExFATFileSystem));
    EXPECT_EQ(check("exfat", "My Volume", "fsck.exfat -n"), 0);
    EXPECT_TRUE(CreateAPFS_Container(name.c_str()));
    EXPECT_EQ(RunCommand("apfsck " + device), 0);

    ASSERT_TRUE(use("mkfs.ext4 -q -L KEPT $image"));
    ASSERT_TRUE(MountVolume(name.c_str(), true));
    EXPECT_TRUE(make(kFAT32FileSystem)) << "the tool was run";
    EXPECT_FALSE(CreateAPFS_Container(name.c_str()));
    EXPECT_EQ(check("ext4", "KEPT", "true"), 0);
}

TEST_F(RealVolumeTest, VolumesAreMountedJournaledIndexedNamedAndEjected)
{
    device = system.attachForGood("mkfs.ext4 -q -L FIRST $image");
    name = DiskSystem::bsdName(device);
    ASSERT_TRUE(MountVolume(name.c_str(), false));
    EXPECT_TRUE(folder().ends_with("/FIRST")) << folder();
    EXPECT_TRUE(ReturnIndexingState(folder().c_str()) && DisableIndexing(folder().c_str()));
    EXPECT_FALSE(ReturnIndexingState(folder().c_str()));

    const int file = open((folder() + "/file").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    uint32_t process = 0;
    EXPECT_FALSE(UnmountVolume(name.c_str(), false, &process));
    EXPECT_EQ(process, static_cast<uint32_t>(getpid()));
    EXPECT_TRUE(UnmountVolume(name.c_str(), true, nullptr)) << "by force";
    close(file);
    EXPECT_EQ(folder(), "");

    EXPECT_TRUE(DisableJournaling(name.c_str()));
    EXPECT_NE(RunCommand("dumpe2fs -h " + device + " | grep -q has_journal"), 0);
    EXPECT_TRUE(RenameVolume(name.c_str(), "Zweiter"));
    EXPECT_EQ(check("ext4", "Zweiter", "true"), 0);
    EXPECT_TRUE(EjectDisk(name.c_str(), nullptr));
    EXPECT_FALSE(MountVolume(name.c_str(), true)) << "there is no such disk any more";
}

}
