#include "HomeLock.h"

#include <Host/HostPath.h>

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace launchd {

namespace {
using Clock = std::chrono::steady_clock;
constexpr std::chrono::minutes lockPatience { 5 }; // jobs may take their time to end
constexpr std::chrono::milliseconds retryPause { 5 };
}

Descriptor LockHome(std::string& problem)
{
    problem.clear();
    // The folder itself: a file made for that would stay behind.
    Descriptor home(open(HostHomeFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto deadline = Clock::now() + lockPatience;
    while (home && flock(home.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return Descriptor();
        if (Clock::now() >= deadline) {
            problem = "Another launchctl does not come to its end";
            return Descriptor();
        }
        std::this_thread::sleep_for(retryPause);
    }
    return home;
}

} // namespace launchd
