#include "tools/inspect/Commands.h"
#include "tools/inspect/Media.h"
#include "tools/inspect/Output.h"
#include "tools/inspect/Pace.h"
#include "util/DiskStatistics.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <set>

namespace {

using Clock = std::chrono::steady_clock;

/// What a disk has counted so far.
struct Reading {
    std::string name;
    DiskStatisticsRec counts;
    bool hasTimes; ///< it counts how long it is busy
    Clock::time_point time;
};

constexpr std::array kCounted { &DiskStatisticsRec::operationsRead, &DiskStatisticsRec::bytesRead,
    &DiskStatisticsRec::totalTimeRead, &DiskStatisticsRec::operationsWrite, &DiskStatisticsRec::bytesWrite,
    &DiskStatisticsRec::totalTimeWrite };

bool HasTimes(CFDictionaryRef statistics)
{
    return CFDictionaryContainsKey(statistics, CFSTR("Total Time (Read)"))
        || CFDictionaryContainsKey(statistics, CFSTR("Total Time (Write)"));
}

/// Counts that went back belong to another disk under the same name.
bool IsContinued(const DiskStatisticsRec& now, const DiskStatisticsRec& before)
{
    return std::all_of(kCounted.begin(), kCounted.end(),
        [&](const auto counter) { return now.*counter >= before.*counter; });
}

Field BytesRate(const char* key, const char* title, double bytes)
{
    const Value number = Number(static_cast<uint64_t>(bytes));
    return { key, title, number, SizeText(number) };
}

Record Rates(const Reading& now, const Reading& before)
{
    constexpr double nanoseconds = 1e9;
    DiskStatisticsRec done = now.counts;
    SubtractDiskStatistics(&done, &before.counts);
    const double seconds = std::max(Seconds(now.time - before.time).count(), 1 / nanoseconds);
    const auto rate = [seconds](uint64_t count) { return static_cast<double>(count) / seconds; };
    // Requests that a disk works on at the same time each count.
    const double busy = std::min(100.0, 100 * rate(done.totalTimeRead + done.totalTimeWrite) / nanoseconds);
    return {
        { "name", "Name", now.name },
        { "readsPerSecond", "Reads/s", rate(done.operationsRead) },
        { "writesPerSecond", "Writes/s", rate(done.operationsWrite) },
        BytesRate("bytesReadPerSecond", "Read/s", rate(done.bytesRead)),
        BytesRate("bytesWrittenPerSecond", "Written/s", rate(done.bytesWrite)),
        { "busyPercent", "Busy %", now.hasTimes ? Value(busy) : Value() },
    };
}

/// @param wanted names; none for all disks.
std::vector<Reading> Read(const std::set<std::string>& wanted)
{
    std::vector<Reading> readings;
    for (const Medium& medium : AllMedia()) {
        const bool isWanted = !medium.isPartition && (wanted.empty() || wanted.contains(medium.name));
        const CFRef<CFDictionaryRef> statistics(
            isWanted ? CreateStatisticsForDisk(medium.object.get()) : nullptr);
        if (!statistics)
            continue;
        Reading reading { medium.name, {}, HasTimes(statistics.get()), Clock::now() };
        ConvertDictionaryToDiskStatisticsRec(statistics.get(), &reading.counts);
        readings.push_back(std::move(reading));
    }
    return readings;
}

/// @return what happened on the disks that are in both.
std::vector<Record> Compare(const std::vector<Reading>& now, const std::vector<Reading>& before)
{
    std::vector<Record> rates;
    for (const Reading& reading : now) {
        const auto earlier = std::find_if(before.begin(), before.end(),
            [&reading](const Reading& one) { return one.name == reading.name; });
        if (earlier != before.end() && IsContinued(reading.counts, earlier->counts))
            rates.push_back(Rates(reading, *earlier));
    }
    return rates;
}

/// @return false when it cannot be written, with errno.
bool Write(const std::vector<Record>& rates, bool asJSON)
{
    if (asJSON) {
        WriteJSON(std::cout, rates, "");
    } else {
        WriteTable(std::cout, rates);
        std::cout << '\n';
    }
    return static_cast<bool>(std::cout.flush());
}

/// @return whether all of them were read; the others are named on standard error.
bool AreAllThere(std::set<std::string> wanted, const std::vector<Reading>& readings)
{
    for (const Reading& reading : readings)
        wanted.erase(reading.name);
    for (const std::string& name : wanted)
        std::cerr << "velmora-inspect: no whole disk that counts what it does has the name "
                  << Printable(name) << '\n';
    return wanted.empty();
}

}

ExitStatus WatchDisks(const Request& request)
{
    const std::set<std::string> wanted(request.operands.begin(), request.operands.end());
    Pace pace(*request.interval);
    std::vector<Reading> before = Read(wanted);
    if (!AreAllThere(wanted, before))
        return kNotFound;
    while (pace.wait()) {
        std::vector<Reading> now = Read(wanted);
        if (!Write(Compare(now, before), request.asJSON)) {
            const bool isClosed = errno == EPIPE; // whoever read it has seen enough
            if (!isClosed)
                std::perror("velmora-inspect: standard output");
            return isClosed ? kFound : kNotFound;
        }
        before = std::move(now);
    }
    return kFound;
}
