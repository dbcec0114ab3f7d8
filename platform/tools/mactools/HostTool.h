#pragma once

#include "Tool.h"

/// A program of the host's that does a tool's work.
struct HostTool {
    const char* name; ///< "mkfs.vfat"
    const char* package; ///< the host's package that has it
};

enum class HostOutput { Shown, Hidden };

/// Runs a program of the host's system folders to its end, with nothing to read, in the C locale for UTF-8, and with no
/// other part of the caller's environment. What it writes to standard error is shown in any case.
/// @param tool in whose name is complained. @param arguments without argument zero. @param output what becomes of its
/// standard output.
/// @return its exit status; 1 after a complaint where it is not on the host, cannot be run or is killed.
int RunHostTool(const char* tool, const HostTool& program, const Arguments& arguments,
    HostOutput output = HostOutput::Shown);
