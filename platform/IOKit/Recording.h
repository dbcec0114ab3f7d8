#pragma once

#include <IOKit/Registry.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace iokit {

/// The registry of another computer, as "ioreg" printed it there.
struct Recording {
    Registry registry;
    size_t unreadable; ///< places that could not be read; what stood there is left out
};

/// Reads the text that "ioreg -l" prints, or the XML of "ioreg -a", with whatever further options: subtrees come below a root
/// made for them. What stands before the first entry is skipped. Damaged and cut recordings give what is left of them, and
/// nothing that may have lost its end. Numbers are CFNumbers of 64 bits, sets are arrays.
/// @param bytes of any encoding; what is not UTF-8 becomes U+FFFD, except in data.
/// @return none where there is no entry.
std::optional<Recording> ReadRecording(std::string_view bytes);

/// The same for a file of up to 256 MB.
/// @param problem receives, where there is no answer, why in one line, without the path.
std::optional<Recording> ReadRecordingFile(const std::string& path, std::string& problem);

}
