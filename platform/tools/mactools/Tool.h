#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Arguments = std::vector<std::string>; ///< of a command, without argument zero

/// A Mac's command-line tool. Writes its answer to standard output and returns its exit status; what went wrong goes
/// through Complain().
struct Tool {
    const char* name;
    int (*run)(const Arguments& arguments);
};

/// @return the tool of that name; null when there is none.
const Tool* ToolNamed(const std::string& name);

/// One line on standard error, "name: text". @return 1, the status of a tool that failed.
int Complain(const char* tool, const std::string& text);
