#include <sys/mount.h>

#undef statfs // the host's is meant here

#include <cerrno>
#include <cstring>
#include <memory>
#include <mntent.h>
#include <string>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

/// Fills with zeros what the name leaves.
template <size_t Size> void CopyName(char (&destination)[Size], const char* name)
{
    std::strncpy(destination, name, Size - 1);
}

bool IsOnDevice(const char* folder, dev_t device)
{
    struct stat info = {};
    return stat(folder, &info) == 0 && info.st_dev == device;
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
    const std::unique_ptr<FILE, int (*)(FILE*)> table(setmntent("/proc/self/mounts", "r"), endmntent);
    struct stat info = {};
    if (!real || !table || stat(path, &info) != 0)
        return;
    size_t longest = 0;
    while (const mntent* const mount = getmntent(table.get())) {
        const size_t length = std::strlen(mount->mnt_dir);
        if (length < longest || length >= sizeof record.f_mntonname || !IsWithin(real.get(), mount->mnt_dir)
            || !IsOnDevice(mount->mnt_dir, info.st_dev))
            continue;
        longest = length;
        CopyName(record.f_fstypename, mount->mnt_type);
        CopyName(record.f_mntonname, mount->mnt_dir);
        CopyName(record.f_mntfromname, mount->mnt_fsname);
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
