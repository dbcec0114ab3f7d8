#include "tests/faults/Strace.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>

namespace {

/// The leak check of AddressSanitizer cannot run in a traced program.
constexpr const char* kUntracedLeaks = "ASAN_OPTIONS=detect_leaks=0 ";

bool MayFail(const std::string& name)
{
    static const std::set<std::string> others { "close", "fcntl", "mmap", "pipe2", "lseek", "dup2", "ioctl",
        "poll" };
    return !name.empty() && !others.contains(name);
}

bool Changes(const std::string& name, const std::string& line)
{
    static const std::set<std::string> always { "write", "fsync", "rename", "renameat", "renameat2", "mkdir",
        "mkdirat", "unlink", "unlinkat", "rmdir", "copy_file_range", "fchmod", "fchmodat", "utimensat",
        "symlinkat", "flock" };
    return always.contains(name) || (name == "openat" && line.find("O_CREAT") != std::string::npos);
}

}

std::string TraceCommand(const std::filesystem::path& output)
{
    return std::string(kUntracedLeaks) + "strace -qq -e trace=file,desc -e signal=none -o '" + output.string()
        + "'";
}

std::vector<SystemCall> ReadTrace(const std::filesystem::path& output, const std::string& marker)
{
    std::vector<SystemCall> calls;
    std::map<std::string, size_t> ordinals;
    std::ifstream trace(output);
    bool started = false;
    for (std::string line; std::getline(trace, line);) {
        const std::string name = line.substr(0, line.find('('));
        const size_t ordinal = ++ordinals[name];
        started = started || line.find(marker) != std::string::npos;
        if (started && MayFail(name))
            calls.push_back({ name, ordinal, Changes(name, line) });
    }
    return calls;
}

std::string FaultCommand(const SystemCall& call, bool kill)
{
    const std::string error = call.changes ? "error=ENOSPC" : "error=EIO";
    return std::string(kUntracedLeaks) + "strace -qq -o /dev/null -e trace=" + call.name + " -e inject="
        + call.name + ":" + (kill ? "signal=KILL" : error) + ":when=" + std::to_string(call.ordinal);
}

bool CanTrace() { return std::system("strace -o /dev/null true 2>/dev/null") == 0; }
