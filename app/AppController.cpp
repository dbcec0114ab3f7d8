#include "app/AppController.h"

#include "app/FrontEnd.h"
#include "install/AgentInstaller.h"
#include "install/DriverInterface.h"
#include "settings/Preferences.h"
#include "util/Bundle.h"

namespace {

/// What a state answers that is followed by no other until the user has done something.
constexpr bool kLeaveLoop = false;

/// The answer of an alert's first, confirming button.
constexpr int32_t kConfirmed = 1;

struct CompletionAlerts {
    AppController::Alert succeeded, failed;
};

CompletionAlerts CompletionAlertsFor(uint32_t operation)
{
    switch (operation) {
    case AppController::kInstall:
    case AppController::kInstallDriver:
        return { AppController::kInstallSucceeded, AppController::kInstallFailed };
    case AppController::kUpdate:
    case AppController::kUpdateDriver:
        return { AppController::kUpdateSucceeded, AppController::kUpdateFailed };
    case AppController::kUninstall:
        return { AppController::kUninstallSucceeded, AppController::kUninstallFailed };
    default:
        return { AppController::kNoAlert, AppController::kNoAlert };
    }
}

// A driver interface that could not be made has nothing to offer and nothing to do: it answers no, and
// success.

bool AskDriver(bool (DriverInterface::*question)() const)
{
    const DriverInterface* const driver = DriverInterface::driverInterfacePtr();
    return driver != nullptr && (driver->*question)();
}

OSStatus RunDriver(OSStatus (DriverInterface::*step)())
{
    DriverInterface* const driver = DriverInterface::driverInterfacePtr();
    return driver != nullptr ? (driver->*step)() : OSStatus { noErr };
}

}

AppController* AppController::appControllerPtr()
{
    return dynamic_cast<AppController*>(ZEK_AppController::appControllerPtr());
}

AppController::AppController(FrontEnd& frontEnd)
    : AppControllerBase(frontEnd)
{
}

AppController* AppController::init(FrontEnd& frontEnd)
{
    auto* const controller = new AppController(frontEnd);
    // The back ends look for the shared controller while they are made.
    registerShared(std::unique_ptr<ZEK_AppController>(controller));
    controller->chooseOperation();
    return controller;
}

void AppController::chooseOperation()
{
    Preferences::init();
    const AgentInstaller* const agent = AgentInstaller::init();
    if (DriverInterface::init() == nullptr)
        return;
    if (agent->canInstall())
        fOperation = kInstall;
    else
        fOperation = agent->canUpdate() ? kUpdate : kNothingToDo;
    fCanUninstall = !agent->canInstall();
}

void AppController::awakeFromNib()
{
    frontEnd().setMenuTitle(kAboutItem, LocalizedString(CFSTR("kAboutMenuItem")));
    frontEnd().setMenuTitle(kUninstallItem, LocalizedString(CFSTR("kUninstallMenuItem")));
    frontEnd().setMenuTitle(kQuitItem, LocalizedString(CFSTR("kQuitMenuItem")));
    frontEnd().setMenuTitle(kHelpMenu, LocalizedString(CFSTR("kHelpMenu")));
    frontEnd().setMenuTitle(kHelpItem, LocalizedString(CFSTR("kHelpMenuItem")));
}

void AppController::applicationDidFinishLaunching()
{
    fCurrentState = kCheckLicense;
    goToNextState();
}

void AppController::goToNextState()
{
    while (runState()) { }
}

