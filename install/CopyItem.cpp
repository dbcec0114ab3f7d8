#include "install/CopyItem.h"

#include <cerrno>
#include <copyfile.h>
#include <cstdio>
#include <ftw.h>
#include <sys/stat.h>

namespace {

std::string StagingPath(const std::string& path)
{
    const size_t name = path.rfind('/') + 1;
    return path.substr(0, name) + "." + path.substr(name) + ".partial";
}

/// A folder that was copied as one that its owner may not change can be emptied only after this.
int UnlockFolder(const char* path, const struct stat*, int type, struct FTW*)
{
    return type == FTW_D ? chmod(path, 0700) : 0;
}

int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) { return remove(path); }

/// Removes a folder with everything in it, or a file or link; nothing there is no error.
int RemoveTree(const std::string& path)
{
    constexpr int kOpenFolders = 64;
    const bool removed = nftw(path.c_str(), UnlockFolder, kOpenFolders, FTW_PHYS) == 0
        && nftw(path.c_str(), RemoveEntry, kOpenFolders, FTW_DEPTH | FTW_PHYS) == 0;
    return removed || errno == ENOENT ? 0 : errno;
}

}

int CopyItem(const std::string& from, const std::string& to)
{
    struct stat occupied { };
    if (lstat(to.c_str(), &occupied) == 0)
        return EEXIST;
    const std::string staging = StagingPath(to);
    if (const int error = RemoveTree(staging))
        return error;

    constexpr copyfile_flags_t kFlags
        = COPYFILE_ALL | COPYFILE_RECURSIVE | COPYFILE_EXCL | COPYFILE_NOFOLLOW | COPYFILE_CLONE;
    if (copyfile(from.c_str(), staging.c_str(), nullptr, kFlags) == 0
        && rename(staging.c_str(), to.c_str()) == 0)
        return 0;
    const int error = errno;
    RemoveTree(staging);
    return error;
}
