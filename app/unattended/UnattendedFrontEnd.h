#pragma once

#include "app/FrontEnd.h"
#include "app/unattended/Options.h"
#include <CoreServices/CoreServices.h>
#include <cstdio>

class AppController;

/// Stands for the user: takes the windows and alerts of the installer and answers them as the command line's
/// flags say, with one line of progress for each step.
class UnattendedFrontEnd : public FrontEnd {
public:
    /// @param options outlive this object. @param progress borrowed; where the lines go.
    UnattendedFrontEnd(const Options& options, FILE* progress);

    /// Answers one window after the other until the application has ended or no window is open.
    void answerWindows(AppController& controller);
    void progress(const std::string& line) const;

    bool licenseRefused() const { return fLicenseRefused; }
    bool operationReported() const
    {
        return fOperationReported;
    } ///< an operation ran to its completion alert
    bool restartNeeded() const { return fRestartNeeded; } ///< whether or not it could be requested

    void showLicenseWindow() override;
    void showInstallWindow() override;
    void showAboutWindow() override;
    int32_t runAlertPanel(int32_t number) override;
    void setMenuTitle(int32_t tag, const std::string& title) override;
    void showHelp(const std::string& book, const std::optional<std::string>& anchor) override;
    bool appearanceIsDark() const override;
    void stateEntered(uint32_t state) override;
    void restart() override;
    void terminate() override;

private:
    enum class Window { none, license, install };

    void answerLicense(AppController& controller);
    void answerInstallWindow(AppController& controller) const;
    bool wantsOperation(uint32_t operation) const;

    const Options& fOptions;
    FILE* fProgress;
    Window fOpenWindow = Window::none;
    bool fTerminated = false;
    bool fLicenseRefused = false;
    bool fOperationReported = false;
    bool fRestartNeeded = false;
};
