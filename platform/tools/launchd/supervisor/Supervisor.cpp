#include "Supervisor.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <syslog.h>

#include <algorithm>
#include <csignal>

namespace launchd {

namespace {
constexpr size_t maxClients = 32;
constexpr std::chrono::seconds firstClientPatience { 10 };

/// Only the user and root may give orders, however the socket was come by.
bool MayGiveOrders(int client)
{
    ucred peer {};
    socklen_t size = sizeof peer;
    return getsockopt(client, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0
        && (peer.uid == geteuid() || peer.uid == 0);
}

Answer LoadOutcome(const RunningJob& job)
{
    return job.startProblem().empty() ? Answer {} : LoadedBut(job.path(), job.label(), job.startProblem());
}
}

Supervisor::Supervisor(RuntimeFolder folder, Descriptor listener, Descriptor signals)
    : fFolder(std::move(folder))
    , fListener(std::move(listener))
    , fSignals(std::move(signals))
    , fNow(Clock::now())
    , fIdleEnd(fNow + firstClientPatience)
{
}

void Supervisor::run()
{
    while (!isFinished()) {
        wait();
        fNow = Clock::now();
        readSignals();
        acceptClients();
        serviceClients();
        do
            serviceJobs();
        while (removeGoneJobs());
        std::erase_if(fClients, [](const auto& client) { return client.second.isClosed(); });
    }
    fFolder.remove();
}

bool Supervisor::isFinished() const
{
    const bool isIdle = fLastClient != 0 || fEnding || fNow >= fIdleEnd;
    return fJobs.empty() && fClients.empty() && isIdle;
}

TimePoint Supervisor::nextDeadline() const
{
    TimePoint next = fLastClient == 0 ? fIdleEnd : TimePoint::max();
    for (const Entry& entry : fJobs)
        next = std::min(next, entry.job.deadline());
    for (const auto& [id, client] : fClients)
        next = std::min(next, client.deadline());
    return next;
}

/// Everybody is asked for news afterwards, and who has none says so at once; so which descriptor ended the
/// wait does not matter.
void Supervisor::wait()
{
    std::vector<pollfd> descriptors { { fSignals.get(), POLLIN, 0 }, { fListener.get(), POLLIN, 0 } };
    for (const auto& [id, client] : fClients)
        descriptors.push_back({ client.descriptor(), client.pollEvents(), 0 });
    for (const Entry& entry : fJobs)
        descriptors.push_back({ entry.job.reportDescriptor(), POLLIN, 0 }); // -1 is passed over

    const TimePoint deadline = nextDeadline();
    const auto left = std::max(Clock::duration::zero(), deadline - Clock::now());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec timeOut { .tv_sec = seconds.count(),
        .tv_nsec = std::chrono::nanoseconds(left - seconds).count() };
    ppoll(descriptors.data(), descriptors.size(), deadline == TimePoint::max() ? nullptr : &timeOut, nullptr);
}

void Supervisor::readSignals()
{
    signalfd_siginfo signal {};
    while (read(fSignals.get(), &signal, sizeof signal) == static_cast<ssize_t>(sizeof signal)) {
        if (signal.ssi_signo != SIGCHLD)
            beginToEnd();
    }
    // Several children that end together may send one signal.
    for (Entry& entry : fJobs)
        entry.job.reap(fNow);
}

/// Whoever comes from now on belongs to the next supervisor, which can start once this one has let go of the
/// folder.
void Supervisor::beginToEnd()
{
    fEnding = true;
    fListener.close();
    for (Entry& entry : fJobs) {
        entry.job.stop(fNow);
        for (const Waiting& waiting : entry.waiting)
            fClients.erase(waiting.client);
        entry.waiting.clear();
    }
    std::erase_if(fClients, [](const auto& client) { return client.second.isReading(); });
}

void Supervisor::acceptClients()
{
    while (fListener) {
        Descriptor client(accept4(fListener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!client)
            return;
        if (!MayGiveOrders(client.get()))
            continue;
        makeRoomForClient();
        if (fClients.size() < maxClients)
            fClients.emplace(++fLastClient, Connection(std::move(client), fNow));
    }
}

/// Many clients that send nothing must not lock out the others: the one that dawdles longest goes.
void Supervisor::makeRoomForClient()
{
    if (fClients.size() < maxClients)
        return;
    const auto dawdler = std::find_if(
        fClients.begin(), fClients.end(), [](const auto& client) { return client.second.isReading(); });
    if (dawdler != fClients.end())
        fClients.erase(dawdler);
}

void Supervisor::serviceClients()
{
    for (auto& [id, client] : fClients) {
        client.service(fNow);
        if (const std::optional<Request> request = client.takeRequest(fNow))
            handle(id, *request);
    }
}

void Supervisor::serviceJobs()
{
    for (Entry& entry : fJobs) {
        entry.job.timeReached(fNow);
        if (entry.job.isStarting())
            entry.job.readReport();
        if (!entry.loader || entry.job.isStarting())
            continue;
        reply(*entry.loader, { LoadOutcome(entry.job), {} });
        entry.loader.reset();
    }
}

/// @return whether requests that had waited for a job's end were met, which can leave more to be done.
bool Supervisor::removeGoneJobs()
{
    std::vector<Waiting> waiting;
    for (auto entry = fJobs.begin(); entry != fJobs.end();) {
        if (!entry->job.isGone()) {
            ++entry;
            continue;
        }
        if (entry->unloader)
            reply(*entry->unloader, {});
        std::move(entry->waiting.begin(), entry->waiting.end(), std::back_inserter(waiting));
        entry = fJobs.erase(entry);
    }
    for (const auto& [client, request] : waiting)
        handle(client, request);
    return !waiting.empty();
}

void Supervisor::handle(ClientId client, const Request& request)
{
    switch (request.verb) {
    case Verb::load:
        return load(client, request);
    case Verb::unload:
        return unload(client, request);
    case Verb::list:
        return reply(client, list());
    }
}

void Supervisor::load(ClientId client, const Request& request)
{
    std::string problem;
    std::optional<Job> job = ParseJob(request.job, problem);
    if (!job)
        return reply(client, { { ExitStatus::invalidJob, request.path + ": " + problem }, {} });

    if (Entry* entry = find(request.path, job->label)) {
        if (entry->job.isStopping())
            return entry->waiting.push_back({ client, request });
        return reply(client, { AlreadyLoaded(request.path, entry->job.label(), entry->job.path()), {} });
    }
    const bool starts = job->startsAtLoad();
    Entry& entry = fJobs.emplace_back(Entry { .job = { std::move(*job), request.path, request.session },
        .loader = client,
        .unloader = std::nullopt,
        .waiting = {} });
    syslog(LOG_INFO, "%s: loaded from %s", entry.job.label().c_str(), request.path.c_str());
    if (starts)
        entry.job.start(fNow);
}

void Supervisor::unload(ClientId client, const Request& request)
{
    Entry* entry = find(request.path, request.label);
    if (!entry)
        return reply(client, { NotFound(request.path), {} });
    if (entry->job.isStopping())
        return entry->waiting.push_back({ client, request });
    syslog(LOG_INFO, "%s: unloaded", entry->job.label().c_str());
    entry->unloader = client;
    entry->job.stop(fNow);
}

Reply Supervisor::list() const
{
    Reply reply;
    for (const Entry& entry : fJobs)
        reply.jobs.push_back(entry.job.state());
    return reply;
}

void Supervisor::reply(ClientId client, const Reply& reply)
{
    const auto found = fClients.find(client);
    if (found != fClients.end() && !found->second.isClosed())
        found->second.reply(reply, fNow);
}

/// The path decides, since its file may have been changed or taken away after the job was loaded.
Supervisor::Entry* Supervisor::find(const std::string& path, const std::string& label)
{
    Entry* sameLabel = nullptr;
    for (Entry& entry : fJobs) {
        if (entry.job.path() == path)
            return &entry;
        if (entry.job.label() == label)
            sameLabel = &entry;
    }
    return sameLabel;
}

} // namespace launchd
