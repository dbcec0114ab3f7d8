#pragma once

#include <IOKit/Recording.h>

#include <optional>
#include <string_view>

namespace iokit {

/// Reads a recording in the form of "ioreg -a": a dictionary for each entry, with those below it in an array.
/// @param bytes the XML from its first tag on.
std::optional<Recording> ReadRegistryArchive(std::string_view bytes);

}
