#include "HardwareFacts.h"

#include <Host/Computer.h>

#include <cstdlib>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

/// "32K", as sysfs writes sizes of caches.
uint64_t SizeInBytes(const std::string& text)
{
    char* unit = nullptr;
    const uint64_t number = std::strtoull(text.c_str(), &unit, 10);
    switch (*unit) {
    case 'K':
        return number << 10;
    case 'M':
        return number << 20;
    default:
        return number;
    }
}

}

std::optional<std::string> MachineName()
{
    utsname names {};
    if (uname(&names) != 0)
        return {};
    const std::string name = names.machine;
    return name == "aarch64" ? "arm64" : name;
}

std::optional<std::string> ModelName()
{
    const std::string name = ComputerModel(HostTree());
    return name.empty() ? std::nullopt : std::optional(name);
}

std::optional<uint64_t> ProcessorCount()
{
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? std::optional<uint64_t>(count) : std::nullopt;
}

std::optional<uint64_t> MemorySize()
{
    struct sysinfo info = {};
    return sysinfo(&info) == 0 ? std::optional<uint64_t>(uint64_t { info.totalram } * info.mem_unit)
                               : std::nullopt;
}

std::optional<uint64_t> CacheSize(int level, const char* kind)
{
    const HostTree host;
    const std::string caches = "sys/devices/system/cpu/cpu0/cache/";
    for (const std::string& name : host.names(caches)) {
        const std::string cache = caches + name;
        const std::string size = host.text(cache + "/size");
        if (!size.empty() && host.text(cache + "/type") == kind && host.number(cache + "/level") == level)
            return SizeInBytes(size);
    }
    return {};
}
