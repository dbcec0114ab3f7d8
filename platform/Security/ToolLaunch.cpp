#include "ToolLaunch.h"

#include <Host/ProgramStart.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <vector>

namespace {

constexpr const char* kSystemPath = "PATH=/usr/bin:/bin:/usr/sbin:/sbin";

/// Everything the child needs, made before it exists: between fork and exec of a program with threads, memory
/// cannot be had. The descriptors are above 2.
struct Launch {
    int tool;
    int null;
    int stream; ///< the tool's end, or -1
    int report; ///< where the errno goes if the tool cannot be executed; closed when it can
    char* const* arguments;
    char* const* environment;
};

/// A copy out of the way of the three descriptors that the tool gets.
Descriptor AboveStandard(const Descriptor& descriptor)
{
    return Descriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

/// Variables are a way into a privileged program: search paths of libraries and interpreters above all. So
/// the tool gets those it needs and no others.
std::vector<std::string> ToolEnvironment()
{
    std::vector<std::string> variables { kSystemPath };
    for (char* const* variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        const std::string text = *variable;
        const bool isLocale = text.rfind("LANG=", 0) == 0 || text.rfind("LC_", 0) == 0;
        // A locale with a slash in it is a file of the caller's choice.
        if (isLocale && text.find('/') == std::string::npos)
            variables.push_back(text);
    }
    // A program that was given more rights than its caller must not carry out what the caller's folders say.
    if (getuid() != geteuid() || getgid() != getegid())
        return variables;
    for (const char* name : { "ZEK_STARTUP_VOLUME", "HOST_TOOLS_FOLDER" }) {
        if (const char* value = secure_getenv(name); value != nullptr)
            variables.push_back(std::string(name) + '=' + value);
    }
    return variables;
}

[[noreturn]] void Fail(const Launch& launch)
{
    const int error = errno;
    (void)!write(launch.report, &error, sizeof(error));
    _exit(127);
}

bool ConnectStandard(const Launch& launch)
{
    const int input = launch.stream >= 0 ? launch.stream : launch.null;
    if (dup2(input, STDIN_FILENO) < 0)
        return false;
    if (launch.stream >= 0 && dup2(launch.stream, STDOUT_FILENO) < 0)
        return false;
    // A closed one would be taken by the first file that the tool opens. One of ours that closes with exec is
    // no better; for a closed one, the answer -1 has every bit set.
    for (const int output : { STDOUT_FILENO, STDERR_FILENO }) {
        if ((fcntl(output, F_GETFD) & FD_CLOEXEC) != 0 && dup2(launch.null, output) < 0)
            return false;
    }
    return close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) == 0;
}

/// Root not only in effect, or shells would take the rights away again, and no groups of the caller's.
bool BecomeRoot() { return setgroups(0, nullptr) == 0 && setresgid(0, 0, 0) == 0 && setresuid(0, 0, 0) == 0; }

[[noreturn]] void RunTool(const Launch& launch)
{
    umask(S_IWGRP | S_IWOTH);
    if (ConnectStandard(launch) && (geteuid() != 0 || BecomeRoot())) {
        ResetSignals();
        fexecve(launch.tool, launch.arguments, launch.environment);
    }
    Fail(launch);
}

/// The tool is a grandchild, so that it is the system's to reap, not ours.
[[noreturn]] void RunChild(const Launch& launch)
{
    setsid();
    const pid_t tool = fork();
    if (tool < 0)
        Fail(launch);
    if (tool == 0)
        RunTool(launch);
    _exit(0);
}

/// Forks with signals held back: a handler of the caller's must not run in the child.
pid_t ForkChild(const Launch& launch)
{
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = fork();
    if (child == 0)
        RunChild(launch);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return child;
}

/// @return whether the tool's end of the pipe was closed by its execution, with nothing said before.
bool WasExecuted(const Descriptor& report)
{
    int error = 0;
    ssize_t got = 0;
    do
        got = read(report.get(), &error, sizeof(error));
    while (got < 0 && errno == EINTR);
    return got == 0;
}

/// The descriptors of one start. All are closed when a program is executed.
struct Ends {
    Descriptor null {}, reportReader {}, reportWriter {}, stream {}, toolStream {};

    bool open(bool withStream)
    {
        int report[2] = { -1, -1 };
        int streams[2] = { -1, -1 };
        const Descriptor lowNull(::open("/dev/null", O_RDWR | O_CLOEXEC));
        if (!lowNull || pipe2(report, O_CLOEXEC) != 0)
            return false;
        reportReader = Descriptor(report[0]);
        const Descriptor lowWriter(report[1]);
        null = AboveStandard(lowNull);
        reportWriter = AboveStandard(lowWriter);
        if (!withStream)
            return null && reportWriter;
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, streams) != 0)
            return false;
        stream = Descriptor(streams[0]);
        const Descriptor lowStream(streams[1]);
        toolStream = AboveStandard(lowStream);
        return null && reportWriter && toolStream;
    }
};

} // namespace

OSStatus StartTool(
    const Descriptor& lowTool, const char* name, char* const* arguments, FILE** communicationsPipe)
{
    Ends ends;
    const Descriptor tool = AboveStandard(lowTool);
    if (!tool || !ends.open(communicationsPipe != nullptr))
        return errAuthorizationInternal;
    std::vector<char*> argumentList { const_cast<char*>(name) };
    for (; arguments != nullptr && *arguments != nullptr; ++arguments)
        argumentList.push_back(*arguments);
    argumentList.push_back(nullptr);
    std::vector<std::string> variables = ToolEnvironment();
    const std::vector<char*> environment = PointersTo(variables);
    FILE* const file = communicationsPipe != nullptr ? fdopen(ends.stream.get(), "r+") : nullptr;
    if (file != nullptr)
        ends.stream.release();
    else if (communicationsPipe != nullptr)
        return errAuthorizationInternal;
    const Launch launch { tool.get(), ends.null.get(), ends.toolStream.get(), ends.reportWriter.get(),
        argumentList.data(), environment.data() };
    const pid_t child = ForkChild(launch);
    ends.reportWriter.close();
    while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR)
        continue;
    const bool isRunning = child > 0 && WasExecuted(ends.reportReader);
    if (isRunning && communicationsPipe != nullptr)
        *communicationsPipe = file;
    else if (file != nullptr)
        (void)std::fclose(file);
    if (child < 0)
        return errAuthorizationInternal;
    return isRunning ? errAuthorizationSuccess : errAuthorizationToolExecuteFailure;
}
