// launchd [--notify DESCRIPTOR]
// Keeps the user's jobs until the last is unloaded. launchctl starts it; started by hand it logs to the
// terminal too.

#include "RuntimeFolder.h"
#include "Supervisor.h"
#include "SupervisorStart.h"

#include <sys/signalfd.h>
#include <syslog.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <string_view>

using namespace launchd;

namespace {

/// Takes the signals that the supervisor lives by out of the usual delivery, whatever its starter did with
/// them: an ignored SIGCHLD would lose the jobs' ends.
Descriptor ReceiveSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : { SIGCHLD, SIGTERM, SIGINT, SIGHUP }) {
        static_cast<void>(signal(number, SIG_DFL)); // cannot fail for these
        sigaddset(&set, number);
    }
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return Descriptor(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
}

/// @return the descriptor asked for with --notify, none without, or nothing for other arguments.
std::optional<Descriptor> NoticeDescriptor(int argc, char** argv)
{
    if (argc == 1)
        return Descriptor();
    int descriptor = -1;
    const std::string_view number = argc == 3 ? argv[2] : "";
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), descriptor);
    if (argc != 3 || std::string_view(argv[1]) != "--notify" || error != std::errc() || *end != '\0'
        || descriptor < 0)
        return std::nullopt;
    return Descriptor(descriptor);
}

void GiveNotice(Descriptor& descriptor, const std::string& notice)
{
    // A starter that is gone needs no notice; the one after it finds the socket.
    [[maybe_unused]] const ssize_t written = write(descriptor.get(), notice.data(), notice.size());
    descriptor.close();
}

}

int main(int argc, char** argv)
{
    openlog("launchd", LOG_PID | LOG_PERROR, LOG_USER);
    std::optional<Descriptor> notice = NoticeDescriptor(argc, argv);
    if (!notice) {
        syslog(LOG_ERR, "usage: launchd [--notify DESCRIPTOR]");
        return ExitStatus::usage;
    }
    static_cast<void>(signal(SIGPIPE, SIG_IGN)); // the starter may be gone by the time of the notice
    Descriptor signals = ReceiveSignals();

    std::string problem;
    std::optional<RuntimeFolder> folder = RuntimeFolder::claim(problem);
    if (!folder && problem.empty()) {
        GiveNotice(*notice, StartNotice::busy);
        return ExitStatus::ok;
    }
    Descriptor listener = folder ? folder->listen() : Descriptor();
    if (folder && (!listener || !signals))
        problem = RuntimeFolder::path() + ": " + std::strerror(errno);
    if (!problem.empty()) {
        syslog(LOG_ERR, "%s", problem.c_str());
        GiveNotice(*notice, problem);
        return ExitStatus::failed;
    }
    GiveNotice(*notice, StartNotice::serving);
    Supervisor(std::move(*folder), std::move(listener), std::move(signals)).run();
    return ExitStatus::ok;
}
