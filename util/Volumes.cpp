#include "util/Volumes.h"

#include <Host/HostPath.h>
#include <sys/mount.h>

bool VolumeExistsAtPathname(const char* path)
{
    if (path == nullptr)
        return false;
    // The start-up volume is mounted on "/", wherever this host keeps it.
    const std::string hostPath = HostPath(path);
    struct statfs info = {};
    return hostPath == HostPath("/")
        || (statfs(hostPath.c_str(), &info) == 0 && hostPath == info.f_mntonname);
}
