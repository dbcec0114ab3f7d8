#pragma once

#include <IOKit/NvramFirmware.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a PC's firmware offers to start, one of its variables "Boot0000" and so on.
struct StartEntry {
    bool isActive; ///< the firmware tries it
    std::string
        partition; ///< the UUID, in capitals, of the partition with the program to start; "" where that is not told
};

/// @param bytes the variable's value. @return nothing for what is none.
std::optional<StartEntry> StartEntryIn(std::string_view bytes);

/// Whether the firmware starts from one of these partitions: that is where the first of its active entries leads.
/// @param firmware its global variables, here and below. @param partitions UUIDs in capitals.
bool StartsFrom(const iokit::EfiVariables& firmware, const std::vector<std::string>& partitions);

/// Lets the firmware start from a partition: the first entry that leads there goes to the front, all others stay in their order.
/// @param partitions the first that an active entry leads to counts.
/// @return 0; ENOENT where none does; EBADMSG where the order is damaged; any other reason why it cannot be changed. Nothing
/// has been changed then.
int StartFrom(const iokit::EfiVariables& firmware, const std::vector<std::string>& partitions);
