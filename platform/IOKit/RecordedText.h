#pragma once

#include <IOKit/Recording.h>

#include <optional>
#include <string_view>

namespace iokit {

/// Reads a recording in the form of "ioreg -l".
std::optional<Recording> ReadRegistryText(std::string_view bytes);

}
