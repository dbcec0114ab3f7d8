#include "app/unattended/Unattended.h"

#include "app/AppController.h"
#include "app/unattended/UnattendedFrontEnd.h"
#include "install/AgentInstaller.h"
#include "install/DriverInterface.h"
#include "util/Bundle.h"

#include <chrono>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause { 20 };
/// How long launchd may take to see what it was asked for.
constexpr std::chrono::seconds kGrace { 1 };

/// One run of install, update or uninstall.
class Run {
public:
    Run(const Options& options, AppController& controller, UnattendedFrontEnd& frontEnd)
        : fOptions(options)
        , fController(controller)
        , fFrontEnd(frontEnd)
    {
    }

    Outcome carryOut()
    {
        // Without its identifier the installer would neither find the settings nor miss them.
        if (MainBundleIdentifier() == nullptr) {
            fFrontEnd.progress("The installer's own bundle cannot be read.");
            fStatus = fnfErr;
            return Outcome::failed;
        }
        return fOptions.command == Options::Command::uninstall ? uninstall() : install();
    }
    OSStatus status() const { return fStatus; }

private:
    Outcome install()
    {
        if (fController.operation() == AppController::kUpdate)
            fReplacedProcess = ReadInstallation().jobProcess;
        fController.applicationDidFinishLaunching();
        fFrontEnd.answerWindows(fController);
        fStatus = fController.error();
        if (fFrontEnd.licenseRefused())
            return Outcome::licenseNotAccepted;
        if (fStatus != noErr)
            return failure();
        const bool repaired = repairAgent();
        if (fStatus != noErr)
            return failure();
        if (!repaired && !fFrontEnd.operationReported())
            return Outcome::nothingToDo;
        return seenOnDisk(&Run::installed);
    }

    Outcome uninstall()
    {
        // Without an agent the menu offers no removal, but an interrupted one may have left the rest.
        if (!fController.validateMenuItem(AppController::kUninstallItem) && gone(ReadInstallation()))
            return Outcome::nothingToDo;
        fController.handleMenuSelection(AppController::kUninstallItem);
        fStatus = fController.error();
        return fStatus == noErr ? seenOnDisk(&Run::gone) : failure();
    }

    /// An agent that is current, but not registered or not running, is what an interrupted installation
    /// leaves.
    /// @return whether there was something to repair.
    bool repairAgent()
    {
        AgentInstaller& agent = *AgentInstaller::agentInstallerPtr();
        if (agent.canInstall() || agent.canUpdate() || agent.installedVersionNewer())
            return false;
        const Installation found = ReadInstallation();
        if (found.agentComplete(fController.versionAsNumVersionVariant()))
            return false;
        fFrontEnd.progress("The agent is installed but not in order; repairing it.");
        if (found.launchAgent == Installation::LaunchAgent::whole) {
            fStatus = agent.startStopVelmoraProcess(true);
        } else {
            fReplacedProcess = found.jobProcess;
            fStatus = agent.update();
        }
        return true;
    }

    bool installed(const Installation& found)
    {
        AgentInstaller& agent = *AgentInstaller::agentInstallerPtr();
        if (agent.installedVersionNewer())
            return driverInstalled(found);
        loadAgainIfLost(agent, found);
        return found.agentComplete(fController.versionAsNumVersionVariant())
            && found.jobProcess != fReplacedProcess && found.settingsOnDisk && driverInstalled(found);
    }

    /// The driver is asked for only where the privileged tool was started.
    static bool driverInstalled(const Installation& found)
    {
        const DriverInterface* const driver = DriverInterface::driverInterfacePtr();
        return driver == nullptr || !driver->restartRequired()
            || found.driverComplete(DriverInterface::carriedVersion());
    }

    bool gone(const Installation& found) { return found.gone(); }

    /// launchctl is not waited for, so a load can overtake the unload before it: then it is refused, because
    /// the agent is still loaded, and the agent ends all the same.
    void loadAgainIfLost(AgentInstaller& agent, const Installation& found)
    {
        const bool registered = found.launchAgent == Installation::LaunchAgent::whole;
        if (fLoadedAgain || found.jobLoaded || !registered || Clock::now() < fWaitBegan + kGrace)
            return;
        fLoadedAgain = true;
        agent.startStopVelmoraProcess(true);
    }

    /// Looks at the disk until it is as it should be or patience runs out.
    Outcome seenOnDisk(bool (Run::*asItShouldBe)(const Installation&))
    {
        fWaitBegan = Clock::now();
        while (!(this->*asItShouldBe)(ReadInstallation())) {
            if (Clock::now() >= fWaitBegan + fOptions.wait)
                return Outcome::notSeenOnDisk;
            std::this_thread::sleep_for(kPause);
        }
        return fFrontEnd.restartNeeded() ? Outcome::doneRestartNeeded : Outcome::done;
    }

    Outcome failure() const
    {
        const bool wasRefused = fStatus == errAuthorizationCanceled || fStatus == errAuthorizationDenied;
        return wasRefused ? Outcome::authorizationRefused : Outcome::failed;
    }

    const Options& fOptions;
    AppController& fController;
    UnattendedFrontEnd& fFrontEnd;
    OSStatus fStatus = noErr;
    int64_t fReplacedProcess = 0; ///< of the agent that had to go; 0 when there was none
    Clock::time_point fWaitBegan;
    bool fLoadedAgain = false;
};

}

Outcome RunUnattended(const Options& options)
{
    UnattendedFrontEnd frontEnd(options, options.json ? stderr : stdout);
    AppController& controller = *AppController::init(frontEnd);

    Report report;
    if (options.command != Options::Command::status) {
        Run run(options, controller, frontEnd);
        report.outcome = run.carryOut();
        report.status = run.status();
        frontEnd.progress(OutcomeSentence(report.outcome, report.status));
    }
    report.offeredAgentVersion = controller.versionAsString().value_or("");
    report.offeredDriverVersion = VersionText(DriverInterface::carriedVersion());
    report.restartNeeded = frontEnd.restartNeeded();
    report.installation = ReadInstallation();
    const std::string text = options.json ? ReportAsJSON(report) : ReportAsText(report);
    std::fputs(text.c_str(), stdout);
    return report.outcome;
}
