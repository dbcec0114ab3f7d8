#include "app/unattended/Unattended.h"

#include "app/AppController.h"
#include "app/unattended/UnattendedFrontEnd.h"
#include "install/AgentInstaller.h"
#include "install/DriverInterface.h"
#include "util/MainBundle.h"

#include <chrono>
#include <functional>
#include <thread>

namespace {

constexpr std::chrono::milliseconds kPause { 20 };

/// Looks at the disk until it is as it should be or patience runs out. @return whether it is.
bool WaitUntil(const std::function<bool(const Installation&)>& asItShouldBe, std::chrono::seconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!asItShouldBe(ReadInstallation())) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

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
        return seenOnDisk([this](const Installation& found) { return installed(found); });
    }

    Outcome uninstall()
    {
        const auto gone = [](const Installation& found) { return found.gone(); };
        // Without an agent the menu offers no removal, but an interrupted one may have left the rest.
        if (!fController.validateMenuItem(AppController::kUninstallItem) && gone(ReadInstallation()))
            return Outcome::nothingToDo;
        fController.handleMenuSelection(AppController::kUninstallItem);
        fStatus = fController.error();
        return fStatus == noErr ? seenOnDisk(gone) : failure();
    }

    /// An agent that is current, but not registered or not running, is what an interrupted installation
    /// leaves.
    /// @return whether there was something to repair.
    bool repairAgent()
    {
        AgentInstaller& agent = *AgentInstaller::agentInstallerPtr();
        const Installation found = ReadInstallation();
        const uint32_t offered = fController.versionAsNumVersionVariant();
        const bool currentFromStart
            = !agent.canInstall() && !agent.canUpdate() && !agent.installedVersionNewer();
        if (!currentFromStart || found.agentComplete(offered))
            return false;
        fFrontEnd.progress("The agent is installed but not in order; repairing it.");
        const bool registered = found.launchAgent == Installation::LaunchAgent::whole;
        fStatus = registered ? agent.startStopVelmoraProcess(true) : agent.update();
        return true;
    }

    bool installed(const Installation& found) const
    {
        const bool driverWanted = DriverInterface::driverInterfacePtr() != nullptr
            && DriverInterface::driverInterfacePtr()->restartRequired();
        return found.agentComplete(fController.versionAsNumVersionVariant())
            && (!driverWanted || found.driverComplete(DriverInterface::carriedVersion()));
    }

    Outcome seenOnDisk(const std::function<bool(const Installation&)>& asItShouldBe) const
    {
        if (!WaitUntil(asItShouldBe, fOptions.wait))
            return Outcome::notSeenOnDisk;
        return fFrontEnd.restartNeeded() ? Outcome::doneRestartNeeded : Outcome::done;
    }

    Outcome failure() const
    {
        return fStatus == errAuthorizationCanceled ? Outcome::authorizationRefused : Outcome::failed;
    }

    const Options& fOptions;
    AppController& fController;
    UnattendedFrontEnd& fFrontEnd;
    OSStatus fStatus = noErr;
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
    report.installation = ReadInstallation();
    const std::string text = options.json ? ReportAsJSON(report) : ReportAsText(report);
    std::fputs(text.c_str(), stdout);
    return report.outcome;
}
