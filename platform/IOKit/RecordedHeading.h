#pragma once

#include <IOKit/RecordedEntry.h>

#include <string_view>

namespace iokit {

/// Reads an entry's line: "NAME@LOCATION  <class CLASS, id 0x…, registered, matched, active, busy 0 (1 ms), retain 5>", where the
/// location, the number, the state and the time may be missing.
/// @param text after "+-o ". @param entry receives what could be read.
/// @return whether that is all of it.
bool ReadHeading(std::string_view text, RecordedEntry& entry);

}
