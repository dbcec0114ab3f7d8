#include "ToolLaunch.h"

#include <Host/ProgramStart.h>

#include <array>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <grp.h>
#include <initializer_list>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <vector>

namespace {

constexpr const char* kSystemPath = "PATH=/usr/bin:/bin:/usr/sbin:/sbin";

/// Everything the child needs, made before it exists: between fork and exec of a program with threads, memory
/// cannot be had. The descriptors are above 2.
struct Launch {
    int program;
    int null;
    int stream; ///< the tool's end, or -1
    int report; ///< where the errno goes if the program cannot be executed; closed when it can
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

[[noreturn]] void Execute(const Launch& launch)
{
    ResetSignals();
    fexecve(launch.program, launch.arguments, launch.environment);
    Fail(launch);
}

/// The tool is a grandchild, so that it is the system's to reap, not ours.
[[noreturn]] void RunTool(const Launch& launch)
{
    setsid();
    const pid_t tool = fork();
    if (tool > 0)
        _exit(0);
    umask(S_IWGRP | S_IWOTH);
    if (tool < 0 || !ConnectStandard(launch) || (geteuid() == 0 && !BecomeRoot()))
        Fail(launch);
    Execute(launch);
}

/// pkexec has to be our child: whether the tool may be run is asked about its parent. It keeps what it inherits open
/// until it executes the tool, so the report tells of that, too.
[[noreturn]] void RunPkexec(const Launch& launch)
{
    setsid();
    if (!ConnectStandard(launch) || fcntl(launch.report, F_SETFD, 0) != 0)
        Fail(launch);
    Execute(launch);
}

/// Forks with signals held back: a handler of the caller's must not run in the child.
pid_t ForkChild(const Launch& launch, void (*run)(const Launch&))
{
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = fork();
    if (child == 0)
        run(launch);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return child;
}

/// Waits until the program's end of the pipe is closed. @return whether nothing was said before.
bool WasExecuted(const Descriptor& report)
{
    int error = 0;
    ssize_t got = 0;
    do
        got = read(report.get(), &error, sizeof(error));
    while (got < 0 && errno == EINTR);
    return got == 0;
}

void Reap(pid_t child)
{
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR)
        continue;
}

/// @return the name of the program that the process runs, "" when there is none to be seen.
std::string ProgramOf(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

OSStatus OutcomeOf(const siginfo_t& end)
{
    constexpr int dismissed = 126;
    constexpr int refused = 127;
    if (end.si_code != CLD_EXITED)
        return errAuthorizationToolExecuteFailure;
    if (end.si_status == dismissed)
        return errAuthorizationCanceled;
    return end.si_status == refused ? errAuthorizationDenied : errAuthorizationSuccess;
}

/// @param child pkexec, whose report has ended: it has just executed the tool, or is just about to end. Where the host
/// hides the processes of others, what does not end soon is the tool.
OSStatus OutcomeOfPkexec(pid_t child)
{
    constexpr int attempts = 1000;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        siginfo_t end {};
        const bool isOurs = waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOHANG | WNOWAIT) == 0;
        if (end.si_pid != 0)
            return OutcomeOf(end);
        const std::string program = ProgramOf(child);
        if (!isOurs && program.empty())
            return errAuthorizationToolExecuteFailure; // how it ended went to somebody else
        if (!program.empty() && program != "pkexec")
            return errAuthorizationSuccess;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return errAuthorizationSuccess;
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

OSStatus FinishTool(pid_t child, const Descriptor& report)
{
    Reap(child);
    return WasExecuted(report) ? errAuthorizationSuccess : errAuthorizationToolExecuteFailure;
}

OSStatus FinishPkexec(pid_t child, const Descriptor& report)
{
    const bool wasExecuted = WasExecuted(report);
    const OSStatus status = wasExecuted ? OutcomeOfPkexec(child) : errAuthorizationToolExecuteFailure;
    try {
        std::thread(Reap, child).detach(); // the tool took pkexec's place; it ends when it likes
    } catch (const std::system_error&) {
        // Without a thread to spare it stays to be reaped when this process ends. It runs all the same.
    }
    return status;
}

/// How a program is run, and how its start is seen.
struct Manner {
    void (*run)(const Launch&); ///< in the child; does not return
    OSStatus (*finish)(pid_t child, const Descriptor& report); ///< in the parent; sees to the child's reaping
};
constexpr Manner kDirectly { RunTool, FinishTool };
constexpr Manner kThroughPkexec { RunPkexec, FinishPkexec };

OSStatus Start(const Descriptor& lowProgram, std::vector<char*> arguments, std::vector<std::string> variables,
    FILE** communicationsPipe, const Manner& manner)
{
    Ends ends;
    const Descriptor program = AboveStandard(lowProgram);
    if (!program || !ends.open(communicationsPipe != nullptr))
        return errAuthorizationInternal;
    const std::vector<char*> environment = PointersTo(variables);
    FILE* const file = communicationsPipe != nullptr ? fdopen(ends.stream.get(), "r+") : nullptr;
    if (file != nullptr)
        ends.stream.release();
    else if (communicationsPipe != nullptr)
        return errAuthorizationInternal;
    const Launch launch { program.get(), ends.null.get(), ends.toolStream.get(), ends.reportWriter.get(),
        arguments.data(), environment.data() };
    const pid_t child = ForkChild(launch, manner.run);
    ends.reportWriter.close();
    const OSStatus status = child > 0 ? manner.finish(child, ends.reportReader)
                                      : static_cast<OSStatus>(errAuthorizationInternal);
    if (status == errAuthorizationSuccess && communicationsPipe != nullptr)
        *communicationsPipe = file;
    else if (file != nullptr)
        (void)std::fclose(file);
    return status;
}

/// @param first arguments that go before those of a list ended by null, which may be null itself.
std::vector<char*> ArgumentList(std::initializer_list<const char*> first, char* const* rest)
{
    std::vector<char*> list;
    for (const char* each : first)
        list.push_back(const_cast<char*>(each)); // which exec does not change
    for (; rest != nullptr && *rest != nullptr; ++rest)
        list.push_back(*rest);
    list.push_back(nullptr);
    return list;
}

} // namespace

OSStatus StartTool(
    const Descriptor& tool, const char* name, char* const* arguments, FILE** communicationsPipe)
{
    return Start(tool, ArgumentList({ name }, arguments), ToolEnvironment(), communicationsPipe, kDirectly);
}

OSStatus StartToolAsRoot(const Descriptor& tool, char* const* arguments, FILE** communicationsPipe)
{
    // It was found by names that only root can give, so it still has the one that it is opened under.
    std::array<char, PATH_MAX> path {};
    const std::string link = "/proc/self/fd/" + std::to_string(tool.get());
    const Descriptor pkexec(open("/usr/bin/pkexec", O_PATH | O_CLOEXEC));
    if (!pkexec || readlink(link.c_str(), path.data(), path.size() - 1) < 0)
        return errAuthorizationToolExecuteFailure;
    return Start(pkexec, ArgumentList({ "pkexec", "--disable-internal-agent", path.data() }, arguments),
        ToolEnvironment(), communicationsPipe, kThroughPkexec);
}
