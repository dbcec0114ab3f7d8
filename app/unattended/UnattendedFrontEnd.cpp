#include "app/unattended/UnattendedFrontEnd.h"

#include "app/AppController.h"
#include "install/RestartMac.h"
#include "settings/Preferences.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

struct Line {
    uint32_t number;
    const char* text;
};

/// What begins with a state of the machine.
constexpr Line kStateLines[] = {
    { AppController::kShowLicense, "The license agreement has to be accepted." },
    { AppController::kInstallAgent, "Installing the agent." },
    { AppController::kUpdateAgent, "Updating the agent." },
    { AppController::kInstallDriverAfterAgent, "Installing the driver where it is missing or differs." },
    { AppController::kUpdateDriverAfterAgent, "Updating the driver where it is missing or differs." },
    { AppController::kUninstallAgent, "Removing the agent." },
    { AppController::kUninstallDriver, "Removing the driver." },
    { AppController::kRestart, "Requesting a restart." },
};

/// What an alert tells.
constexpr Line kAlertLines[] = {
    { AppController::kInstallSucceeded, "The installation was carried out." },
    { AppController::kInstallFailed, "The installation failed." },
    { AppController::kUpdateSucceeded, "The update was carried out." },
    { AppController::kUpdateFailed, "The update failed." },
    { AppController::kUninstallSucceeded, "The removal was carried out." },
    { AppController::kUninstallFailed, "The removal failed." },
    { AppController::kOfferDriverInstall, "The driver is not installed; --driver installs it." },
    { AppController::kOfferDriverUpdate, "The installed driver is another version; --driver replaces it." },
};

template <size_t Size> const char* TextOf(const Line (&lines)[Size], uint32_t number)
{
    const Line* const line
        = std::find_if(lines, lines + Size, [number](const Line& each) { return each.number == number; });
    return line != lines + Size ? line->text : nullptr;
}

}

UnattendedFrontEnd::UnattendedFrontEnd(const Options& options, FILE* progress)
    : fOptions(options)
    , fProgress(progress)
{
}

void UnattendedFrontEnd::progress(const std::string& line) const
{
    std::fprintf(fProgress, "%s\n", line.c_str());
    std::fflush(fProgress);
}

void UnattendedFrontEnd::answerWindows(AppController& controller)
{
    while (!fTerminated && fOpenWindow != Window::none) {
        if (std::exchange(fOpenWindow, Window::none) == Window::license)
            answerLicense(controller);
        else
            answerInstallWindow(controller);
        controller.goToNextState();
    }
}

void UnattendedFrontEnd::answerLicense(AppController& controller)
{
    fLicenseRefused = !fOptions.acceptLicense;
    controller.licenseAcceptedByUser(fOptions.acceptLicense);
    if (fOptions.acceptLicense)
        Preferences::preferencesPtr()->setLastDisplayedVersionOfEndUserLicense(
            AppController::kLicenseVersion);
}

void UnattendedFrontEnd::answerInstallWindow(AppController& controller) const
{
    // The box that the window shows ticked is seen by nobody here: only a refusal says something, and it
    // counts even where the window would have no box.
    if (fOptions.noUsageData)
        Preferences::preferencesPtr()->setCollectUsageInfo(false);
    if (!wantsOperation(controller.operation())) {
        controller.prepareToQuit();
        return;
    }
    controller.prepareToStartOperation();
}

bool UnattendedFrontEnd::wantsOperation(uint32_t operation) const
{
    if (operation == AppController::kInstall)
        return fOptions.command == Options::Command::install;
    return operation == AppController::kUpdate;
}

void UnattendedFrontEnd::showLicenseWindow() { fOpenWindow = Window::license; }

void UnattendedFrontEnd::showInstallWindow() { fOpenWindow = Window::install; }

int32_t UnattendedFrontEnd::runAlertPanel(int32_t number)
{
    if (const char* const text = TextOf(kAlertLines, static_cast<uint32_t>(number)))
        progress(text);
    if (number == AppController::kOfferDriverInstall || number == AppController::kOfferDriverUpdate)
        return fOptions.driver ? 1 : 2;
    fOperationReported = true;
    return 1;
}

void UnattendedFrontEnd::stateEntered(uint32_t state)
{
    if (const char* const text = TextOf(kStateLines, state))
        progress(text);
}

void UnattendedFrontEnd::restart()
{
    fRestartNeeded = true;
    if (RestartMac() != 0)
        progress("The restart could not be requested.");
}

void UnattendedFrontEnd::terminate() { fTerminated = true; }

// Nothing of these can be seen without windows, and nothing here chooses them.
void UnattendedFrontEnd::showAboutWindow() { }
void UnattendedFrontEnd::setMenuTitle(int32_t, const std::string&) { }
void UnattendedFrontEnd::showHelp(const std::string&, const std::optional<std::string>&) { }
bool UnattendedFrontEnd::appearanceIsDark() const { return false; }
