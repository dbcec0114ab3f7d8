#include "volume/TargetDevice.h"

#include "Tool.h"

#include <Host/HostPath.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sstream>
#include <string_view>
#include <sys/sysmacros.h>
#include <vector>

namespace {

constexpr size_t kLongestName = 31; // bytes of a BSD name

/// Takes a prefix and the digits after it off the start. @return whether they were there.
bool TakeNumber(std::string_view& text, std::string_view prefix)
{
    if (!text.starts_with(prefix))
        return false;
    const size_t end = std::min(text.find_first_not_of("0123456789", prefix.size()), text.size());
    const bool hasDigits = end > prefix.size();
    text.remove_prefix(end);
    return hasDigits;
}

bool IsBSDName(std::string_view name)
{
    const bool isShort = name.size() <= kLongestName;
    bool isName = TakeNumber(name, name.starts_with('r') ? "rdisk" : "disk");
    while (isName && !name.empty())
        isName = TakeNumber(name, "s");
    return isName && isShort;
}

/// @return the path of the target as a Mac has it; "" for a name that is none.
std::string MacPathOf(const std::string& name)
{
    if (IsBSDName(name))
        return "/dev/" + name;
    const bool isOption = name.starts_with('-');
    return isOption || name.find('/') == std::string::npos ? "" : name;
}

/// @return without links; "" with errno.
std::string RealPath(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : "";
}

using IsThis = std::function<bool(const struct stat&)>;

bool LeadsTo(const std::string& path, const IsThis& isThis)
{
    struct stat info = {};
    return path.starts_with('/') && stat(path.c_str(), &info) == 0 && isThis(info);
}

/// What can be in use of a target: itself and, of a disk, its partitions.
class Parts {
public:
    Parts(const TargetDevice& target, const HostTree& host)
        : fInfo(target.info)
    {
        if (!target.isDevice())
            return;
        fDevices.push_back(numbers(fInfo.st_rdev));
        const std::string folder = "sys/dev/block/" + fDevices.front() + '/';
        for (const std::string& name : host.names(folder)) {
            if (host.has(folder + name + "/partition"))
                fDevices.push_back(host.text(folder + name + "/dev"));
        }
    }

    bool haveDevice(dev_t device) const
    {
        return std::find(fDevices.begin(), fDevices.end(), numbers(device)) != fDevices.end();
    }
    bool haveFile(const struct stat& file) const
    {
        return S_ISBLK(file.st_mode) ? haveDevice(file.st_rdev)
                                     : file.st_dev == fInfo.st_dev && file.st_ino == fInfo.st_ino;
    }

private:
    static std::string numbers(dev_t device)
    {
        return std::to_string(major(device)) + ':' + std::to_string(minor(device));
    }

    struct stat fInfo;
    std::vector<std::string> fDevices {}; ///< "8:1"
};

/// @return in words who uses them; "" for nobody who is known.
std::string UserOf(const Parts& parts, const HostTree& host)
{
    const IsThis isThis = [&parts](const struct stat& file) { return parts.haveFile(file); };
    for (const HostMount& mount : CurrentMounts(host)) {
        if (parts.haveDevice(mount.device) || LeadsTo(mount.source, isThis))
            return "mounted on " + mount.folder;
    }
    std::istringstream swaps(host.bytes("proc/swaps"));
    for (std::string line; std::getline(swaps, line);) {
        if (LeadsTo(Unescaped(line.substr(0, line.find_first_of(" \t"))), isThis))
            return "swap space";
    }
    for (const std::string& name : host.names("sys/block")) {
        if (LeadsTo(host.text("sys/block/" + name + "/loop/backing_file"), isThis))
            return "attached as " + name;
    }
    return {};
}

}

std::optional<TargetDevice> FindTarget(const char* tool, const std::string& name)
{
    const std::string macPath = MacPathOf(name);
    if (macPath.empty())
        return Complain(tool, name + ": not the name of a disk"), std::nullopt;
    TargetDevice target { RealPath(HostPath(macPath)), {} };
    if (target.path.empty() || stat(target.path.c_str(), &target.info) != 0)
        return Complain(tool, name + ": " + std::strerror(errno)), std::nullopt;
    if (!target.isDevice() && !S_ISREG(target.info.st_mode))
        return Complain(tool, name + ": neither a disk nor an image of one"), std::nullopt;
    return target;
}

Descriptor OpenUnused(
    const char* tool, const std::string& name, const TargetDevice& target, const HostTree& host)
{
    const std::string user = UserOf(Parts(target, host), host);
    if (!user.empty())
        return Complain(tool, name + " is in use: " + user), Descriptor();
    const int exclusive = target.isDevice() ? O_EXCL : 0;
    Descriptor file(open(target.path.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY | exclusive));
    if (!file)
        Complain(tool, name + ": " + std::strerror(errno));
    return file;
}

HostMounts CurrentMounts(const HostTree& host)
{
    return HostMountsIn(host.bytes(kHostMountTable, kLongestMountTable));
}

std::optional<HostMount> MountOn(const std::string& folder)
{
    const std::string real = RealPath(folder);
    const HostMounts mounts = CurrentMounts();
    const auto mount = std::find_if(
        mounts.rbegin(), mounts.rend(), [&real](const HostMount& one) { return one.folder == real; });
    return mount != mounts.rend() ? std::optional(*mount) : std::nullopt;
}
