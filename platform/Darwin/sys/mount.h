#pragma once
#pragma GCC system_header // for the next line, which is no standard's

#include <stdint.h>
#include_next <sys/mount.h>
#include <sys/statfs.h>

#define MFSTYPENAMELEN 16
#define MNT_RDONLY 0x00000001

/// A Mac's record of a file system. It goes by a name of its own, since the host has another of the same.
struct mac_statfs {
    uint32_t f_bsize; ///< bytes of the blocks that the next three count
    int32_t f_iosize; ///< bytes that are best moved at once
    uint64_t f_blocks;
    uint64_t f_bfree;
    uint64_t f_bavail; ///< free to users without privileges
    uint64_t f_files;
    uint64_t f_ffree;
    uint32_t f_flags; ///< MNT_RDONLY or 0
    char f_fstypename[MFSTYPENAMELEN]; ///< the host's name of its kind: "ext4"
    char f_mntonname[1024]; ///< folder that it is mounted on, as the host calls it; "" when unknown
    char f_mntfromname[1024]; ///< device, or whatever else it comes from
};

/// @return 0, or -1 with errno as the host's statfs.
int mac_statfs(const char* path, struct mac_statfs* buffer);

#define statfs mac_statfs
