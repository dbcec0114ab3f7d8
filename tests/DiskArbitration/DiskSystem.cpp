#include "tests/DiskArbitration/DiskSystem.h"

#include <DiskArbitration/UDisks.h>
#include <Host/HostMounts.h>
#include <Host/HostTree.h>
#include <Host/MessageBus.h>
#include <Host/ProgramStart.h>
#include <IOKit/CurrentRegistry.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <linux/loop.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kService = "/usr/libexec/udisks2/udisksd";
constexpr const char* kUdev = "/lib/systemd/systemd-udevd";

/// Everybody may talk to everybody, who the services then look at.
constexpr const char* kBusConfiguration
    = "<busconfig><listen>unix:path=/run/dbus/system_bus_socket</listen><auth>EXTERNAL</auth>"
      "<policy context='default'><allow user='*'/><allow own='*'/><allow send_destination='*'/>"
      "<allow receive_sender='*'/></policy>"
      "</busconfig>";

bool Eventually(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

bool Mount(const char* what, const std::string& where, const char* type, unsigned long flags)
{
    return mount(what, where.c_str(), type, flags, nullptr) == 0;
}

/// A /dev with files for loop devices, and for what is no device at all.
bool MakeDevices(const std::string& folder)
{
    if (!Mount("devices", folder, "tmpfs", 0))
        return false;
    for (const std::string& name : HostTree("/dev").names("")) {
        const bool isLoop = name.starts_with("loop") && name.find('p', 4) == std::string::npos;
        if (!isLoop && name != "null" && name != "zero" && name != "full" && name != "random"
            && name != "urandom")
            continue;
        const std::string file = std::string(folder).append("/").append(name);
        std::ofstream(file).close();
        if (!Mount(("/dev/" + name).c_str(), file, nullptr, MS_BIND))
            return false;
    }
    fs::create_symlink("/proc/self/fd", folder + "/fd");
    return Mount(folder.c_str(), "/dev", nullptr, MS_MOVE);
}

/// @param folder empty.
bool EnterOwnSystem(const std::string& folder)
{
    if (geteuid() != 0 || unshare(CLONE_NEWNS | CLONE_NEWNET) != 0
        || !Mount("none", "/", nullptr, MS_REC | MS_PRIVATE) || !Mount("sysfs", "/sys", "sysfs", 0)
        || !MakeDevices(folder))
        return false;
    for (const char* const own : { "/run", "/media", "/var/lib/udisks2" }) {
        if (fs::exists(own) && !Mount("own", own, "tmpfs", 0))
            return false;
    }
    return fs::create_directories("/run/udev") && fs::create_directories("/run/dbus");
}

/// Whether the service tells of the device what udev has found out.
bool IsServed(const std::string& device)
{
    struct stat status { };
    if (stat(device.c_str(), &status) != 0 || RunCommand("udevadm settle") != 0)
        return false;
    const std::string id
        = 'b' + std::to_string(major(status.st_rdev)) + ':' + std::to_string(minor(status.st_rdev));
    const TextPairs udev = HostTree().udev(id);
    const da::ServedObjects served = da::ObjectsFromUDisks(SystemBusAddress(HostTree()));
    const auto found = served.blocks.find(status.st_rdev);
    return HostTree().has("run/udev/data/" + id) && found != served.blocks.end()
        && found->second.contents.type == ValueOf(udev, "ID_FS_TYPE");
}

/// @return the file of a loop device that now has the image; "" for none.
std::string Attach(const std::string& image, bool goesWhenClosed, Descriptor& opened)
{
    const Descriptor file(open(image.c_str(), O_RDWR | O_CLOEXEC));
    const Descriptor control(open("/dev/loop-control", O_RDWR | O_CLOEXEC));
    loop_config configuration {};
    configuration.fd = static_cast<uint32_t>(file.get());
    configuration.info.lo_flags = goesWhenClosed ? uint32_t { LO_FLAGS_AUTOCLEAR } : 0;
    image.copy(reinterpret_cast<char*>(configuration.info.lo_file_name), LO_NAME_SIZE - 1);
    for (int tries = 0; tries < 20; ++tries) { // others may be faster
        std::string device = "/dev/loop" + std::to_string(ioctl(control.get(), LOOP_CTL_GET_FREE));
        opened = Descriptor(open(device.c_str(), O_RDWR | O_CLOEXEC));
        if (opened && ioctl(opened.get(), LOOP_CONFIGURE, &configuration) == 0)
            return device;
    }
    return "";
}

}

