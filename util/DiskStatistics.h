#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <cstdint>

// What the driver of a disk has counted since it started. Two readings with SubtractDiskStatistics() give what happened
// between them.

/// Times are in the driver's units, nanoseconds as a rule.
struct DiskStatisticsRec {
    uint64_t operationsRead;
    uint64_t errorsRead;
    uint64_t bytesRead;
    uint64_t latencyTimeRead;
    uint64_t totalTimeRead;
    uint64_t retriesRead;
    uint64_t operationsWrite;
    uint64_t errorsWrite;
    uint64_t bytesWrite;
    uint64_t latencyTimeWrite;
    uint64_t totalTimeWrite;
    uint64_t retriesWrite;
};

/// The counters of the object or of its nearest ancestor that has any, as the driver publishes them.
/// @return to be released by the caller; null where there are none.
CFDictionaryRef CreateStatisticsForDisk(io_registry_entry_t disk);
CFDictionaryRef CreateStatisticsForDiskWithBSD_Name(const char* bsdName);

/// The same as a record. @param statistics receives them, 0 for what is not counted.
/// @return whether there are any at all.
bool GetStatisticsForDisk(io_registry_entry_t disk, DiskStatisticsRec* statistics);
bool GetStatisticsForDiskWithBSD_Name(const char* bsdName, DiskStatisticsRec* statistics);

/// @param dictionary null, and members that are missing or no numbers, give 0.
void ConvertDictionaryToDiskStatisticsRec(CFDictionaryRef dictionary, DiskStatisticsRec* statistics);

/// @return a dictionary of twelve numbers, to be released by the caller; null for null.
CFDictionaryRef CreateDictionaryFromDiskStatisticsRec(const DiskStatisticsRec* statistics);

/// Subtracts the second from the first, field by field. A counter that has started anew wraps around: compare before, where
/// that matters.
void SubtractDiskStatistics(DiskStatisticsRec* statistics, const DiskStatisticsRec* earlier);
