#pragma once

#include <string>

namespace iokit {

/// A kind of partition table, under the names that a Mac has for it.
struct PartitionScheme {
    const char* className;
    const char* content; ///< of a disk that has such a table
};

/// @param type as udev names it: "gpt", "dos", "mac"; of another or unknown table the scheme is one with no more than
/// what all have in common.
const PartitionScheme& PartitionSchemeOfType(const std::string& type);

/// @return the UUID in capitals, as a Mac writes it; "" where the text is none.
std::string UUIDText(const std::string& text);

/// The content that a Mac gives a partition.
/// @param type as udev has it from the table: a GUID, a number such as "0xc", or a name of Apple's. @return the GUID in
/// capitals, the name of the number, or, where it has none, the number; the name itself.
std::string PartitionContent(const std::string& type);

/// Whether the partition is only a frame around others, which a Mac does not count as one. @param type as above.
bool IsPartitionFrame(const std::string& type);

}
