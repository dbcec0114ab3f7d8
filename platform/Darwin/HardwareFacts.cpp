#include "HardwareFacts.h"

#include <Host/HostText.h>

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
    for (const char* file : { "/sys/class/dmi/id/product_name", "/sys/firmware/devicetree/base/model" }) {
        const std::string name = HostLine(file).value_or("");
        if (!name.empty())
            return name;
    }
    return {};
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
    for (int index = 0;; ++index) {
        const std::string folder = "/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index);
        const std::optional<std::string> type = HostLine(folder + "/type");
        if (!type)
            return {};
        const std::optional<std::string> size = HostLine(folder + "/size");
        if (size && *type == kind && HostLine(folder + "/level") == std::to_string(level))
            return SizeInBytes(*size);
    }
}