int RunCommand(const std::string& command)
{
    const int status = std::system(("{ " + command + "; } >/dev/null 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

DiskSystem::DiskSystem()
{
    if (!fs::exists(kService) || !fs::exists(kUdev))
        fProblem = "There is no UDisks, or no udev.";
    else if (!EnterOwnSystem(fFolder.path()))
        fProblem = "This takes the superuser, and a system that lets it have name spaces.";
    else if (!fs::exists("/dev/loop0") || !fs::exists("/dev/loop-control"))
        fProblem = "There are no loop devices.";
    else
        startServices();
}

void DiskSystem::startServices()
{
    start({ kUdev }, "/run/udev.log");
    WriteText("/run/dbus/bus.conf", kBusConfiguration);
    start({ "/usr/bin/dbus-daemon", "--nofork", "--config-file=/run/dbus/bus.conf" }, "/run/bus.log");
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    const bool isReady = Eventually([] {
        return fs::exists("/run/udev/control")
            && BusAnswers(SystemBusAddress(HostTree()), std::chrono::seconds(1));
    });
    start({ kService }, "/run/udisks.log");
    if (!isReady || !Eventually([] {
            return RunCommand("dbus-send --system --print-reply --dest=org.freedesktop.DBus / "
                              "org.freedesktop.DBus.GetNameOwner string:org.freedesktop.UDisks2")
                == 0;
        }))
        ADD_FAILURE() << ReadText("/run/udev.log") << ReadText("/run/bus.log") << ReadText("/run/udisks.log");
}

DiskSystem::~DiskSystem()
{
    for (const HostMount& mount : HostMountsIn(HostTree().bytes(kHostMountTable, kLongestMountTable))) {
        if (mount.source.starts_with("/dev/loop"))
            umount2(mount.folder.c_str(), MNT_DETACH);
    }
    if (!fForGood.empty())
        RunCommand("losetup --detach " + fForGood);
    fHeld.clear();
    for (const pid_t service : fServices) {
        kill(service, SIGTERM);
        waitpid(service, nullptr, 0);
    }
}

void DiskSystem::start(std::vector<std::string> command, const std::string& log)
{
    const pid_t service = fork();
    if (service == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM); // also when the program is ended by force
        const Descriptor file(open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
        dup2(file.get(), STDOUT_FILENO);
        dup2(file.get(), STDERR_FILENO);
        execv(command.front().c_str(), PointersTo(command).data());
        _exit(127);
    }
    fServices.push_back(service);
}

bool DiskSystem::canHave(const std::string& fileSystem)
{
    RunCommand("modprobe " + fileSystem); // where it is not built in
    return RunCommand("command -v mkfs." + fileSystem + " && grep -qw " + fileSystem + " /proc/filesystems")
        == 0;
}

std::string DiskSystem::attach(const std::string& command, bool goesWithProgram)
{
    const std::string image = "/run/image" + std::to_string(++fImages);
    if (RunCommand("image=" + image + "; truncate -s 320M $image && " + command) != 0)
        return "";
    Descriptor opened;
    std::string device = Attach(image, goesWithProgram, opened);
    if (goesWithProgram)
        fHeld.push_back(std::move(opened));
    else
        fForGood = device;
    opened.close();
    return !device.empty() && Eventually([&] { return IsServed(device); }) ? device : "";
}

std::string DiskSystem::bsdName(const std::string& device)
{
    const auto registry = iokit::CurrentRegistry();
    for (const iokit::Entry& entry : registry->entries()) {
        std::string name = entry.bsdName();
        if (!name.empty() && registry->deviceFile(name) == device)
            return name;
    }
    return "";
}
