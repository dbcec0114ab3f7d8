// Mounted volumes, and the system software.

#include "profile/Drives.h"
#include "profile/Reports.h"

#include <Darwin/SystemVersion.h>
#include <Host/TextReading.h>
#include <Host/UserRecord.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <sstream>
#include <sys/statvfs.h>
#include <unistd.h>

namespace profile {

namespace {

struct Mount {
    std::string device; ///< name in sys/class/block
    std::string point;
    std::string options;
    std::string type;
};

/// One line of the kernel's table: "36 35 98:0 / /mnt rw,noatime master:1 - ext3 /dev/root rw".
/// @return without a device where what is mounted is none.
Mount MountIn(const HostTree& tree, const std::string& line)
{
    std::istringstream words(line);
    std::string skipped;
    std::string number;
    std::string source;
    Mount mount;
    words >> skipped >> skipped >> number >> skipped >> mount.point >> mount.options;
    while (words >> skipped && skipped != "-") { }
    words >> mount.type >> source;
    mount.point = Unescaped(mount.point);
    if (!source.starts_with("/dev/") || !mount.point.starts_with('/'))
        return {};
    // Some file systems have a number of their own instead of their device's.
    std::string block = tree.resolved("sys/dev/block/" + number);
    block = block.empty() ? source : block;
    mount.device = block.substr(block.rfind('/') + 1);
    return mount;
}

Item Volume(const HostTree& tree, const Mount& mount, const BSDNames& names)
{
    const TextPairs known = tree.udev("b" + tree.text("sys/class/block/" + mount.device + "/dev"));
    Item item(ValueOf(known, "ID_FS_LABEL_ENC"));
    item.set("_name", mount.point.substr(mount.point.rfind('/') + 1)).set("_name", mount.device);
    item.set("bsd_name", names.of("/dev/" + mount.device))
        .set("file_system", mount.type)
        .set("mount_point", mount.point);
    struct statvfs sizes { };
    if (statvfs(tree.path(mount.point.substr(1)).c_str(), &sizes) == 0) {
        item.set("size_in_bytes", static_cast<int64_t>(sizes.f_blocks * sizes.f_frsize));
        item.set("free_space_in_bytes", static_cast<int64_t>(sizes.f_bavail * sizes.f_frsize));
    }
    item.set("writable", ("," + mount.options + ",").find(",rw,") != std::string::npos ? "yes" : "no");
    return item.set("volume_uuid", ValueOf(known, "ID_FS_UUID"));
}

/// "macOS 10.15.7 (19H2)", from the start-up volume.
std::string SystemVersion()
{
    const std::string build = SystemVersionText("ProductBuildVersion").value_or("");
    return CleanLine(SystemVersionText("ProductName").value_or("") + " "
               + SystemVersionText("ProductVersion").value_or(""))
        + (build.empty() ? "" : " (" + build + ")");
}

/// "Full Name (short)".
std::string UserName()
{
    const std::optional<UserRecord> user = RecordOfUser(getuid());
    return user ? CleanLine(user->fullName + " (" + user->name + ")") : "";
}

/// "up 0:11:33:22": days, hours, minutes, seconds.
std::string Uptime(const HostTree& tree)
{
    const std::string text = tree.text("proc/uptime");
    const std::optional<int64_t> seconds = NumberIn(text.substr(0, text.find('.')));
    if (!seconds)
        return "";
    std::array<char, 48> words {};
    std::snprintf(words.data(), words.size(), "up %d:%d:%02d:%02d", static_cast<int>(*seconds / 86400),
        static_cast<int>(*seconds / 3600 % 24), static_cast<int>(*seconds / 60 % 60),
        static_cast<int>(*seconds % 60));
    return words.data();
}

/// Whether the kernel was asked for a system with little more than a shell.
bool IsSafeBoot(const HostTree& tree)
{
    constexpr std::array<const char*, 6> requests { "1", "emergency", "rescue", "single",
        "systemd.unit=emergency.target", "systemd.unit=rescue.target" };
    std::istringstream words(tree.text("proc/cmdline"));
    for (std::string word; words >> word;) {
        if (std::find(requests.begin(), requests.end(), word) != requests.end())
            return true;
    }
    return false;
}

}

Item::List StorageItems(const HostTree& tree)
{
    std::istringstream lines(tree.bytes("proc/self/mountinfo", size_t { 1 } << 20U));
    const BSDNames names(tree);
    std::set<std::string> seen; // a device that is mounted in several places is still one volume
    Item::List items;
    for (std::string line; std::getline(lines, line);) {
        const Mount mount = MountIn(tree, line);
        if (!mount.device.empty() && seen.insert(mount.device).second)
            items.push_back(Volume(tree, mount, names));
    }
    return items;
}

Item::List SoftwareItems(const HostTree& tree)
{
    const std::string kernel = "proc/sys/kernel/";
    Item item("os_overview");
    item.set("os_version", SystemVersion());
    item.set(
        "kernel_version", CleanLine(tree.text(kernel + "ostype") + " " + tree.text(kernel + "osrelease")));
    item.set("boot_mode", IsSafeBoot(tree) ? "safe_boot" : "normal_boot");
    item.set("local_host_name", tree.text(kernel + "hostname"));
    item.set("user_name", UserName());
    item.set("uptime", Uptime(tree));
    return { item };
}

} // namespace profile
