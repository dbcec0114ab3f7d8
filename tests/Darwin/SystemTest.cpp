#include <sys/fsctl.h>
#include <sys/mount.h>
#include <sys/sysctl.h>
#include <sys/xattr.h>

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>

namespace {

std::vector<kinfo_proc> Processes(std::vector<int> name)
{
    size_t size = 0;
    EXPECT_EQ(sysctl(name.data(), static_cast<u_int>(name.size()), nullptr, &size, nullptr, 0), 0);
    std::vector<kinfo_proc> table(size / sizeof(kinfo_proc));
    EXPECT_EQ(sysctl(name.data(), static_cast<u_int>(name.size()), table.data(), &size, nullptr, 0), 0);
    table.resize(size / sizeof(kinfo_proc));
    return table;
}

int ErrorOf(int result) { return result == 0 ? 0 : errno; }

}

TEST(ProcessTableTest, HoldsThisProcessWithItsOddName)
{
    prctl(PR_SET_NAME, "a) (\n 1 2 3 4 5");
    for (const std::vector<int>& name : { std::vector<int> { CTL_KERN, KERN_PROC, KERN_PROC_ALL },
             { CTL_KERN, KERN_PROC, KERN_PROC_ALL, 0 }, { CTL_KERN, KERN_PROC, KERN_PROC_PID, getpid() } }) {
        int count = 0;
        for (const kinfo_proc& process : Processes(name)) {
            if (process.kp_proc.p_pid != getpid())
                continue;
            ++count;
            EXPECT_STREQ(process.kp_proc.p_comm, "a) (\n 1 2 3 4 5");
            EXPECT_EQ(process.kp_eproc.e_ppid, getppid());
            EXPECT_EQ(process.kp_eproc.e_pgid, getpgrp());
            EXPECT_EQ(process.kp_eproc.e_ucred.cr_uid, geteuid());
            EXPECT_EQ(process.kp_proc.p_stat, SRUN);
            EXPECT_LE(std::abs(process.kp_proc.p_starttime.tv_sec - time(nullptr)), 1000);
        }
        EXPECT_EQ(count, 1);
    }
    EXPECT_TRUE(Processes({ CTL_KERN, KERN_PROC, KERN_PROC_PID, 0x7FFFFFFF }).empty());
}

TEST(ProcessTableTest, IsCutBetweenRecordsWhereTheRoomIsShort)
{
    int name[] = { CTL_KERN, KERN_PROC, KERN_PROC_ALL };
    std::vector<char> room(2 * sizeof(kinfo_proc) - 1); // of the exact size, for the address sanitizer to see
    size_t size = room.size();
    EXPECT_EQ(ErrorOf(sysctl(name, 3, room.data(), &size, nullptr, 0)), ENOMEM);
    EXPECT_EQ(size, sizeof(kinfo_proc));
}

TEST(SystemControlTest, NumbersFitRoomsOfFourAndEightBytes)
{
    int name[] = { CTL_HW, HW_MEMSIZE };
    uint64_t memory = 0;
    size_t size = sizeof memory;
    ASSERT_EQ(sysctl(name, 2, &memory, &size, nullptr, 0), 0);
    EXPECT_NEAR(static_cast<double>(memory),
        static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE)), 1e6);
    int processors = 0;
    size = sizeof processors;
    ASSERT_EQ(sysctlbyname("hw.ncpu", &processors, &size, nullptr, 0), 0);
    EXPECT_EQ(processors, sysconf(_SC_NPROCESSORS_ONLN));
    EXPECT_EQ(size, sizeof processors);
    std::array<char, 16> machine {};
    size = machine.size();
    EXPECT_EQ(sysctlbyname("hw.machine", machine.data(), &size, nullptr, 0), 0);
    EXPECT_EQ(size, std::strlen(machine.data()) + 1);

    size = 2;
    EXPECT_EQ(ErrorOf(sysctl(name, 2, &memory, &size, nullptr, 0)), ENOMEM);
    EXPECT_EQ(ErrorOf(sysctl(name, 2, &memory, nullptr, nullptr, 0)), EFAULT);
    EXPECT_EQ(ErrorOf(sysctl(nullptr, 2, &memory, &size, nullptr, 0)), EFAULT);
    EXPECT_EQ(ErrorOf(sysctl(name, 2, nullptr, &size, &memory, sizeof memory)), EPERM);
    EXPECT_EQ(ErrorOf(sysctl(name, 1, nullptr, &size, nullptr, 0)), ENOENT);
    int unknown[] = { CTL_KERN, KERN_PROC, 99, 0 };
    EXPECT_EQ(ErrorOf(sysctl(unknown, 4, nullptr, &size, nullptr, 0)), ENOENT);
}

TEST(AttributeTest, RefusesWhatTheHostCannotKeep)
{
    const std::string longest(250, 'n'); // with the host's prefix 255
    EXPECT_EQ(ErrorOf(setxattr("/none", longest.c_str(), "", 0, 0, 0)), ENOENT);
    EXPECT_EQ(ErrorOf(setxattr("/none", (longest + 'n').c_str(), "", 0, 0, 0)), ENAMETOOLONG);
    EXPECT_EQ(ErrorOf(setxattr("/none", "n", "", 0, 1, 0)), EINVAL);
    EXPECT_EQ(ErrorOf(setxattr("/none", "n", "", 0, 0, 8)), EINVAL);
    EXPECT_EQ(ErrorOf(setxattr(nullptr, "n", "", 0, 0, 0)), EFAULT);
}

TEST(FileSystemTest, IsToldByWhereItIsMounted)
{
    struct statfs info = {};
    ASSERT_EQ(statfs("/proc/self/fd", &info), 0);
    EXPECT_STREQ(info.f_mntonname, "/proc");
    EXPECT_STREQ(info.f_fstypename, "proc");
    EXPECT_EQ(ErrorOf(statfs("/none", &info)), ENOENT);
    EXPECT_EQ(ErrorOf(fsctl("/", 0x80086802, nullptr, 0)), ENOTSUP);
    EXPECT_EQ(ErrorOf(fsctl("/none", 0x80086802, nullptr, 0)), ENOENT);
}
