#include "Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

namespace launchd {

namespace {
constexpr std::chrono::seconds patience { 10 };

bool IsLater(ssize_t result) { return result < 0 && (errno == EAGAIN || errno == EINTR); }
}

Connection::Connection(Descriptor socket, TimePoint now)
    : fSocket(std::move(socket))
    , fDeadline(now + patience)
{
}

short Connection::pollEvents() const { return fState == State::writing ? POLLOUT : POLLIN; }

void Connection::service(TimePoint now)
{
    if (isClosed())
        return;
    if (fState == State::writing)
        send();
    else
        receive();
    if (now >= fDeadline)
        close();
}

bool Connection::hasWholeFrame() const
{
    return fBytes.size() >= frameHeaderSize && fBytes.size() - frameHeaderSize >= BodySize(fBytes);
}

void Connection::receive()
{
    // One piece each time: a peer that never stops sending must not keep the others from their turn.
    char piece[16 * 1024];
    const ssize_t size = recv(descriptor(), piece, sizeof piece, 0);
    if (IsLater(size))
        return;
    // Nothing is expected from a peer that waits for its reply but that it goes away.
    if (size <= 0 || fState == State::waiting) {
        close();
        return;
    }
    fBytes.append(piece, static_cast<size_t>(size));
    if (fBytes.size() >= frameHeaderSize && BodySize(fBytes) > maxRequestSize)
        close();
}

std::optional<Request> Connection::takeRequest(TimePoint now)
{
    if (isClosed() || fState != State::reading || !hasWholeFrame())
        return std::nullopt;
    std::optional<Request> request
        = DecodeRequest(std::string_view(fBytes).substr(frameHeaderSize, BodySize(fBytes)));
    fBytes.clear();
    fState = State::waiting;
    fDeadline = TimePoint::max();
    if (!request)
        reply({ { ExitStatus::failed, "launchd does not understand the request" }, {} }, now);
    return request;
}

void Connection::reply(const Reply& reply, TimePoint now)
{
    std::optional<std::string> frame = Encode(reply);
    if (!frame) {
        close();
        return;
    }
    fBytes = std::move(*frame);
    fState = State::writing;
    fDeadline = now + patience;
    send();
}

void Connection::send()
{
    const ssize_t size = ::send(descriptor(), fBytes.data(), fBytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (IsLater(size))
        return;
    if (size > 0)
        fBytes.erase(0, static_cast<size_t>(size));
    if (size < 0 || fBytes.empty())
        close();
}

void Connection::close()
{
    fSocket.close();
    fBytes.clear();
    fDeadline = TimePoint::max();
}

} // namespace launchd
