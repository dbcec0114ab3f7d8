#include "SupervisorClient.h"

#include "Protocol.h"
#include "RuntimeFolder.h"
#include "SupervisorStart.h"

#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

namespace launchd {

namespace {
using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds startPatience { 30 };
constexpr std::chrono::milliseconds retryPause { 20 };

/// Outcome of putting a request to the supervisor: its reply, or why there is none. Neither means that there
/// is no supervisor, or that it ended before it replied.
struct Exchange {
    std::optional<Reply> reply;
    std::string problem;
};

bool IsAbsent(int error)
{
    return error == ENOENT || error == ECONNREFUSED || error == ECONNRESET || error == EPIPE;
}

Exchange Failed(int error)
{
    if (IsAbsent(error))
        return {};
    return { std::nullopt, std::string("launchd does not answer: ") + std::strerror(error) };
}

/// @return 0 or an errno.
int SendAll(int peer, const std::string& bytes)
{
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t size = send(peer, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (size < 0 && errno != EINTR)
            return errno;
        sent += size > 0 ? static_cast<size_t>(size) : 0;
    }
    return 0;
}

/// @return 0 or an errno; ECONNRESET when the peer closed before everything was there.
int ReceiveAll(int peer, std::string& bytes)
{
    for (size_t received = 0; received < bytes.size();) {
        const ssize_t size = recv(peer, bytes.data() + received, bytes.size() - received, 0);
        if (size == 0)
            return ECONNRESET;
        if (size < 0 && errno != EINTR)
            return errno;
        received += size > 0 ? static_cast<size_t>(size) : 0;
    }
    return 0;
}

Exchange ReceiveReply(int peer)
{
    std::string header(frameHeaderSize, '\0');
    if (const int error = ReceiveAll(peer, header); error != 0)
        return Failed(error);
    if (BodySize(header) > maxReplySize)
        return Failed(EMSGSIZE);
    std::string body(BodySize(header), '\0');
    if (const int error = ReceiveAll(peer, body); error != 0)
        return Failed(error);
    std::optional<Reply> reply = DecodeReply(body);
    return reply ? Exchange { std::move(reply), {} } : Failed(EBADMSG);
}

Exchange Ask(const Request& request)
{
    const std::optional<std::string> frame = Encode(request);
    if (!frame)
        return { std::nullopt, request.path + ": The path is not valid text" };
    std::string problem;
    const std::optional<RuntimeFolder> folder = RuntimeFolder::open(problem);
    if (!folder)
        return { std::nullopt, problem };
    const Descriptor peer = folder->connect();
    if (!peer)
        return Failed(errno);
    if (const int error = SendAll(peer.get(), *frame); error != 0)
        return Failed(error);
    return ReceiveReply(peer.get());
}

Answer AskStarting(const Request& request)
{
    const auto deadline = Clock::now() + startPatience;
    do {
        const Exchange exchange = Ask(request);
        if (exchange.reply)
            return exchange.reply->answer;
        if (!exchange.problem.empty())
            return { ExitStatus::failed, exchange.problem };
        const std::string notice = StartSupervisor();
        if (notice == StartNotice::busy)
            std::this_thread::sleep_for(retryPause); // one is about to serve, or about to end
        else if (notice != StartNotice::serving)
            return { ExitStatus::failed, notice };
    } while (Clock::now() < deadline);
    return { ExitStatus::failed, request.path + ": launchd does not come to serve" };
}
}

Answer SupervisorClient::load(const JobFile& file, const std::string& session)
{
    return AskStarting({ .verb = Verb::load,
        .path = file.path,
        .label = file.job.label,
        .session = session,
        .job = file.bytes });
}

Answer SupervisorClient::unload(const std::string& path, const std::string& label)
{
    const Exchange exchange
        = Ask({ .verb = Verb::unload, .path = path, .label = label, .session = {}, .job = {} });
    if (exchange.reply)
        return exchange.reply->answer;
    if (!exchange.problem.empty())
        return { ExitStatus::failed, exchange.problem };
    return NotFound(path);
}

Answer SupervisorClient::list(std::vector<JobState>& jobs)
{
    Exchange exchange = Ask({ .verb = Verb::list, .path = {}, .label = {}, .session = {}, .job = {} });
    if (exchange.reply) {
        jobs = std::move(exchange.reply->jobs);
        for (JobState& job : jobs)
            job.manager = "launchd";
        return exchange.reply->answer;
    }
    return { exchange.problem.empty() ? ExitStatus::ok : ExitStatus::failed, exchange.problem };
}

} // namespace launchd
