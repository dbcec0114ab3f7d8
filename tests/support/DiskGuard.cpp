#include "tests/support/DiskGuard.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <linux/capability.h>
#include <linux/major.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// Of devices that are no block devices, those through which a disk can be reached all the same.
bool LeadsToDisks(const std::string& name)
{
    constexpr const char* kWays[] = { "bsg/", "dax", "mapper/control", "megaraid", "mem", "mmcblk", "mpt",
        "mtd", "ng", "nst", "nvme", "port", "raw", "sg", "st", "ubi" };
    return std::any_of(
        std::begin(kWays), std::end(kWays), [&name](const char* way) { return name.starts_with(way); });
}

/// Whether it is a loop device or a partition of one, as the kernel tells: partitions may have any numbers.
bool IsOfLoopDevice(dev_t device)
{
    std::error_code error; // one that has gone is none
    const fs::path place = fs::read_symlink(
        "/sys/dev/block/" + std::to_string(major(device)) + ':' + std::to_string(minor(device)), error);
    return place.string().find("/virtual/block/loop") != std::string::npos;
}

bool IsOffLimits(const fs::path& file)
{
    struct stat status { };
    if (lstat(file.c_str(), &status) != 0)
        return false;
    if (S_ISBLK(status.st_mode))
        return !IsOfLoopDevice(status.st_rdev);
    const bool isNull = status.st_rdev == makedev(MEM_MAJOR, 3);
    return S_ISCHR(status.st_mode) && !isNull && LeadsToDisks(file.string().substr(sizeof "/dev/" - 1));
}

/// Adds what is in a folder and below. A folder that has gone meanwhile has nothing.
void AddFilesOffLimits(const fs::path& folder, std::vector<std::string>& files)
{
    std::error_code error;
    for (fs::directory_iterator one(folder, error), end; one != end; one.increment(error)) {
        if (one->is_directory(error) && !one->is_symlink(error))
            AddFilesOffLimits(one->path(), files);
        else if (IsOffLimits(one->path()))
            files.push_back(one->path());
    }
}

std::vector<std::string> FilesOffLimits()
{
    std::vector<std::string> files;
    AddFilesOffLimits("/dev", files);
    return files;
}

/// No files for devices can be made any more, by this process or those that it starts.
bool GiveUpMakingDevices()
{
    __user_cap_header_struct header { _LINUX_CAPABILITY_VERSION_3, 0 };
    __user_cap_data_struct own[2] {};
    if (prctl(PR_CAPBSET_DROP, CAP_MKNOD) != 0 || syscall(SYS_capget, &header, own) != 0)
        return false;
    for (uint32_t* const set : { &own[0].effective, &own[0].permitted, &own[0].inheritable })
        *set &= ~(1U << CAP_MKNOD);
    return syscall(SYS_capset, &header, own) == 0;
}

/// As far as this system lets it: what is still in reach is found afterwards.
void HideDisks()
{
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return;
    for (const std::string& file : FilesOffLimits())
        mount("/dev/null", file.c_str(), nullptr, MS_BIND, nullptr);
}

bool Guard()
{
    const bool couldMakeDevices = geteuid() == 0 && (HideDisks(), !GiveUpMakingDevices());
    const std::vector<std::string> reached = DisksInReach();
    if (reached.empty() && !couldMakeDevices)
        return true;
    std::fprintf(stderr, "This test could touch %s, so it is not run.\n",
        reached.empty() ? "any disk" : reached.front().c_str());
    std::_Exit(EXIT_FAILURE);
}

[[maybe_unused]] const bool kIsGuarded = Guard();

}

std::vector<std::string> DisksInReach()
{
    std::vector<std::string> files = FilesOffLimits();
    std::erase_if(files, [](const std::string& file) {
        const int opened = open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (opened >= 0)
            close(opened);
        return opened < 0;
    });
    return files;
}