/// Does what the current state does. @return whether another state follows at once.
bool AppController::runState()
{
    frontEnd().stateEntered(fCurrentState);
    switch (fCurrentState) {
    case kCheckLicense:
        return enter(Preferences::preferencesPtr()->lastDisplayedVersionOfEndUserLicense() == kLicenseVersion
                ? kShowInstallWindow
                : kShowLicense);
    case kShowLicense:
        frontEnd().showLicenseWindow();
        return kLeaveLoop;
    case kShowInstallWindow:
        frontEnd().showInstallWindow();
        fCanShowAboutWindow = true;
        return enter(fOperation == kNothingToDo ? kOfferDriver : kWaitForUser);
    case kOfferDriver:
        return enter(stateAfterDriverOffers());
    case kInstallAgent:
        return enter(
            stateAfterAgentStep(AgentInstaller::agentInstallerPtr()->install(), kInstallDriverAfterAgent));
    case kUpdateAgent:
        return enter(
            stateAfterAgentStep(AgentInstaller::agentInstallerPtr()->update(), kUpdateDriverAfterAgent));
    case kInstallDriverAfterAgent:
        runDriverStep(&DriverInterface::install);
        return enter(kReport);
    case kUpdateDriverAfterAgent:
        runDriverStep(&DriverInterface::update);
        return enter(kReport);
    case kUninstallAgent:
        return enter(stateAfterAgentStep(
            AgentInstaller::agentInstallerPtr()->uninstallAndIsUpdating(false), kUninstallDriver));
    case kUninstallDriver:
        fError = RunDriver(&DriverInterface::uninstall);
        return enter(kReport);
    case kReport:
        displayCompletionDialog();
        return enter(AskDriver(&DriverInterface::restartRequired) ? kRestart : kQuit);
    case kRestart:
        frontEnd().restart();
        quit();
        return kLeaveLoop;
    case kQuit:
        quit();
        return kLeaveLoop;
    default:
        return kLeaveLoop;
    }
}

bool AppController::enter(State next)
{
    fCurrentState = next;
    return true;
}

/// Offers the driver alone when the agent needs nothing. One offer at most: who declines an installation is
/// not asked about an update.
AppController::State AppController::stateAfterDriverOffers()
{
    if (AskDriver(&DriverInterface::canInstall)) {
        if (runAlertPanel(kOfferDriverInstall) != kConfirmed)
            return kWaitForUser;
        fOperation = kInstallDriver;
        return kInstallDriverAfterAgent;
    }
    if (AskDriver(&DriverInterface::canUpdate) && runAlertPanel(kOfferDriverUpdate) == kConfirmed) {
        fOperation = kUpdateDriver;
        return kUpdateDriverAfterAgent;
    }
    return kWaitForUser;
}

/// A failed agent step skips the driver and is reported at once.
AppController::State AppController::stateAfterAgentStep(OSStatus status, State onSuccess)
{
    fError = status;
    return status == noErr ? onSuccess : kReport;
}

/// The state decides which step it is; both answers only decide whether there is one.
void AppController::runDriverStep(OSStatus (DriverInterface::*step)())
{
    if (AskDriver(&DriverInterface::canInstall) || AskDriver(&DriverInterface::canUpdate))
        fError = RunDriver(step);
}

void AppController::licenseAcceptedByUser(bool accepted)
{
    fCurrentState = accepted ? kShowInstallWindow : kQuit;
}

void AppController::prepareToStartOperation()
{
    switch (fOperation) {
    case kInstall:
        fCurrentState = kInstallAgent;
        break;
    case kUpdate:
        fCurrentState = kUpdateAgent;
        break;
    case kUninstall:
        fCurrentState = kUninstallAgent;
        break;
    default:
        break; // the machine goes on waiting
    }
}

void AppController::prepareToQuit() { fCurrentState = kQuit; }

bool AppController::validateMenuItem(int32_t tag) const
{
    switch (tag) {
    case kAboutItem:
        return fCanShowAboutWindow;
    case kUninstallItem:
        return fCanUninstall;
    default:
        return true;
    }
}

void AppController::handleMenuSelection(int32_t tag)
{
    if (tag == kAboutItem)
        frontEnd().showAboutWindow();
    if (tag != kUninstallItem)
        return;
    fOperation = kUninstall;
    prepareToStartOperation();
    goToNextState();
}

uint32_t AppController::operation() const { return fOperation; }

OSStatus AppController::error() const { return fError; }

std::string AppController::productNamePtr() const { return "ZEK Velmora Installer"; }

void AppController::displayCompletionDialog()
{
    const CompletionAlerts alerts = CompletionAlertsFor(fOperation);
    runAlertPanel(fError == noErr ? alerts.succeeded : alerts.failed);
}

int32_t AppController::runAlertPanel(int32_t number)
{
    return number == kNoAlert ? 0 : frontEnd().runAlertPanel(number);
}

void AppController::quit()
{
    frontEnd().terminate();
    fCurrentState = kIdle; // a window that closes while the application ends must not start anything again
}
