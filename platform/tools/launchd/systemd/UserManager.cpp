#include "UserManager.h"

#include <Host/MessageBus.h>
#include <Host/UserBus.h>

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <tuple>

namespace launchd {

namespace {
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr const char* service = "org.freedesktop.systemd1";
constexpr const char* managerPath = "/org/freedesktop/systemd1";
constexpr const char* managerInterface = "org.freedesktop.systemd1.Manager";
constexpr const char* unitInterface = "org.freedesktop.systemd1.Unit";
constexpr const char* serviceInterface = "org.freedesktop.systemd1.Service";

constexpr std::chrono::seconds busPatience { 3 };
constexpr std::chrono::seconds callPatience { 5 };
constexpr std::chrono::seconds reloadPatience { 60 }; // generators are programs, which take their time

constexpr const char* jobDone = "done";
constexpr const char* jobTimeOut = "timeout";

/// Ends of a systemd job, as parts of a sentence.
constexpr std::pair<const char*, const char*> jobFailures[] = {
    { "failed", "it failed" },
    { jobTimeOut, "it took too long" },
    { "canceled", "it was called off" },
    { "dependency", "something that it needs failed" },
    { "skipped", "it does not apply now" },
};

using Change = sdbus::Struct<std::string, std::string, std::string>;

/// Runs one exchange with the manager, whose library reports failures by throwing.
template <class Exchange> Answer Attempt(const Exchange& exchange)
{
    try {
        exchange();
        return {};
    } catch (const sdbus::Error& error) {
        const std::string& reason = error.getMessage().empty() ? error.getName() : error.getMessage();
        return { ExitStatus::failed, "systemd: " + reason };
    }
}

/// Moves what has come on the connection, then waits for more, for the time that is left at most.
void Process(sdbus::IConnection& connection, Clock::time_point deadline)
{
    if (connection.processPendingRequest())
        return;
    const auto data = connection.getEventLoopPollData();
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    const int longest = static_cast<int>(std::clamp<long long>(left, 0, 60'000));
    const int own = data.getPollTimeout();
    pollfd ready { data.fd, data.events, 0 };
    poll(&ready, 1, own < 0 ? longest : std::min(own, longest));
}
}

UserManager::UserManager(const std::string& busAddress)
    : fConnection(sdbus::createSessionBusConnectionWithAddress(busAddress))
    , fManager(sdbus::createProxy(*fConnection, service, managerPath))
{
    fConnection->setMethodCallTimeout(callPatience);
    const sdbus::Variant value = fManager->getProperty("UnitPath").onInterface(managerInterface);
    fUnitPath = value.get<std::vector<std::string>>();
    fManager->uponSignal("JobRemoved")
        .onInterface(managerInterface)
        .call([this](const uint32_t&, const sdbus::ObjectPath& job, const std::string&,
                  const std::string& result) { fJobResults[job] = result; });
    fManager->finishRegistration();
    fManager->callMethod("Subscribe").onInterface(managerInterface);
}

std::unique_ptr<UserManager> UserManager::connect()
{
    const std::string bus = UserBusAddress();
    if (!BusAnswers(bus, busPatience))
        return nullptr;
    std::unique_ptr<UserManager> manager;
    // Why there is none is nobody's concern: our own supervisor serves then.
    static_cast<void>(Attempt([&] { manager.reset(new UserManager(bus)); }));
    return manager;
}

bool UserManager::seemsToRun()
{
    const std::string socket = "/run/user/" + std::to_string(geteuid()) + "/systemd/private";
    return access(socket.c_str(), F_OK) == 0 || errno == EACCES;
}

Answer UserManager::state(const std::string& unit, UnitState& state)
{
    return Attempt([&] {
        sdbus::ObjectPath path;
        fManager->callMethod("LoadUnit")
            .onInterface(managerInterface)
            .withArguments(unit)
            .storeResultsTo(path);
        const auto proxy = sdbus::createProxy(*fConnection, service, path);
        const auto get = [&proxy](const char* interface, const char* name, auto& value) {
            const sdbus::Variant variant = proxy->getProperty(name).onInterface(interface);
            value = variant.get<std::remove_reference_t<decltype(value)>>();
        };
        get(unitInterface, "LoadState", state.loadState);
        get(unitInterface, "ActiveState", state.activeState);
        get(unitInterface, "FragmentPath", state.fragmentPath);
        get(unitInterface, "SourcePath", state.sourcePath);
        get(serviceInterface, "ExecMainStatus", state.mainStatus);
        get(serviceInterface, "ExecMainCode", state.mainCode);
        get(serviceInterface, "MainPID", state.mainPid);
        get(serviceInterface, "TimeoutStopUSec", state.stopTimeOut);
    });
}

Answer UserManager::reload()
{
    return Attempt(
        [&] { fManager->callMethod("Reload").onInterface(managerInterface).withTimeout(reloadPatience); });
}

Answer UserManager::enable(const std::string& unit)
{
    return Attempt([&] {
        bool carriesInstallInfo = false;
        std::vector<Change> changes;
        fManager->callMethod("EnableUnitFiles")
            .onInterface(managerInterface)
            .withArguments(std::vector<std::string> { unit }, /*runtime*/ false, /*force*/ false)
            .storeResultsTo(carriesInstallInfo, changes);
    });
}

Answer UserManager::disable(const std::string& unit)
{
    return Attempt([&] {
        std::vector<Change> changes;
        fManager->callMethod("DisableUnitFiles")
            .onInterface(managerInterface)
            .withArguments(std::vector<std::string> { unit }, /*runtime*/ false)
            .storeResultsTo(changes);
    });
}

Answer UserManager::start(const std::string& unit, microseconds patience)
{
    return runJob("StartUnit", unit, patience);
}

Answer UserManager::stop(const std::string& unit, microseconds patience)
{
    return runJob("StopUnit", unit, patience);
}

void UserManager::resetFailed(const std::string& unit)
{
    static_cast<void>(Attempt(
        [&] { fManager->callMethod("ResetFailedUnit").onInterface(managerInterface).withArguments(unit); }));
}

Answer UserManager::runJob(const char* method, const std::string& unit, microseconds patience)
{
    std::string result;
    Answer exchange = Attempt([&] {
        sdbus::ObjectPath job;
        fManager->callMethod(method)
            .onInterface(managerInterface)
            .withArguments(unit, "replace")
            .storeResultsTo(job);
        result = waitForJob(job, patience);
    });
    if (!exchange.ok() || result == jobDone)
        return exchange;
    const auto failure = std::find_if(std::begin(jobFailures), std::end(jobFailures),
        [&](const auto& each) { return result == each.first; });
    return { ExitStatus::failed,
        "systemd: " + (failure == std::end(jobFailures) ? result : std::string(failure->second)) };
}

/// @return the job's result.
std::string UserManager::waitForJob(const std::string& job, microseconds patience)
{
    const bool isBounded = patience != microseconds::max();
    const auto deadline = isBounded ? Clock::now() + patience : Clock::time_point::max();
    for (;;) {
        if (const auto ended = fJobResults.find(job); ended != fJobResults.end())
            return ended->second;
        if (Clock::now() >= deadline)
            return jobTimeOut;
        Process(*fConnection, deadline);
    }
}

} // namespace launchd
