#pragma once

#include <CoreFoundation/CFBase.h>

#include <iosfwd>
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

/// Writes the usage to standard output where help is all that is asked for: --help, -help or -h. @return whether it is.
bool AnswersHelp(const Arguments& arguments, const char* usage);

/// Writes a property list in XML. @return 0; the status of a tool that failed when that cannot be done.
int WritePropertyList(const char* tool, CFTypeRef list, std::ostream& out);
