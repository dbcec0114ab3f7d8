#pragma once

#include "app/AppControllerBase.h"
#include <CoreServices/CoreServices.h>

class AgentInstaller;
class DriverInterface;

/// Drives the installer: decides at start what to offer, leads through agreement and install window, runs the
/// operation against the back ends, reports the outcome once, and quits or restarts. All of it is one
/// numbered state and one loop. Main thread only; back ends run inside the loop and block it.
class AppController : public AppControllerBase {
public:
    enum Operation : uint32_t {
        kNothingToDo = 0, ///< the agent is installed and current
        kInstall = 1, ///< the agent, then the driver
        kInstallDriver = 2, ///< the driver only
        kUpdate = 3, ///< the agent, then the driver
        kUpdateDriver = 4, ///< the driver only
        kUninstall = 5,
    };
    enum State : uint32_t {
        kIdle = 0,
        kCheckLicense = 1,
        kShowLicense = 2, ///< waits for the agreement window
        kShowInstallWindow = 3,
        kOfferDriver = 4,
        kWaitForUser = 5, ///< waits for the install window or the menu
        kInstallAgent = 6,
        kUpdateAgent = 7,
        kInstallDriverAfterAgent = 8,
        kUpdateDriverAfterAgent = 9,
        kUninstallAgent = 10,
        kUninstallDriver = 11,
        kReport = 12,
        kQuit = 13,
        kRestart = 14,
    };
    enum Alert : int32_t {
        kNoAlert = 0,
        kInstallSucceeded = 1,
        kInstallFailed = 2,
        kUpdateSucceeded = 3,
        kUpdateFailed = 4,
        kUninstallSucceeded = 5,
        kUninstallFailed = 6,
        kOfferDriverInstall = 7,
        kOfferDriverUpdate = 8,
    };
    enum MenuTag : int32_t {
        kApplicationMenu = 100,
        kAboutItem = 101,
        kUninstallItem = 102,
        kQuitItem = 103,
        kHelpMenu = 200,
        kHelpItem = 201,
    };

    /// The version of the agreement that this installer shows.
    static constexpr uint32_t kLicenseVersion = 1;

    /// The shared controller; null before the first.
    static AppController* appControllerPtr();

    /// Makes the shared controller and the back ends, and decides from what is installed what to offer.
    /// @param frontEnd has to live as long as the controller is used. @return borrowed; valid until the next
    /// init().
    static AppController* init(FrontEnd& frontEnd);

    void awakeFromNib(); ///< titles the menus in the user's language
    void applicationDidFinishLaunching(); ///< starts the machine

    /// Runs the machine until it waits for the user or the application ends. Called at the start and after
    /// each of the user's answers.
    void goToNextState();

    // The user's answers. None of them advances the machine: the window that took the answer does so by
    // closing.
    void licenseAcceptedByUser(bool accepted);
    void prepareToStartOperation();
    void prepareToQuit();

    bool validateMenuItem(int32_t tag) const; ///< whether the item can be chosen now
    void handleMenuSelection(int32_t tag); ///< About or Uninstall; others do nothing

    /// What the install window offers or the machine is doing.
    uint32_t operation() const;
    /// The status of the last back-end step; noErr before the first.
    OSStatus error() const;
    std::string productNamePtr() const override;

    /// The one alert that tells the outcome of the operation; none when there was no operation.
    void displayCompletionDialog();
    /// @return 1 to 3 for the button used; 0 for alert number 0 and for an alert that was not shown.
    int32_t runAlertPanel(int32_t number);
    void quit();

private:
    explicit AppController(FrontEnd& frontEnd);
    void chooseOperation();

    bool runState();
    bool enter(State next);
    State stateAfterDriverOffers();
    State stateAfterAgentStep(OSStatus status, State onSuccess);
    void runDriverStep(OSStatus (DriverInterface::*step)());

    bool fCanShowAboutWindow = false;
    bool fCanUninstall = true;
    OSStatus fError = 0;
    uint32_t fOperation = kNothingToDo;
    uint32_t fCurrentState = kIdle;
};
