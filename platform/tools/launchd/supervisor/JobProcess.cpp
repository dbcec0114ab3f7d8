#include "JobProcess.h"

#include "job/JobEnvironment.h"
#include <Host/HostPath.h>
#include <Host/ProgramStart.h>

#include <fcntl.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace launchd {

namespace {
/// What leads a job to the desktop of the user who started the supervisor.
constexpr const char* desktopVariables[]
    = { "LANG", "XDG_RUNTIME_DIR", "DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS" };

std::map<std::string, std::string> Environment(const Job& job)
{
    std::map<std::string, std::string> environment = JobEnvironment(job);
    // emplace() keeps what the job asks for.
    environment.emplace("HOME", HostHomeFolder());
    if (const passwd* user = getpwuid(geteuid())) {
        environment.emplace("USER", user->pw_name);
        environment.emplace("LOGNAME", user->pw_name);
        environment.emplace("SHELL", user->pw_shell);
    }
    for (const char* name : desktopVariables) {
        if (const char* value = std::getenv(name))
            environment.emplace(name, value);
    }
    return environment;
}

/// Everything that the new process needs, made before there is a new process.
struct Plan {
    explicit Plan(const Job& job)
        : program(HostPath(job.program))
        , workingDirectory(HostPath(job.workingDirectory.empty() ? "/" : job.workingDirectory))
        , standardOutPath(HostPath(job.standardOutPath))
        , standardErrorPath(HostPath(job.standardErrorPath))
        , arguments(job.arguments)
    {
        for (const auto& [name, value] : Environment(job))
            environment.emplace_back(name).append("=").append(value);
    }

    std::string program;
    std::string workingDirectory;
    std::string standardOutPath;
    std::string standardErrorPath;
    std::vector<std::string> arguments;
    std::vector<std::string> environment;
};

/// Puts the file in the place of one of the standard descriptors. @return false with errno set.
bool Redirect(const std::string& path, int standardDescriptor)
{
    // Not waiting matters for a pipe without a reader only, which would keep the job from starting for ever.
    const int file
        = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0666);
    return file >= 0 && fcntl(file, F_SETFL, O_APPEND) == 0 && dup2(file, standardDescriptor) >= 0;
}

[[noreturn]] void Fail(int report, StartFailure::Step step)
{
    const StartFailure failure { step, errno };
    // Nobody is left to tell when this fails; the exit status still says that it went wrong.
    [[maybe_unused]] const ssize_t written = write(report, &failure, sizeof failure);
    _exit(startFailureStatus);
}

[[noreturn]] void Become(Plan& plan, int report, pid_t supervisor)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != supervisor)
        _exit(startFailureStatus); // it ended before the kernel was told
    setsid();
    ResetSignals();
    umask(022);

    constexpr int reportPlace = STDERR_FILENO + 1;
    report = report == reportPlace ? report : dup3(report, reportPlace, O_CLOEXEC);
    close_range(reportPlace + 1, ~0U, 0);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO })
        dup2(nothing, standard);
    if (!plan.standardOutPath.empty() && !Redirect(plan.standardOutPath, STDOUT_FILENO))
        Fail(report, StartFailure::Step::standardOutPath);
    if (!plan.standardErrorPath.empty() && !Redirect(plan.standardErrorPath, STDERR_FILENO))
        Fail(report, StartFailure::Step::standardErrorPath);
    if (chdir(plan.workingDirectory.c_str()) != 0)
        Fail(report, StartFailure::Step::workingDirectory);
    execve(plan.program.c_str(), PointersTo(plan.arguments).data(), PointersTo(plan.environment).data());
    Fail(report, StartFailure::Step::program);
}
}

JobProcess StartJob(const Job& job)
{
    Plan plan(job);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return { .pid = 0, .error = errno, .report = Descriptor() };
    Descriptor report(ends[0]);
    const Descriptor reporter(ends[1]);
    fcntl(report.get(), F_SETFL, O_NONBLOCK);

    const pid_t supervisor = getpid();
    const pid_t pid = fork();
    if (pid < 0)
        return { .pid = 0, .error = errno, .report = Descriptor() };
    if (pid == 0)
        Become(plan, reporter.get(), supervisor);
    return { .pid = pid, .error = 0, .report = std::move(report) };
}

} // namespace launchd
