#include "app/WindowFrontEnd.h"

#include "app/AppController.h"
#include "install/RestartMac.h"
#include "ui/framework/Accessibility.h"
#include "ui/framework/Help.h"
#include "ui/framework/Modal.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/windows/AboutWindowController.h"
#include "ui/windows/DialogWindowController.h"
#include "ui/windows/InstallWindowController.h"
#include "ui/windows/LicenseWindowController.h"
#include "util/Bundle.h"
#include "util/CFText.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QTimer>

namespace {

void SetIcon()
{
    const std::string file
        = MainBundleResources() + "/" + StdString(MainBundleText(CFSTR("CFBundleIconFile")));
    QApplication::setWindowIcon(QIcon(QFile::decodeName(file.c_str())));
}

int Run()
{
    InstallAccessibility();
    WindowFrontEnd frontEnd;
    AppController* const controller = AppController::init(frontEnd);
    controller->awakeFromNib();
    // Only in the main loop can alerts run and the application end.
    QTimer launch;
    launch.setSingleShot(true);
    QObject::connect(&launch, &QTimer::timeout, [controller, &frontEnd] {
        controller->applicationDidFinishLaunching();
        frontEnd.ensureReachable();
    });
    launch.start();
    return QApplication::exec();
}

}

int RunWithWindows(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false); // the menu stays
    SetIcon();
    const int status = Run();
    // Windows that are open to the last belong to controllers that outlive the toolkit.
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<ZEK_Window*>(widget) != nullptr)
            delete widget;
    }
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
