#include "app/WindowFrontEnd.h"

#include "app/AppController.h"
#include "install/RestartMac.h"
#include "ui/framework/Accessibility.h"
#include "ui/framework/Help.h"
#include "ui/framework/Images.h"
#include "ui/framework/Modal.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/windows/AboutWindowController.h"
#include "ui/windows/DialogWindowController.h"
#include "ui/windows/InstallWindowController.h"
#include "ui/windows/LicenseWindowController.h"
#include "util/Bundle.h"
#include "util/CFText.h"

#include <Host/HostDisplay.h>
#include <QApplication>
#include <QIcon>
#include <QTimer>
#include <chrono>

namespace {

constexpr std::chrono::milliseconds kIconDelay(100);

/// Reading it takes as long as making a window, so it comes once the first one is there.
void SetIcon()
{
    constexpr QSizeF largest(64, 64); // that desktops show beside a window's name
    const std::string name = StdString(MainBundleText(CFSTR("CFBundleIconFile")));
    QApplication::setWindowIcon(ImageNamed(name, largest, qApp->devicePixelRatio()));
}

/// Windows that are open to the last belong to controllers that outlive the toolkit.
void DeleteOpenWindows()
{
    for (const ZEK_Window* const window : ZEK_Window::windows())
        delete window;
}

int Run()
{
    InstallAccessibility();
    WindowFrontEnd frontEnd;
    AppController* const controller = AppController::init(frontEnd);
    controller->awakeFromNib();
    // Only in the main loop can alerts run and the application end.
    QTimer launch;
    QTimer icon;
    launch.setSingleShot(true);
    icon.setSingleShot(true);
    QObject::connect(&launch, &QTimer::timeout, [controller, &frontEnd, &icon] {
        icon.start(kIconDelay);
        controller->applicationDidFinishLaunching();
        frontEnd.ensureReachable();
    });
    QObject::connect(&icon, &QTimer::timeout, SetIcon);
    launch.start();
    return QApplication::exec();
}

}

int RunWithWindows(int argc, char* argv[])
{
    HostPrepareForWindows();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false); // the menu stays
    QGuiApplication::setDesktopFileName("com.zek.Velmora.Installer"); // where desktops have the icon from
    const int status = Run();
    DeleteOpenWindows();
    return status;
}

void WindowFrontEnd::showLicenseWindow() { LicenseWindowController::showLicenseWindow(); }

void WindowFrontEnd::showInstallWindow() { InstallWindowController::showInstallWindow(); }

void WindowFrontEnd::showAboutWindow() { AboutWindowController::showAboutWindow(); }

int32_t WindowFrontEnd::runAlertPanel(int32_t number)
{
    const std::unique_ptr<DialogWindowController> dialog
        = DialogWindowController::initWithAlertPanelNumber(number);
    if (dialog == nullptr || dialog->suppressDialog())
        return 0;
    dialog->showWindow();
    return RunModalForWindow(*dialog->window());
}

void WindowFrontEnd::setMenuTitle(int32_t tag, const std::string& title) { fMenu.setTitle(tag, title); }

void WindowFrontEnd::showHelp(const std::string& book, const std::optional<std::string>& anchor)
{
    if (anchor)
        OpenHelpAnchor(*anchor, book);
    else
        ShowHelp("");
}

void WindowFrontEnd::ensureReachable() { fMenu.updateMenuWindow(); }

bool WindowFrontEnd::appearanceIsDark() const { return AppearanceIsDark(); }

void WindowFrontEnd::stateEntered(uint32_t) { }

void WindowFrontEnd::restart() { RestartMac(); }

void WindowFrontEnd::terminate() { QCoreApplication::exit(0); }
