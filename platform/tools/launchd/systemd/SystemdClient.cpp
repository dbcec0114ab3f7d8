#include "SystemdClient.h"

#include "job/StartFailure.h"
#include <Host/HostPath.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iterator>

namespace launchd {

namespace fs = std::filesystem;

namespace {
using std::chrono::microseconds;

constexpr std::chrono::seconds startPatience { 100 }; // systemd itself gives up after 90
constexpr std::chrono::seconds stopMargin { 30 };
constexpr microseconds longestStop = std::chrono::hours(24 * 366);

/// Exit statuses of systemd's own process on its way to becoming the program.
struct StepStatus {
    int status;
    StartFailure::Step step;
};
constexpr StepStatus stepStatuses[] = {
    { 200, StartFailure::Step::workingDirectory },
    { 203, StartFailure::Step::program },
    { 209, StartFailure::Step::standardOutPath },
    { 222, StartFailure::Step::standardErrorPath },
};

bool IsSamePath(const std::string& left, const std::string& right)
{
    std::error_code error;
    return left == right || fs::weakly_canonical(left, error) == fs::weakly_canonical(right, error);
}

Answer Failed(const std::string& path, const std::string& problem)
{
    return { ExitStatus::failed, path + ": " + problem };
}

/// @return the failure with the path in front, or the answer that it is none.
Answer About(const std::string& path, const Answer& answer)
{
    return answer.ok() ? answer : Failed(path, answer.message);
}

JobState StateOf(const OwnUnit& unit, const UnitState& state)
{
    const bool isRunning = state.mainPid != 0 && state.activeState != "deactivating";
    const bool isSignal = state.mainCode == CLD_KILLED || state.mainCode == CLD_DUMPED;
    return { .label = unit.label,
        .program = unit.notes.program,
        .session = unit.notes.session,
        .pid = isRunning ? static_cast<pid_t>(state.mainPid) : 0,
        .lastExitStatus = isSignal ? -state.mainStatus : state.mainStatus,
        .manager = SystemdClient::name };
}

microseconds StopPatience(const UnitState& state)
{
    if (state.stopTimeOut == UINT64_MAX)
        return microseconds::max();
    const auto limit = static_cast<uint64_t>(longestStop.count());
    return microseconds(std::min(state.stopTimeOut, limit)) + stopMargin;
}
}

SystemdClient::SystemdClient()
    : fFolder(UnitFolder::path())
{
    std::unique_ptr<UserManager> manager = fFolder.empty() ? nullptr : UserManager::connect();
    fIsUnanswered = !manager && UserManager::seemsToRun();
    if (!manager)
        return;
    const auto& places = manager->unitPath();
    const auto place = std::find_if(
        places.begin(), places.end(), [this](const auto& each) { return IsSamePath(each, fFolder); });
    if (place == places.end())
        return;
    fFolder = *place;
    fManager = std::move(manager);
}

Answer SystemdClient::canTake(const JobFile& file, const std::string& session)
{
    std::string problem;
    return UnitText(file, session, problem) ? Answer {} : Failed(file.path, problem);
}

Answer SystemdClient::load(const JobFile& file, const std::string& session)
{
    std::string problem;
    const std::optional<std::string> text = UnitText(file, session, problem);
    if (!text)
        return Failed(file.path, problem);
    const std::optional<UnitFolder> folder = UnitFolder::make(fFolder, problem);
    if (!folder)
        return Failed(file.path, problem);

    bool isLoaded = false;
    for (const OwnUnit& unit : UnitFolder::units(fFolder)) {
        if (unit.label != file.job.label && unit.notes.path != file.path)
            continue;
        if (unit.label != file.job.label || unit.text != *text)
            return AlreadyLoaded(file.path, unit.label, unit.notes.path);
        isLoaded = true;
    }
    if (isLoaded) {
        const Answer reloading = About(file.path, fManager->reload());
        return reloading.ok() ? activate(file) : reloading;
    }
    Answer writing = checkFree(*folder, file);
    if (writing.ok())
        writing = writeUnit(*folder, file, *text);
    if (writing.ok())
        return activate(file);
    folder->removeIfEmpty();
    return writing;
}

/// Refuses where a unit that is none of ours has the name.
Answer SystemdClient::checkFree(const UnitFolder& folder, const JobFile& file)
{
    const std::string& label = file.job.label;
    if (folder.has(label))
        return Failed(file.path, folder.pathOf(label) + " exists and was not written by launchctl");
    UnitState state;
    if (Answer asking = About(file.path, fManager->state(UnitName(label), state)); !asking.ok())
        return asking;
    const bool isOurs = IsSamePath(state.fragmentPath, folder.pathOf(label));
    if (state.loadState == "masked" || (!state.fragmentPath.empty() && !isOurs))
        return Failed(file.path,
            "systemd has a unit " + UnitName(label)
                + " already, which was not written by launchctl: " + state.fragmentPath);
    return {};
}

/// Writes the unit and makes the manager read it; takes it away again when that fails.
Answer SystemdClient::writeUnit(const UnitFolder& folder, const JobFile& file, const std::string& text)
{
    const std::string& label = file.job.label;
    if (const int error = folder.write(label, text); error != 0)
        return Failed(folder.pathOf(label), std::strerror(error));
    Answer taking = About(file.path, fManager->reload());
    if (taking.ok())
        taking = checkTaken(folder, file);
    if (taking.ok())
        return taking;
    folder.remove(label);
    static_cast<void>(fManager->reload());
    return taking;
}

Answer SystemdClient::checkTaken(const UnitFolder& folder, const JobFile& file)
{
    UnitState state;
    if (Answer asking = About(file.path, fManager->state(UnitName(file.job.label), state)); !asking.ok())
        return asking;
    if (state.loadState == "loaded" && IsSamePath(state.fragmentPath, folder.pathOf(file.job.label)))
        return {};
    return Failed(file.path, "systemd does not take the unit: " + state.loadState);
}

/// Does for a unit that the manager has read what loading a job means.
Answer SystemdClient::activate(const JobFile& file)
{
    if (!file.job.startsAtLoad())
        return {};
    const std::string unit = UnitName(file.job.label);
    if (Answer enabling = About(file.path, fManager->enable(unit)); !enabling.ok())
        return enabling;
    const Answer starting = fManager->start(unit, startPatience);
    return starting.ok() ? starting
                         : LoadedBut(file.path, file.job.label, startProblem(file.job, starting.message));
}

/// @param reason the manager's. @return a part of a sentence that says more where systemd's traces do.
std::string SystemdClient::startProblem(const Job& job, const std::string& reason)
{
    UnitState state;
    const Answer asking = fManager->state(UnitName(job.label), state);
    const auto found = std::find_if(std::begin(stepStatuses), std::end(stepStatuses),
        [&](const StepStatus& each) { return state.mainStatus == each.status; });
    if (!asking.ok() || state.mainCode != CLD_EXITED || found == std::end(stepStatuses))
        return "it could not be started: " + reason;
    // Systemd keeps the error to itself. A missing file, the usual reason, shows.
    const bool isProgram = found->step == StartFailure::Step::program;
    const bool isMissing = isProgram && access(HostPath(job.program).c_str(), X_OK) != 0;
    return Describe(found->step, job, isMissing ? std::strerror(errno) : reason);
}

Answer SystemdClient::unload(const std::string& path, const std::string& label)
{
    if (!serves() && UnitFolder::units(fFolder).empty())
        return NotFound(path);
    std::string problem;
    const std::optional<UnitFolder> folder = UnitFolder::make(fFolder, problem);
    if (!folder)
        return Failed(path, problem);
    const std::string loaded = labelOf(*folder, path, label);
    Answer ending = loaded.empty() ? NotFound(path) : end(*folder, path, loaded);
    folder->removeIfEmpty();
    return ending;
}

/// @return the label of the job that was loaded from the path, else `label` if it is loaded, else "".
std::string SystemdClient::labelOf(
    const UnitFolder& folder, const std::string& path, const std::string& label)
{
    std::string sameLabel;
    for (const OwnUnit& unit : UnitFolder::units(fFolder)) {
        if (unit.notes.path == path)
            return unit.label;
        if (unit.label == label)
            sameLabel = label;
    }
    if (!sameLabel.empty())
        return sameLabel;
    // A property list is named after its job, as a rule, which helps when it is gone with its unit.
    for (const std::string& candidate : { label, fs::path(path).stem().string() }) {
        if (!candidate.empty() && isLeftOver(folder, path, candidate))
            return candidate;
    }
    return {};
}

/// Whether something is left of a job of ours whose unit file was removed by hand.
bool SystemdClient::isLeftOver(const UnitFolder& folder, const std::string& path, const std::string& label)
{
    if (!serves() || folder.has(label))
        return false;
    UnitState state;
    const bool isKnown = fManager->state(UnitName(label), state).ok() && state.sourcePath == path
        && IsSamePath(state.fragmentPath, folder.pathOf(label));
    return isKnown || folder.hasLostLink(label);
}

Answer SystemdClient::stopUnit(const std::string& path, const std::string& label)
{
    UnitState state;
    if (Answer asking = About(path, fManager->state(UnitName(label), state)); !asking.ok())
        return asking;
    if (state.activeState == "inactive" || state.activeState == "failed")
        return {};
    return About(path, fManager->stop(UnitName(label), StopPatience(state)));
}

Answer SystemdClient::end(const UnitFolder& folder, const std::string& path, const std::string& label)
{
    if (fIsUnanswered)
        return Failed(path, "systemd's manager of the user keeps " + label + ", but does not answer");
    if (Answer stopping = serves() ? stopUnit(path, label) : Answer {}; !stopping.ok())
        return stopping;
    if (Answer disabling = serves() ? fManager->disable(UnitName(label)) : Answer {}; !disabling.ok())
        return About(path, disabling);
    if (const int error = folder.remove(label); error != 0)
        return Failed(folder.pathOf(label), std::strerror(error));
    if (!serves()) {
        folder.removeLinks(label);
        return {};
    }
    fManager->resetFailed(UnitName(label));
    return About(path, fManager->reload());
}

Answer SystemdClient::list(std::vector<JobState>& jobs)
{
    for (const OwnUnit& unit : UnitFolder::units(fFolder)) {
        UnitState state;
        const Answer asking = serves() ? fManager->state(UnitName(unit.label), state) : Answer {};
        if (!asking.ok())
            return About(unit.label, asking);
        jobs.push_back(StateOf(unit, state));
    }
    return {};
}

} // namespace launchd
