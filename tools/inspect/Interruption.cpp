#include "tools/inspect/Interruption.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <poll.h>
#include <unistd.h>

namespace {

/// The handler writes into it what is to be seen. Stays open: a signal may come at any time.
int bell[2] = { -1, -1 };

void Ring(int /*signal*/)
{
    const int error = errno;
    const char sound = 0;
    (void)!write(bell[1], &sound, 1); // full is as good
    errno = error;
}

/// Makes it, or silences it.
void PrepareBell()
{
    char sound = 0;
    while (bell[0] >= 0 && read(bell[0], &sound, 1) > 0) { }
    if (bell[0] >= 0 || pipe(bell) != 0)
        return;
    for (const int end : bell) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
}

}

Interruption::Interruption()
{
    PrepareBell();
    struct sigaction action { };
    action.sa_handler = Ring;
    action.sa_flags = SA_RESTART;
    for (const int signal : { SIGINT, SIGTERM })
        sigaction(signal, &action, nullptr);
}

int Interruption::descriptor() const { return bell[0]; }

bool Interruption::hasCome() const
{
    pollfd end { bell[0], POLLIN, 0 };
    return poll(&end, 1, 0) > 0;
}
