#include "tools/inspect/Pace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr std::array kEndings { SIGINT, SIGTERM };

/// The handler writes into it what the wait is to see. Stays open: a signal may come at any time.
int bell[2] = { -1, -1 };

void Ring(int /*signal*/)
{
    const int error = errno;
    const char sound = 0;
    (void)!write(bell[1], &sound, 1); // full is as good
    errno = error;
}

void Handle(int signal, void (*handler)(int))
{
    struct sigaction action { };
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
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

Pace::Pace(std::chrono::duration<double> interval)
    : fInterval(std::chrono::duration_cast<Clock::duration>(interval))
    , fNext(Clock::now())
{
    PrepareBell();
    std::for_each(kEndings.begin(), kEndings.end(), [](int signal) { Handle(signal, Ring); });
    Handle(SIGPIPE, SIG_IGN); // writing fails instead
}

bool Pace::wait()
{
    using Milliseconds = std::chrono::milliseconds;
    fNext += fInterval;
    if (const auto now = Clock::now(); fNext < now)
        fNext += (now - fNext) / fInterval * fInterval + fInterval;
    std::array<pollfd, 2> ends { pollfd { bell[0], POLLIN, 0 }, pollfd { STDOUT_FILENO, 0, 0 } };
    for (;;) {
        const auto left = std::chrono::ceil<Milliseconds>(fNext - Clock::now()).count();
        const auto timeout = static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
        const int result = poll(ends.data(), ends.size(), timeout);
        if (result < 0 && errno != EINTR)
            return false;
        if (result > 0 && (ends[0].revents != 0 || (ends[1].revents & (POLLERR | POLLHUP)) != 0))
            return false;
        if (result > 0)
            ends[1].fd = -1; // it cannot be waited for
        if (result == 0 && Clock::now() >= fNext)
            return true;
    }
}
