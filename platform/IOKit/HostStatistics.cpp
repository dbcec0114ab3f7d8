#include <IOKit/HostStatistics.h>

#include <IOKit/Properties.h>

#include <array>
#include <sstream>
#include <vector>

namespace iokit {

namespace {

constexpr uint64_t kSectorSize = 512;
constexpr uint64_t kNanosecondsPerTick = 1000000;

/// One of the counters that the kernel keeps of each disk, by its place in the line.
struct Counter {
    const char* key;
    size_t place;
    uint64_t unit;
};

constexpr std::array kCounters {
    Counter { "Operations (Read)", 0, 1 },
    Counter { "Bytes (Read)", 2, kSectorSize },
    Counter { "Total Time (Read)", 3, kNanosecondsPerTick },
    Counter { "Operations (Write)", 4, 1 },
    Counter { "Bytes (Write)", 6, kSectorSize },
    Counter { "Total Time (Write)", 7, kNanosecondsPerTick },
};

constexpr const char* kKey = "Statistics";

/// @param line of the kernel's.
Properties StatisticsIn(const std::string& line)
{
    std::istringstream words(line);
    std::vector<uint64_t> counts;
    for (uint64_t count = 0; words >> count;)
        counts.push_back(count);
    Properties statistics;
    for (const Counter& counter : kCounters) {
        if (counter.place < counts.size())
            statistics.number(counter.key, counts[counter.place] * counter.unit);
    }
    return statistics;
}

}

void KeepStatistics(Entry& driver, const BlockDevice& disk)
{
    driver.properties = Properties().dictionary(kKey, StatisticsIn(disk.text("stat"))).take();
    driver.live
        = { kKey, [host = disk.host(), file = disk.folder() + "/stat"] {
               const std::string line = host.text(file);
               return cf::Owned<CFTypeRef>(line.empty() ? nullptr : StatisticsIn(line).take().release());
           } };
}

}
