#include "TextAgent.h"

#include <Host/Descriptor.h>
#include <Host/ProgramStart.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace {

constexpr const char* kAgent = "/usr/bin/pkttyagent";

bool HasTerminal() { return static_cast<bool>(Descriptor(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY))); }

}

TextAgent::TextAgent(bool wanted)
{
    int ends[2] = { -1, -1 };
    if (!wanted || !HasTerminal() || pipe2(ends, O_CLOEXEC) != 0)
        return;
    const Descriptor ready(ends[0]);
    Descriptor notifier(ends[1]);
    std::vector<std::string> arguments { kAgent, "--fallback", "--process", std::to_string(getpid()),
        "--notify-fd", std::to_string(notifier.get()) };
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0)
        return;
    // Onto itself, which makes the agent inherit it. The agent closes it when it serves.
    if (posix_spawn_file_actions_adddup2(&actions, notifier.get(), notifier.get()) != 0
        || posix_spawn(&fProcess, kAgent, &actions, nullptr, PointersTo(arguments).data(), environ) != 0)
        fProcess = -1;
    posix_spawn_file_actions_destroy(&actions);
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
