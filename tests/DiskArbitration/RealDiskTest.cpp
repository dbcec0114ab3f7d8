// Requests with the real disk service, udev and kernel, for file systems in images on loop devices.

#include "tests/DiskArbitration/DiskSystem.h"
#include "tests/DiskArbitration/Telling.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* kExt4 = "mkfs.ext4 -q -L FIRST $image";

class RealDiskTest : public testing::Test, protected Telling {
protected:
    void SetUp() override
    {
        if (!system.problem().empty())
            GTEST_SKIP() << system.problem();
        startSession();
    }

    /// @param command as of DiskSystem::attach(). @return whether the disk is there.
    bool use(const std::string& command)
    {
        device = system.attach(command);
        name = DiskSystem::bsdName(device);
        return !name.empty();
    }
    std::string folder() const { return described(name.c_str(), kDADiskDescriptionVolumePathKey); }
    Told mount(const std::vector<CFStringRef>& arguments = {})
    {
        return mountDisk(name.c_str(), 0, arguments);
    }
    Told unmount(UInt32 options = 0) { return unmountDisk(name.c_str(), options); }

    DiskSystem system;
    std::string device {};
    std::string name {};
};

/// Another process, which is in a folder or has a file open there.
class Holder {
public:
    explicit Holder(const std::string& command)
        : fProcess(fork())
    {
        if (fProcess != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        execl("/bin/sh", "sh", "-c", (command + " && exec sleep 1000").c_str(), nullptr);
        _exit(127);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder()
    {
        kill(fProcess, SIGKILL);
        waitpid(fProcess, nullptr, 0);
    }
    pid_t process() const { return fProcess; }
    /// Whether it is where it is meant to be.
    bool holds() const
    {
        for (int tries = 0; tries < 500; ++tries) {
            if (ReadText("/proc/" + std::to_string(fProcess) + "/comm") == "sleep\n")
                return true;
            usleep(10000);
        }
        return false;
    }

private:
    pid_t fProcess;
};

}

TEST_F(RealDiskTest, IsMountedNamedAndUnmountedWhateverTheFileSystem)
{
    const std::pair<std::string, std::string> kinds[] = { { "ext4", kExt4 },
        { "xfs", "mkfs.xfs -q -L FIRST $image" }, { "btrfs", "mkfs.btrfs -q -L FIRST $image" } };
    for (const auto& [kind, command] : kinds) {
        if (!DiskSystem::canHave(kind))
            continue;
        ASSERT_TRUE(use(command)) << kind;
        EXPECT_EQ(folder(), "") << kind;
        EXPECT_EQ(mount().refusal, std::nullopt) << kind;
        EXPECT_TRUE(folder().ends_with("/FIRST")) << folder();
        EXPECT_EQ(described(name.c_str(), kDADiskDescriptionVolumeKindKey), kind);
        EXPECT_EQ(mount().refusal, kDAReturnBusy) << "it is mounted";
        {
            const Holder holder("cd '" + folder() + "'");
            ASSERT_TRUE(holder.holds());
            const Told told = unmount();
            EXPECT_EQ(told.refusal, kDAReturnBusy) << kind;
            EXPECT_EQ(told.process, holder.process()) << kind;
            EXPECT_NE(told.sentence, "");
        }
        EXPECT_EQ(unmount().refusal, std::nullopt) << kind;
        EXPECT_EQ(folder(), "") << kind;
        EXPECT_EQ(unmount().refusal, kDAReturnNotMounted) << kind;
        EXPECT_EQ(renameDisk(name.c_str(), CFSTR("SECOND")).refusal, std::nullopt) << kind;
        EXPECT_EQ(described(name.c_str(), kDADiskDescriptionVolumeNameKey), "SECOND") << kind;
    }
}

TEST_F(RealDiskTest, IsUnmountedByForceWhoeverHoldsIt)
{
    ASSERT_TRUE(use(kExt4));
    mount();
    const Descriptor own(open(folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(unmount().process, getpid()) << "nobody else holds it";
    const Holder holder("exec 7>'" + folder() + "/file'");
    ASSERT_TRUE(holder.holds());
    EXPECT_EQ(unmount(kDADiskUnmountOptionWhole).process, holder.process());
    const Told told = ejectDisk(name.c_str());
    EXPECT_EQ(told.refusal, kDAReturnBusy);
    EXPECT_EQ(told.process, holder.process());
    EXPECT_EQ(unmount(kDADiskUnmountOptionForce).refusal, std::nullopt);
    EXPECT_EQ(folder(), "");
}

TEST_F(RealDiskTest, IsMountedAsTheArgumentsSay)
{
    ASSERT_TRUE(use(kExt4));
    const std::vector<CFStringRef> all { CFSTR("perm"), CFSTR("nobrowse"), CFSTR("rdonly"), CFSTR("nosuid"),
        CFSTR("nodev"), CFSTR("noexec"), CFSTR("noatime"), CFSTR("sync"), CFSTR("async") };
    EXPECT_EQ(mount(all).refusal, std::nullopt);
    struct statvfs status { };
    ASSERT_EQ(statvfs(folder().c_str(), &status), 0);
    const auto wanted = static_cast<unsigned long>(
        ST_RDONLY | ST_NOSUID | ST_NODEV | ST_NOEXEC | ST_NOATIME | ST_SYNCHRONOUS);
    EXPECT_EQ(status.f_flag & wanted, wanted);
    EXPECT_NE(ReadText("/run/mount/utab").find("x-gvfs-hide"), std::string::npos);
}

TEST_F(RealDiskTest, IsEjectedAndGoneOnceNothingIsMounted)
{
    device = system.attachForGood(kExt4);
    name = DiskSystem::bsdName(device);
    ASSERT_NE(name, "");
    const std::string image = "/sys/class/block" + device.substr(4) + "/loop/backing_file";
    mount();
    EXPECT_EQ(ejectDisk(name.c_str()).refusal, kDAReturnBusy);
    EXPECT_EQ(ReadText(image), "/run/image1\n");
    unmount();
    EXPECT_EQ(ejectDisk(name.c_str()).refusal, std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(image));
    EXPECT_EQ(DADiskCreateFromBSDName(nullptr, session.get(), name.c_str()), nullptr);
}

TEST_F(RealDiskTest, IsRefusedToWhoMayNotAndWhereThereIsNoVolume)
{
    ASSERT_TRUE(use("true"));
    EXPECT_EQ(mount().refusal, kDAReturnUnsupported);
    ASSERT_TRUE(use(kExt4));
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        const bool isNobody
            = setresgid(nobody, nobody, nobody) == 0 && setresuid(nobody, nobody, nobody) == 0;
        startSession();
        const Told told = mount();
        _exit(isNobody && told.refusal == kDAReturnNotPrivileged ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(folder(), "");
}
