#include "util/Processes.h"

#include "util/CFRef.h"
#include "util/ChildProcess.h"

#include <HostApplications/HostApplication.h>
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <unistd.h>

namespace {

constexpr size_t kOutputSize = 32768;
constexpr size_t kLongestLine = 256;
constexpr size_t kLongestPath = 1024;

// The kernel's records as this library knows them, with the short command name.
static_assert(sizeof(kinfo_proc) == 648 && offsetof(kinfo_proc, kp_proc.p_comm) == 243);

/// The process that a line of "ps acxww" tells of, if it is of this name and not the caller.
pid_t ProcessInLine(const char* line, const char* name)
{
    if (std::strlen(line) >= kLongestLine)
        return 0;
    int process = 0;
    std::array<char, kLongestLine> terminal {};
    std::array<char, kLongestLine> state {};
    std::array<char, kLongestLine> time {};
    std::array<char, kLongestLine> command {};
    // NOLINTNEXTLINE(cert-err34-c): numbers that are too large are nobody's
    const int count = std::sscanf(line, "%d %255s %255s %255s %255s", &process, terminal.data(), state.data(),
        time.data(), command.data());
    return count == 5 && process != getpid() && std::strcmp(command.data(), name) == 0 ? process : 0;
}

/// Reads the output of ps to its end or the process. @return the process, or 0.
pid_t SearchOutput(int output, const char* name)
{
    const auto buffer = std::make_unique<char[]>(kOutputSize);
    size_t leftover = 0;
    for (;;) {
        const ssize_t count = read(output, buffer.get() + leftover, kOutputSize - 1 - leftover);
        if (count <= 0)
            return 0;
        buffer[leftover + static_cast<size_t>(count)] = 0;
        if (const pid_t process = SearchBufferFor_PID(buffer.get(), &leftover, name); process != 0)
            return process;
    }
}

}

int DisableStdIO()
{
    int descriptor = open("/dev/null", O_RDWR);
    for (const int standard : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO }) {
        if (descriptor == -1)
            return -1;
        descriptor = dup2(descriptor, standard);
    }
    // What is closed is the last of them, standard error, and not what was opened. Tools rely on that.
    return descriptor == -1 ? -1 : close(descriptor);
}

pid_t Get_ProcessID(const char* name)
{
    if (name == nullptr)
        return 0;
    pid_t found = 0;
    ToolCall call { "/bin/ps", { "ps", "acxww" } };
    call.statusWithoutTool.reset();
    const auto search = [&found, name](int output) { found = SearchOutput(output, name); };
    return RunToolReading(call, search).isChild ? 0 : found;
}

pid_t SearchBufferFor_PID(char* buffer, size_t* leftover, const char* name)
{
    if (buffer == nullptr || leftover == nullptr || name == nullptr)
        return 0;
    char* line = buffer;
    for (char* end = std::strchr(line, '\n'); end != nullptr; end = std::strchr(line, '\n')) {
        *end = 0;
        if (const pid_t process = ProcessInLine(line, name); process != 0) {
            *leftover = 0;
            return process;
        }
        line = end + 1;
    }
    *leftover = std::strlen(line);
    std::memmove(buffer, line, *leftover + 1);
    return 0;
}

std::vector<kinfo_proc> ProcessTable()
{
    int name[] = { CTL_KERN, KERN_PROC, KERN_PROC_ALL };
    size_t size = 0;
    if (sysctl(name, std::size(name), nullptr, &size, nullptr, 0) != 0)
        return {};
    std::vector<kinfo_proc> table(size / sizeof(kinfo_proc));
    if (sysctl(name, std::size(name), table.data(), &size, nullptr, 0) != 0)
        return {};
    table.resize(size / sizeof(kinfo_proc));
    return table;
}

int NumberOfProcessesWithName(const char* name)
{
    if (name == nullptr)
        return 0;
    const std::vector<kinfo_proc> table = ProcessTable();
    return static_cast<int>(std::count_if(table.begin(), table.end(),
        [name](const kinfo_proc& process) { return std::strcmp(process.kp_proc.p_comm, name) == 0; }));
}

bool CodeSignatureValid(const char* path)
{
    if (path == nullptr || std::strlen(path) >= kLongestPath)
        return false;
    ToolCall call { "/usr/bin/codesign", { "codesign", "--verify", path } };
    call.prepare = [] { DisableStdIO(); };
    call.statusWithoutTool.reset();
    const ChildEnd end = RunTool(call);
    // The exit status alone is looked at, which is 0 as well for a tool that was killed.
    return !end.isChild && end.isKnown() && ((end.status >> 8) & 0xff) == 0;
}

bool KextCacheProcessRunning() { return NumberOfProcessesWithName("kextcache") != 0; }

bool PreviewProcessRunning() { return NumberOfProcessesWithName("Preview") != 0; }

void InitializePSN_ToInvalid(ProcessSerialNumber* number)
{
    if (number != nullptr)
        *number = {};
}

bool IsPSN_Valid(const ProcessSerialNumber* number)
{
    return number != nullptr && (number->highLongOfPSN != 0 || number->lowLongOfPSN != 0);
}

bool PSNsEqual(const ProcessSerialNumber* one, const ProcessSerialNumber* other)
{
    return one != nullptr && other != nullptr && one->highLongOfPSN == other->highLongOfPSN
        && one->lowLongOfPSN == other->lowLongOfPSN;
}

CFStringRef GetProcessNameForPID(pid_t process)
{
    static thread_local CFRef<CFStringRef> name;
    name = CFRef(HostApplicationName(process));
    return name.get();
}
