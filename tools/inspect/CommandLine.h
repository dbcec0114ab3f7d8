#pragma once

#include "tools/inspect/Commands.h"
#include <string>
#include <vector>

struct CommandLine {
    const Command* command = nullptr; ///< null where there is a problem, and for --help
    Request request {};
    bool wantsHelp = false;
    std::string problem {}; ///< why it is not understood; "" for none
};

/// @param arguments without argument zero. Options may stand anywhere before "--".
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);
