#pragma once

#include "RunningJob.h"

#include <optional>
#include <string>

namespace launchd {

/// A supervisor's end of one connection: collects one request, then brings its reply under way. Never waits.
/// A peer that takes longer than 10 s over sending or receiving, sends too much or goes away is cut off.
class Connection {
public:
    /// @param socket connected and non-blocking.
    Connection(Descriptor socket, TimePoint now);

    int descriptor() const { return fSocket.get(); }
    short pollEvents() const;
    bool isReading() const { return fState == State::reading; }
    bool isClosed() const { return !fSocket; }

    /// @return when to call service() although nothing happened, or TimePoint::max().
    TimePoint deadline() const { return fDeadline; }
    /// Moves what can be moved at once.
    void service(TimePoint now);

    /// @return the request, once, as soon as it is complete. A bad one is answered here.
    std::optional<Request> takeRequest(TimePoint now);
    void reply(const Reply& reply, TimePoint now);
    void close();

private:
    enum class State { reading, waiting, writing };

    void receive();
    void send();
    bool hasWholeFrame() const;

    Descriptor fSocket;
    State fState = State::reading;
    std::string fBytes; ///< received so far, or left to send
    TimePoint fDeadline;
};

} // namespace launchd
