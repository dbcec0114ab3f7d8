#include "memory/VmStat.h"

#include <array>
#include <iomanip>
#include <iostream>
#include <string_view>
#include <sysexits.h>
#include <unistd.h>

namespace {

constexpr const char* kName = "vm_stat";
constexpr const char* kUsage = "usage: vm_stat\n";

enum class Unit { Pages, Kilobytes };

struct Statistic {
    const char* label;
    Unit unit; ///< of what the host counts
    std::array<std::string_view, 4> counters; ///< what it is the sum of
};

constexpr auto kStatistics = std::to_array<Statistic>({
    { "Pages free:", Unit::Pages, { "nr_free_pages" } },
    { "Pages active:", Unit::Pages, { "nr_active_anon", "nr_active_file" } },
    { "Pages inactive:", Unit::Pages, { "nr_inactive_anon", "nr_inactive_file" } },
    { "Pages wired down:", Unit::Kilobytes, { "Unevictable", "SUnreclaim", "KernelStack", "PageTables" } },
    { "\"Translation faults\":", Unit::Pages, { "pgfault" } },
    { "Pages reactivated:", Unit::Pages, { "pgactivate" } },
    { "Pages purged:", Unit::Pages, { "pglazyfreed" } },
    { "File-backed pages:", Unit::Pages, { "nr_active_file", "nr_inactive_file" } },
    { "Anonymous pages:", Unit::Pages, { "nr_active_anon", "nr_inactive_anon" } },
    { "Pages stored in compressor:", Unit::Kilobytes, { "Zswapped" } },
    { "Pages occupied by compressor:", Unit::Kilobytes, { "Zswap" } },
    { "Decompressions:", Unit::Pages, { "zswpin" } },
    { "Compressions:", Unit::Pages, { "zswpout" } },
    { "Pageins:", Unit::Kilobytes, { "pgpgin" } },
    { "Pageouts:", Unit::Kilobytes, { "pgpgout" } },
    { "Swapins:", Unit::Pages, { "pswpin" } },
    { "Swapouts:", Unit::Pages, { "pswpout" } },
});

/// Both of the host's lists, whose names differ.
TextPairs CountersOf(const HostTree& host)
{
    TextPairs counters = PairsOf(host.bytes("proc/vmstat"), ' ');
    for (const auto& [name, value] : PairsOf(host.bytes("proc/meminfo"), ':'))
        counters.emplace(name, value.substr(0, value.find(" kB")));
    return counters;
}

/// @return nothing where a part of it is not counted.
std::optional<int64_t> SumOf(const Statistic& statistic, const TextPairs& counters)
{
    int64_t sum = 0;
    for (const std::string_view name : statistic.counters) {
        if (name.empty())
            break;
        const std::optional<int64_t> count = NumberIn(ValueOf(counters, std::string(name)));
        if (!count)
            return {};
        sum += *count;
    }
    return sum;
}

}

int VmStat(const Arguments& arguments)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    if (!arguments.empty()) {
        std::cerr << kUsage;
        return EX_USAGE;
    }
    return WriteMemoryStatistics(HostTree(), static_cast<uint64_t>(sysconf(_SC_PAGESIZE)), std::cout);
}

int WriteMemoryStatistics(const HostTree& host, uint64_t pageSize, std::ostream& out)
{
    const TextPairs counters = CountersOf(host);
    if (counters.empty())
        return Complain(kName, "the host tells nothing of its memory");
    const auto kilobytesPerPage = static_cast<int64_t>(pageSize / 1024);
    out << "Mach Virtual Memory Statistics: (page size of " << pageSize << " bytes)\n";
    for (const Statistic& statistic : kStatistics) {
        if (const std::optional<int64_t> sum = SumOf(statistic, counters))
            out << std::left << std::setw(30) << statistic.label << ' ' << std::right << std::setw(16)
                << (statistic.unit == Unit::Kilobytes ? *sum / kilobytesPerPage : *sum) << ".\n";
    }
    return 0;
}
