#include "util/DiskStatistics.h"

#include "util/Disks.h"
#include "util/RegistryProperties.h"

#include <array>

namespace {

struct Counter {
    uint64_t DiskStatisticsRec::*field;
    CFStringRef key;
};

const std::array<Counter, 12>& Counters()
{
    using Rec = DiskStatisticsRec;
    static const std::array<Counter, 12> counters { {
        { &Rec::operationsRead, CFSTR("Operations (Read)") },
        { &Rec::errorsRead, CFSTR("Errors (Read)") },
        { &Rec::bytesRead, CFSTR("Bytes (Read)") },
        { &Rec::latencyTimeRead, CFSTR("Latency Time (Read)") },
        { &Rec::totalTimeRead, CFSTR("Total Time (Read)") },
        { &Rec::retriesRead, CFSTR("Retries (Read)") },
        { &Rec::operationsWrite, CFSTR("Operations (Write)") },
        { &Rec::errorsWrite, CFSTR("Errors (Write)") },
        { &Rec::bytesWrite, CFSTR("Bytes (Write)") },
        { &Rec::latencyTimeWrite, CFSTR("Latency Time (Write)") },
        { &Rec::totalTimeWrite, CFSTR("Total Time (Write)") },
        { &Rec::retriesWrite, CFSTR("Retries (Write)") },
    } };
    return counters;
}

}

CFDictionaryRef CreateStatisticsForDisk(io_registry_entry_t disk)
{
    const CFRef<CFTypeRef> found = SearchedProperty(disk, CFSTR("Statistics"));
    const auto statistics = CFDynamicCast<CFDictionaryRef>(found.get(), CFDictionaryGetTypeID());
    return CFRef<CFDictionaryRef>::Retained(statistics).release();
}

CFDictionaryRef CreateStatisticsForDiskWithBSD_Name(const char* bsdName)
{
    return CreateStatisticsForDisk(IORef(CreateIOKitObjectWithBSDName(bsdName)).get());
}

bool GetStatisticsForDisk(io_registry_entry_t disk, DiskStatisticsRec* statistics)
{
    const CFRef<CFDictionaryRef> found(CreateStatisticsForDisk(disk));
    ConvertDictionaryToDiskStatisticsRec(found.get(), statistics);
    return found && statistics != nullptr;
}

bool GetStatisticsForDiskWithBSD_Name(const char* bsdName, DiskStatisticsRec* statistics)
{
    return GetStatisticsForDisk(IORef(CreateIOKitObjectWithBSDName(bsdName)).get(), statistics);
}

void ConvertDictionaryToDiskStatisticsRec(CFDictionaryRef dictionary, DiskStatisticsRec* statistics)
{
    if (statistics == nullptr)
        return;
    for (const auto& [field, key] : Counters()) {
        const CFTypeRef value = dictionary != nullptr ? CFDictionaryGetValue(dictionary, key) : nullptr;
        statistics->*field = static_cast<uint64_t>(NumberFrom(value).value_or(0));
    }
}

CFDictionaryRef CreateDictionaryFromDiskStatisticsRec(const DiskStatisticsRec* statistics)
{
    if (statistics == nullptr)
        return nullptr;
    std::array<CFRef<CFNumberRef>, 12> numbers;
    std::array<const void*, 12> keys {};
    std::array<const void*, 12> values {};
    for (size_t i = 0; i < numbers.size(); ++i) {
        const auto& [field, key] = Counters()[i];
        numbers[i] = CFRef<CFNumberRef>(
            CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &(statistics->*field)));
        keys[i] = key;
        values[i] = numbers[i].get();
    }
    return CFDictionaryCreate(kCFAllocatorDefault, keys.data(), values.data(),
        static_cast<CFIndex>(keys.size()), &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
}

void SubtractDiskStatistics(DiskStatisticsRec* statistics, const DiskStatisticsRec* earlier)
{
    if (statistics == nullptr || earlier == nullptr)
        return;
    for (const auto& [field, key] : Counters())
        statistics->*field -= earlier->*field;
}
