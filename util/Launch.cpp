#include "util/Launch.h"

#include "util/Pipe.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Argument list as execv wants it; made before forking, because a child may not allocate memory.
std::vector<char*> ArgumentVector(const std::string& path, const std::vector<std::string>& arguments)
{
    std::vector<char*> list { const_cast<char*>(path.c_str()) };
    for (const std::string& argument : arguments)
        list.push_back(const_cast<char*>(argument.c_str()));
    list.push_back(nullptr);
    return list;
}

/// Reads once, however often a signal interrupts it.
ssize_t ReadSome(int descriptor, void* buffer, size_t size)
{
    ssize_t count = 0;
    do
        count = read(descriptor, buffer, size);
    while (count < 0 && errno == EINTR);
    return count;
}

int WaitForChild(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return status;
}

/// Tells the parent why the program does not run, and ends.
[[noreturn]] void ReportAndExit(int reportEnd)
{
    const int reason = errno;
    const ssize_t told = write(reportEnd, &reason, sizeof reason);
    _exit(told == sizeof reason ? 126 : 127);
}

void OpenStandardStreams()
{
    int descriptor = 0;
    do
        descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0)
        close(descriptor);
}

}

void PutProcessInOrder()
{
    OpenStandardStreams();
    (void)signal(SIGCHLD, SIG_DFL);
}

int LaunchDetached(const std::string& path, const std::vector<std::string>& arguments)
{
    const std::vector<char*> list = ArgumentVector(path, arguments);
    Pipe report;
    if (!report.open())
        return errno;

    // The program is a grandchild: its parent ends at once, so the system's first process collects it.
    const pid_t child = fork();
    if (child < 0)
        return errno;
    if (child == 0) {
        const pid_t program = fork();
        if (program > 0)
            _exit(0);
        if (program == 0)
            execv(list[0], list.data());
        ReportAndExit(report.writeEnd());
    }
    report.closeWriteEnd();
    WaitForChild(child);

    // A program that runs has closed its end without a word.
    int reason = 0;
    return ReadSome(report.readEnd(), &reason, sizeof reason) == sizeof reason ? reason : 0;
}

std::optional<std::string> OutputOfProgram(const std::string& path, const std::vector<std::string>& arguments)
{
    const std::vector<char*> list = ArgumentVector(path, arguments);
    Pipe output;
    if (!output.open())
        return std::nullopt;

    const pid_t child = fork();
    if (child < 0)
        return std::nullopt;
    if (child == 0) {
        const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
        if (null >= 0 && dup2(null, STDIN_FILENO) >= 0 && dup2(null, STDERR_FILENO) >= 0
            && dup2(output.writeEnd(), STDOUT_FILENO) >= 0)
            execv(list[0], list.data());
        _exit(127);
    }
    output.closeWriteEnd();

    std::string text;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ReadSome(output.readEnd(), buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<size_t>(count));
    const int status = WaitForChild(child);
    if (count < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    return text;
}
