#pragma once

#include "tools/inspect/Record.h"
#include <IOKit/IOKitLib.h>
#include <algorithm>
#include <array>

/// A code's name, for people and programs.
struct Word {
    uint32_t code;
    const char* word;
};

/// @return none for a code that has no name.
template <size_t Count> Value Worded(const std::array<Word, Count>& words, uint32_t code)
{
    const auto* const known
        = std::find_if(words.begin(), words.end(), [code](const Word& word) { return word.code == code; });
    return known != words.end() ? Value(known->word) : Value();
}

// Partitions and volumes in words, by their media objects.

/// What a disk's partitions are for. @param disk medium of a whole disk.
Value DiskPartitionWord(io_registry_entry_t disk);

/// What a partition is for: the word for its GUID, or the name that other tables have.
Value PartitionWord(io_registry_entry_t partition);

/// Whether what a medium is for lets a volume be expected on it.
bool IsMeantForVolume(io_registry_entry_t media);

/// The role of an APFS volume; none for other media.
Value APFSRoleWord(io_registry_entry_t media);
