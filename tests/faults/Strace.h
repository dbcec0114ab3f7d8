#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// One system call of a program: the `ordinal`-th, from 1, of that name.
struct SystemCall {
    std::string name;
    size_t ordinal;
    bool changes; ///< whether it changes what is on the disk
};

/// The command that runs a program and writes its file-system calls, not those of its children, to a file.
std::string TraceCommand(const std::filesystem::path& output);

/// The calls in such a file that may fail, from the first on that names `marker`. What comes before is the
/// dynamic linker's work; closing is left out, because it has happened whatever it answers.
std::vector<SystemCall> ReadTrace(const std::filesystem::path& output, const std::string& marker);

/// The command that runs a program and kills it in one of its calls, or lets the call fail: as on a full disk
/// where it changes something, else as on a broken one.
std::string FaultCommand(const SystemCall& call, bool kill);

/// Whether this machine lets programs be traced.
bool CanTrace();
