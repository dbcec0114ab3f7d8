#pragma once

#include <optional>
#include <string>

/// A text of the start-up volume's SystemVersion.plist; nothing where it is missing or damaged.
std::optional<std::string> SystemVersionText(const char* key);
