#pragma once

#include "tools/inspect/Record.h"
#include <string>
#include <vector>

/// What a command found.
struct Findings {
    std::vector<Record> records {};
    std::vector<std::string> problems {}; ///< a line each: what was asked for and is not there
};

struct Command {
    const char* name;
    const char* operands; ///< for the usage line
    const char* help; ///< lines for --help, without a line end after the last
    bool isTable; ///< for people: a table, else paragraphs
    Findings (*find)(const std::vector<std::string>& operands);
};

/// @return null for an unknown name.
const Command* CommandNamed(const std::string& name);

/// The text of --help.
std::string UsageText();

/// The running processes, or those of these names.
Findings FindProcesses(const std::vector<std::string>& names);

/// Files, folders, bundles and volumes by their paths; without any, the folders that every Mac has.
Findings FindFiles(const std::vector<std::string>& paths);
