#pragma once

#include <string>

/// Writes one line to standard error and to the system log. Control characters become "?", so that no name
/// given by a caller can forge a line of its own.
/// @param priority LOG_NOTICE, LOG_WARNING, LOG_ERR … of <syslog.h>.
void Report(int priority, const std::string& text);
