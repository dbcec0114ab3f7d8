#pragma once

#include <string>
#include <string_view>

/// The text with "?" for each control character, U+0080 to U+009F included; the same text when it has none.
std::string WithoutControlCharacters(std::string_view utf8);

/// Writes one line to standard error and to the system log, without control characters, so that no name given
/// by a caller can forge a line of its own or command a terminal.
/// @param priority LOG_NOTICE, LOG_WARNING, LOG_ERR … of <syslog.h>.
void Report(int priority, const std::string& text);
