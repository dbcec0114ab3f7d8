#pragma once

#include "app/FrontEnd.h"
#include "ui/windows/MainMenu.h"

#include <HostWindows/AppearanceFollower.h>

/// Faces the user with windows, alerts and a menu. One object, while a QApplication lives. Main thread only.
class WindowFrontEnd : public FrontEnd {
public:
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

    /// Shows the menu by itself when no window could be opened. To be called once launched.
    void ensureReachable();

private:
    AppearanceFollower fAppearance;
    MainMenu fMenu;
};

/// Runs the installer with windows until the user ends it. Needs a display.
/// @return the exit status.
int RunWithWindows(int argc, char* argv[]);
