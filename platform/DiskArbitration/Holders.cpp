#include <DiskArbitration/Holders.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace da {

namespace {

constexpr size_t kLongestMap = size_t { 16 } << 20U; ///< bytes; of a process that maps very many files

/// Where a file lies. The numbers of files' devices tell volumes apart, also those that share a disk; the mount tells how
/// it was come by.
struct Place {
    dev_t device;
    std::optional<uint64_t> mount; ///< older kernels do not tell
};

std::optional<Place> PlaceOf(const std::string& path)
{
    struct statx status { };
    if (statx(AT_FDCWD, path.c_str(), AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC, STATX_MNT_ID, &status) != 0)
        return {};
    const bool hasMount = (status.stx_mask & STATX_MNT_ID) != 0;
    return Place { makedev(status.stx_dev_major, status.stx_dev_minor),
        hasMount ? std::optional<uint64_t>(status.stx_mnt_id) : std::nullopt };
}

/// What a process has of a volume.
enum class Use { none, elsewhere, here };

class Search {
public:
    Search(const HostTree& host, const HostMount& mount, Place volume)
        : fHost(host)
        , fMount(mount)
        , fVolume(volume)
    {
    }

    /// @param folder of the process in the table.
    Use useBy(const std::string& folder) const
    {
        Use use = std::max({ useOf(folder + "/cwd"), useOf(folder + "/root"), useOf(folder + "/exe") });
        const std::string files = folder + "/fd/";
        for (const std::string& file : fHost.names(files)) {
            if (use == Use::here)
                break;
            use = std::max(use, useOf(files + file));
        }
        return use == Use::none && isMappedBy(folder) ? Use::elsewhere : use;
    }

private:
    Use useOf(const std::string& file) const
    {
        const std::optional<Place> place = PlaceOf(fHost.path(file));
        if (!place)
            return Use::none;
        if (place->mount && place->mount == fVolume.mount)
            return Use::here;
        return place->device == fVolume.device ? Use::elsewhere : Use::none;
    }

    /// Files that are not open any more may still be mapped. The table of them tells the disk that the kernel's table of
    /// mounts tells, even where files have devices of their own.
    bool isMappedBy(const std::string& folder) const
    {
        std::array<char, 32> device {};
        std::snprintf(
            device.data(), device.size(), " %02x:%02x ", major(fMount.device), minor(fMount.device));
        return fHost.bytes(folder + "/maps", kLongestMap).find(device.data()) != std::string::npos;
    }

    const HostTree& fHost;
    const HostMount& fMount;
    Place fVolume;
};

}

pid_t HolderOf(const HostTree& host, const HostMount& mount)
{
    const auto volume = PlaceOf(host.path(mount.folder.substr(1)));
    if (!volume)
        return 0;
    const Search search(host, mount, *volume);
    pid_t holder = 0;
    auto best = std::pair(false, Use::none); // somebody else, and how much they use it
    for (const std::string& name : host.names("proc")) {
        const auto process = static_cast<pid_t>(NumberIn(name).value_or(0));
        const Use use = process > 0 ? search.useBy("proc/" + name) : Use::none;
        const auto found = std::pair(process != getpid(), use);
        if (use == Use::none || found <= best)
            continue;
        holder = process;
        best = found;
        if (best == std::pair(true, Use::here))
            break;
    }
    return holder;
}

}
