#include "tests/support/HostFolder.h"

#include <DiskArbitration/Holders.h>

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

/// A hand-made table of processes, and as the volume a file system that this machine has.
class HoldersTest : public testing::Test {
protected:
    HoldersTest()
    {
        std::filesystem::create_symlink("/dev/shm", host.root() + "/volume");
        struct stat status { };
        EXPECT_EQ(stat("/dev/shm", &status), 0);
        volume = status.st_dev;
    }
    ~HoldersTest() override { unlink(file.c_str()); }

    /// @param name in the process's folder. @param target anywhere.
    void link(const std::string& process, const std::string& name, const std::string& target) const
    {
        const std::filesystem::path path = host.root() + "/proc/" + process + '/' + name;
        std::filesystem::create_directories(path.parent_path());
        std::filesystem::create_symlink(target, path);
    }
    pid_t holder() const
    {
        return da::HolderOf(host.tree(), { 20, 1, volume, "/", "/volume", "tmpfs", "none" });
    }

    HostFolder host;
    dev_t volume {};
    const std::string file = "/dev/shm/held-" + std::to_string(getpid());
    const std::string self = std::to_string(getpid());
};

}

TEST_F(HoldersTest, IsWhoeverHasSomethingOfTheVolume)
{
    EXPECT_EQ(holder(), 0);
    link("100", "cwd", "/");
    link("100", "fd/3", "/proc/version");
    link("101", "cwd", "/nowhere"); // may not be looked at, or has gone
    host.add("proc/", { { "notes", "" }, { "102/maps", "7f00-7f01 r--p 00000000 fe:09 12 /lib/x.so\n" } });
    EXPECT_EQ(holder(), 0);
    std::ofstream(file) << "x";
    link(self, "fd/7", file);
    EXPECT_EQ(holder(), getpid()) << "nobody else has";
    std::string device(32, '\0');
    device.resize(static_cast<size_t>(
        snprintf(device.data(), device.size(), "%02x:%02x", major(volume), minor(volume))));
    host.add("proc/", { { "300/maps", "7f00-7f01 r--p 00000000 " + device + " 9 /dev/shm/x\n" } });
    EXPECT_EQ(holder(), 300) << "a closed file is mapped still";
    link("99999", "fd/12", file);
    EXPECT_EQ(holder(), 99999) << "by this very mount";
    link("200", "root", "/dev/shm");
    EXPECT_EQ(holder(), 200);
}
