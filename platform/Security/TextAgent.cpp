#include "TextAgent.h"

#include <Host/Descriptor.h>
#include <Host/ProgramStart.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* kAgent = "/usr/bin/pkttyagent";

/// A terminal of this process's, where it may read: a job in the background of a shell would be stopped.
bool HasTerminal()
{
    const Descriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
    return terminal && tcgetpgrp(terminal.get()) == getpgrp();
}

/// In the child. The agent closes its end of the pipe when it serves, and ends when this process does.
[[noreturn]] void Become(char* const* arguments, int notifier, pid_t parent)
{
    ResetSignals();
    if (prctl(PR_SET_PDEATHSIG, SIGTERM) == 0 && getppid() == parent && fcntl(notifier, F_SETFD, 0) == 0)
        execv(kAgent, arguments);
    _exit(127);
}

}

TextAgent::TextAgent(bool wanted)
{
    int ends[2] = { -1, -1 };
    if (!wanted || !HasTerminal() || pipe2(ends, O_CLOEXEC) != 0)
        return;
    const Descriptor ready(ends[0]);
    Descriptor notifier(ends[1]);
    const pid_t self = getpid();
    std::vector<std::string> texts { kAgent, "--fallback", "--process", std::to_string(self), "--notify-fd",
        std::to_string(notifier.get()) };
    const std::vector<char*> arguments = PointersTo(texts);
    fProcess = fork();
    if (fProcess == 0)
        Become(arguments.data(), notifier.get(), self);
    notifier.close();
    char nothing = 0;
    while (read(ready.get(), &nothing, 1) < 0 && errno == EINTR)
        continue;
}

TextAgent::~TextAgent()
{
    if (fProcess <= 0)
        return;
    // SIGCONT as well: an agent that a shell has stopped at its question must hear of its end.
    kill(fProcess, SIGTERM);
    kill(fProcess, SIGCONT);
    while (waitpid(fProcess, nullptr, 0) < 0 && errno == EINTR)
        continue;
}
