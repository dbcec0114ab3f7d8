#include <DiskArbitration/MountTable.h>

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace da {

namespace {

bool Covers(const HostMount& mount, const std::string& folder)
{
    return mount.folder == "/" || folder == mount.folder || folder.starts_with(mount.folder + '/');
}

bool LiesIn(const HostMounts& mounts, const HostMount& mount, const HostMount& above)
{
    const HostMount* one = &mount;
    for (size_t steps = mounts.size(); steps > 0; --steps) { // a table is no proof of a tree
        const auto parent = std::find_if(
            mounts.begin(), mounts.end(), [one](const HostMount& other) { return other.id == one->parent; });
        if (parent == mounts.end())
            return false;
        one = &*parent;
        if (one->id == above.id)
            return true;
    }
    return false;
}

/// Whether its folder's path leads elsewhere, to something mounted on it or above.
bool IsHidden(const HostMounts& mounts, const HostMount& mount)
{
    return mount.folder.ends_with("//deleted")
        || std::any_of(mounts.begin(), mounts.end(), [&](const HostMount& other) {
               return other.id != mount.id && Covers(other, mount.folder) && !LiesIn(mounts, mount, other);
           });
}

}

MountTable::MountTable(HostTree host)
    : fHost(std::move(host))
{
}

const HostMount* MountTable::find(dev_t device, const std::string& deviceFile)
{
    if (!fFile || isOther()) {
        if (!fFile) // before reading, so that no change is missed
            fFile = Descriptor(open(fHost.path(kHostMountTable).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        fMounts = HostMountsIn(fHost.bytes(kHostMountTable, kLongestMountTable));
    }
    const HostMount* found = nullptr;
    for (const HostMount& mount : fMounts) {
        if (!isOf(mount, device, deviceFile) || IsHidden(fMounts, mount))
            continue;
        if (mount.root == "/")
            return &mount;
        if (found == nullptr && major(mount.device) == 0)
            found = &mount;
    }
    return found;
}

bool MountTable::isOther() const
{
    // The kernel's table is never ready for writing, and has something urgent when it was changed. Any other file is always
    // ready, and cannot tell.
    pollfd table { fFile.get(), POLLPRI | POLLOUT, 0 };
    return poll(&table, 1, 0) > 0;
}

bool MountTable::isOf(const HostMount& mount, dev_t device, const std::string& deviceFile) const
{
    if (mount.device == device)
        return true;
    if (major(mount.device) != 0 || !mount.source.starts_with("/dev/"))
        return false;
    struct stat source { };
    return mount.source == deviceFile
        || (stat(fHost.path(mount.source.substr(1)).c_str(), &source) == 0 && S_ISBLK(source.st_mode)
            && source.st_rdev == device);
}

}
