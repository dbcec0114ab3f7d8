#pragma once

#include <string>
#include <vector>

/// What a tool did that was run to its end.
struct ToolRun {
    int status; ///< of its exit, or -1 when it ended otherwise
    std::string out;
    std::string error;
};

/// Runs one of the Mac's tools as programs find it, through its path on a Mac.
ToolRun RunMacTool(const std::string& macPath, const std::vector<std::string>& arguments);
