#pragma once

#include "Connection.h"
#include "RunningJob.h"
#include "RuntimeFolder.h"

#include <list>
#include <map>
#include <optional>
#include <vector>

namespace launchd {

/// Serves one user on one start-up volume: keeps the jobs that launchctl loads and ends when none is left.
/// One thread, and one place where it waits: for a signal, a client, a program on its way, or a deadline.
class Supervisor {
public:
    /// @param folder claimed. @param listener from its listen().
    /// @param signals non-blocking signalfd with SIGCHLD and the signals that end it, which are blocked.
    Supervisor(RuntimeFolder folder, Descriptor listener, Descriptor signals);

    /// Returns after the last job was unloaded, or a signal made it stop every job. The socket and the
    /// folder are gone then; clients that it did not answer find their connection closed and turn to the
    /// next.
    void run();

private:
    using ClientId = unsigned long;

    struct Waiting {
        ClientId client;
        Request request;
    };

    /// A loaded job and who waits for something about it.
    struct Entry {
        RunningJob job;
        std::optional<ClientId> loader; ///< to be told whether the program runs
        std::optional<ClientId> unloader; ///< to be told when the job is gone
        std::vector<Waiting>
            waiting; ///< requests about a job that is being stopped, to be met when it is gone
    };

    bool isFinished() const;
    void wait();
    TimePoint nextDeadline() const;

    void readSignals();
    void beginToEnd();
    void acceptClients();
    void makeRoomForClient();
    void serviceClients();
    void serviceJobs();
    bool removeGoneJobs();

    void handle(ClientId client, const Request& request);
    void load(ClientId client, const Request& request);
    void unload(ClientId client, const Request& request);
    Reply list() const;
    void reply(ClientId client, const Reply& reply);

    Entry* find(const std::string& path, const std::string& label);

    RuntimeFolder fFolder;
    Descriptor fListener;
    Descriptor fSignals;
    std::list<Entry> fJobs; ///< in the order of loading
    std::map<ClientId, Connection> fClients; ///< in the order of coming
    ClientId fLastClient = 0;
    TimePoint fNow;
    TimePoint fIdleEnd; ///< when to end without ever having had a client
    bool fEnding = false;
};

} // namespace launchd
