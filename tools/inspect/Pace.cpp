#include "tools/inspect/Pace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <poll.h>
#include <unistd.h>

Pace::Pace(std::chrono::duration<double> interval)
    : fInterval(std::chrono::duration_cast<Clock::duration>(interval))
    , fNext(Clock::now())
{
    signal(SIGPIPE, SIG_IGN); // writing fails instead
}

bool Pace::wait()
{
    using Milliseconds = std::chrono::milliseconds;
    fNext += fInterval;
    if (const auto now = Clock::now(); fNext < now)
        fNext += (now - fNext) / fInterval * fInterval + fInterval;
    std::array<pollfd, 2> ends { pollfd { fInterruption.descriptor(), POLLIN, 0 },
        pollfd { STDOUT_FILENO, 0, 0 } };
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
