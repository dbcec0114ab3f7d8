#pragma once

#include <IOKit/Recording.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace iokit {

/// An entry as a recording tells of it.
struct RecordedEntry {
    static constexpr size_t kNone = SIZE_MAX;

    size_t parent = kNone; ///< its place in the list; kNone for the top of a tree
    std::string lineage; ///< of its class, "IOMedia" or "IOMedia:IOStorage:…"; "" where it is not known
    std::string name; ///< "" where it is not known
    std::string location;
    std::optional<uint64_t> id;
    std::optional<uint32_t> retainCount;
    std::optional<ServiceState> service;
    bool isWhole = true; ///< what is not known was not told, as opposed to not readable
    cf::Owned<CFMutableDictionaryRef> properties; ///< null for none
};

/// Puts the registry together. An entry that has the number of an earlier one is that one below a further parent; what lies
/// below it is not looked at again. "Root" takes the place of the registry's own where it is the first.
/// @param entries parents before their children, with all that lies below one before what lies beside it.
/// @param unreadable places so far. @return none without entries.
std::optional<Recording> MakeRecording(std::vector<RecordedEntry> entries, size_t unreadable);

}
