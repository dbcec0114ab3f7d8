#include "util/VolumeSpace.h"

#include "util/ChildProcess.h"
#include "util/Volumes.h"

#include <Host/HostPath.h>
#include <sys/fsctl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

/// HFS's request to be resized, which carries a 64-bit size.
constexpr unsigned long kResizeVolume = 0x80086802;

void Store(uint64_t* output, uint64_t value)
{
    if (output != nullptr)
        *output = value;
}

}

bool GetVolumeTotalAndFreeBytes(const char* path, uint64_t* total, uint64_t* free, uint64_t* available)
{
    struct statfs info = {};
    const bool isKnown = path != nullptr && statfs(HostPath(path).c_str(), &info) == 0;
    const uint64_t blockSize = isKnown ? static_cast<uint32_t>(info.f_bsize) : 0;
    Store(total, blockSize * info.f_blocks);
    Store(free, blockSize * info.f_bfree);
    Store(available, blockSize * info.f_bavail);
    return isKnown;
}

OSStatus ResizeVolume(const char* path, uint64_t size)
{
    if (path == nullptr)
        return nsvErr;
    const bool existed = VolumeExistsAtPathname(path);
    const std::string hostPath = HostPath(path);
    const ChildEnd end = RunInChild([&] {
        (void)!setuid(0); // the file system itself refuses whoever has no right
        fsctl(hostPath.c_str(), kResizeVolume, &size, 0);
    });
    if (!end.wasForked)
        return paramErr;
    return existed ? OSStatus { noErr } : nsvErr;
}
