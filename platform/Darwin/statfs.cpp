#include <sys/mount.h>

#undef statfs // the host's is meant here

#include <Host/HostMounts.h>
#include <Host/HostTree.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

/// Fills with zeros what the name leaves.
template <size_t Size> void CopyName(char (&destination)[Size], const std::string& name)
{
    std::strncpy(destination, name.c_str(), Size - 1);
}

/// Asked of the folder, since some file systems' files have other devices than their mounts.
bool IsOnDevice(const std::string& folder, dev_t device)
{
    struct stat info = {};
    return stat(folder.c_str(), &info) == 0 && info.st_dev == device;
}

/// Whether a path lies in the folder or is the folder. Both are absolute and without links.
bool IsWithin(const std::string& path, const std::string& folder)
{
    return folder == "/" || path == folder || path.rfind(folder + '/', 0) == 0;
}

/// Adds what the table of mounts tells of the mount that the path lies in: the innermost, and of several on one folder
/// the last, which hides the others.
void AddMount(const char* path, struct mac_statfs& record)
{
    const std::unique_ptr<char, decltype(&free)> real(realpath(path, nullptr), free);
    struct stat info = {};
    if (!real || stat(path, &info) != 0)
        return;
    size_t longest = 0;
    for (const HostMount& mount : HostMountsIn(HostTree().bytes(kHostMountTable, kLongestMountTable))) {
        const size_t length = mount.folder.size();
        if (length < longest || length >= sizeof record.f_mntonname || !IsWithin(real.get(), mount.folder)
            || !IsOnDevice(mount.folder, info.st_dev))
            continue;
        longest = length;
        CopyName(record.f_fstypename, mount.type);
        CopyName(record.f_mntonname, mount.folder);
        CopyName(record.f_mntfromname, mount.source);
    }
}

}

int mac_statfs(const char* path, struct mac_statfs* buffer)
{
    struct statvfs host = {};
    if (statvfs(path, &host) != 0)
        return -1;
    *buffer = {};
    buffer->f_bsize = static_cast<uint32_t>(host.f_frsize); // what the host counts in
    buffer->f_iosize = static_cast<int32_t>(host.f_bsize);
    buffer->f_blocks = host.f_blocks;
    buffer->f_bfree = host.f_bfree;
    buffer->f_bavail = host.f_bavail;
    buffer->f_files = host.f_files;
    buffer->f_ffree = host.f_ffree;
    buffer->f_flags = (host.f_flag & ST_RDONLY) != 0 ? MNT_RDONLY : 0;
    AddMount(path, *buffer);
    return 0;
}
