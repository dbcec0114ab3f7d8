#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// What the application controller needs of whoever faces the user: windows, a script's flags, or a test.
/// Main thread only. A window is only opened here. What the user makes of it comes back later, never from
/// inside these calls, through the controller's licenseAcceptedByUser(), prepareToStartOperation() or
/// prepareToQuit(), then goToNextState().
class FrontEnd {
public:
    virtual ~FrontEnd() = default;

    virtual void showLicenseWindow() = 0;
    virtual void showInstallWindow() = 0;
    virtual void showAboutWindow() = 0;

    /// Shows the alert with this number, 1 to 8, and waits for its answer.
    /// @return 1 to 3 for the button used; 0 when the alert could not be shown, is suppressed, or was left
    /// otherwise.
    virtual int32_t runAlertPanel(int32_t number) = 0;

    /// Titles the menu item (or, for 200, the menu) with this tag.
    virtual void setMenuTitle(int32_t tag, const std::string& title) = 0;

    /// Opens a page of a help book, or the application's start page of help when there is no anchor.
    virtual void showHelp(const std::string& book, const std::optional<std::string>& anchor) = 0;

    /// Whether what the user sees is dark; no where there is nothing to see.
    virtual bool appearanceIsDark() const = 0;

    /// Told of every state of the installer before what it does is done.
    virtual void stateEntered(uint32_t state) = 0;

    virtual void restart() = 0; ///< ask the system to restart
    virtual void terminate() = 0; ///< end the application; it may return, and nothing more is done then

protected:
    FrontEnd() = default;
    FrontEnd(const FrontEnd&) = default;
    FrontEnd& operator=(const FrontEnd&) = default;
};
