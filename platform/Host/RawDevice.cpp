#include "RawDevice.h"

#include "HostPath.h"

#include <cerrno>
#include <fcntl.h>

#if __APPLE__

int HostOpenRawDevice(const char* macPath) { return open(macPath, O_RDONLY | O_CLOEXEC); }

#else

int HostOpenRawDevice(const char* macPath)
{
    const std::string path = HostPath(macPath);
    const int device = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECT);
    return device < 0 && errno == EINVAL ? open(path.c_str(), O_RDONLY | O_CLOEXEC) : device;
}

#endif
