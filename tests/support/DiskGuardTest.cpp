#include "tests/support/DiskGuard.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

/// The machine's block devices, as the kernel tells: name and number.
std::vector<std::pair<std::string, dev_t>> Disks()
{
    std::vector<std::pair<std::string, dev_t>> disks;
    for (const auto& one : std::filesystem::directory_iterator("/sys/class/block")) {
        unsigned major = 0;
        unsigned minor = 0;
        char colon = 0;
        std::ifstream number(one.path() / "dev");
        if (number >> major >> colon >> minor)
            disks.emplace_back(one.path().filename(), makedev(major, minor));
    }
    return disks;
}

bool IsBlockDevice(const std::string& file)
{
    struct stat status { };
    return stat(file.c_str(), &status) == 0 && S_ISBLK(status.st_mode);
}

TEST(DiskGuardTest, LeavesNoDiskInReachButLoopDevices)
{
    EXPECT_EQ(DisksInReach(), std::vector<std::string>());
    const TemporaryFolder folder;
    for (const auto& [name, number] : Disks()) {
        const bool isLoop = name.starts_with("loop");
        if (geteuid() == 0 && std::filesystem::exists("/dev/" + name)) {
            EXPECT_EQ(IsBlockDevice("/dev/" + name), isLoop) << name;
        }
        EXPECT_NE(mknod((folder / name).c_str(), S_IFBLK | 0600, number), 0) << name;
        // Nor can what a test starts.
        EXPECT_NE(std::system(("mknod " + (folder / name) + " b " + std::to_string(major(number)) + ' '
                      + std::to_string(minor(number)) + " 2>/dev/null")
                                  .c_str()),
            0)
            << name;
    }
}

}
