#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// A small file of the host's, most of which its kernel makes up as they are read.
/// @param limit bytes. @return what the file holds; nothing where it cannot be read or holds more. Never waits.
std::optional<std::string> HostText(const std::string& file, size_t limit = 65536);
