#pragma once

#include <cstddef>
#include <optional>
#include <string>

// Small files of the host, most of which its kernel makes up as they are read.

/// @param limit bytes. @return what the file holds; nothing where it cannot be read or holds more. Never waits.
std::optional<std::string> HostText(const std::string& file, size_t limit = 65536);

/// Its first line, or all up to the first zero byte, without trailing blanks.
std::optional<std::string> HostLine(const std::string& file);
