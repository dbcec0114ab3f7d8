#include "HardwareFacts.h"

#include <Host/Computer.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fnmatch.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

struct Machine {
    const char* name; ///< pattern of the kernel's names
    const char* macName;
};

constexpr std::array kMachines { Machine { "aarch64", "arm64" }, Machine { "i?86", "i386" },
    Machine { "ppc64*", "ppc_64" } };

/// The folder that tells of the caches of the first processor in use; one that is not there where none tells.
std::string FirstCaches(const HostTree& host)
{
    const std::string processors = "sys/devices/system/cpu/";
    for (const std::string& name : host.names(processors)) {
        std::string caches = processors + name + "/cache/";
        if (fnmatch("cpu[0-9]*", name.c_str(), 0) == 0 && host.has(caches))
            return caches;
    }
    return processors + "cpu0/cache/";
}

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
    const auto* const known = std::find_if(kMachines.begin(), kMachines.end(),
        [&names](const Machine& one) { return fnmatch(one.name, names.machine, 0) == 0; });
    return known != kMachines.end() ? known->macName : names.machine;
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

std::optional<uint64_t> CacheSize(const HostTree& host, int level, const std::string& kind)
{
    const std::string caches = FirstCaches(host);
    for (const std::string& name : host.names(caches)) {
        const auto text = [&](const char* file) { return host.text(caches + name + file); };
        const bool isIt = text("/level") == std::to_string(level)
            && (text("/type") == kind || text("/type") == "Unified");
        const std::string size = isIt ? text("/size") : "";
        if (!size.empty())
            return SizeInBytes(size);
    }
    return {};
}
