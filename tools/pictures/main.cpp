// pictures: saves a picture of each of the installer's windows, as they are for what is installed on the start-up volume.

#include "app/AppController.h"
#include "app/WindowFrontEnd.h"
#include "install/DriverInterface.h"
#include "ui/framework/Accessibility.h"
#include "ui/framework/Help.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/windows/AboutWindowController.h"
#include "ui/windows/DialogWindowController.h"
#include "ui/windows/InstallWindowController.h"
#include "ui/windows/LicenseWindowController.h"

#include <HelpViewer/HelpBook.h>
#include <HelpViewer/HelpWindow.h>
#include <Host/HostPath.h>
#include <QApplication>
#include <QPixmap>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr char kUsage[] = "usage: pictures FILE-PREFIX FILE-SUFFIX [--dark] [--driver-changed] WINDOW...\n"
                          "windows: license install about menu help alert1 ... alert8\n"
                          "Windows are pictured in the order named, and each is closed again.\n";

class PictureBook {
public:
    PictureBook(QString prefix, QString suffix)
        : fPrefix(std::move(prefix))
        , fSuffix(std::move(suffix))
    {
    }

    /// @return whether there was such a window and its picture was saved.
    bool add(const std::string& name)
    {
        if (name == "license")
            return openAndSave<LicenseWindowController>(name, &LicenseWindowController::showLicenseWindow);
        if (name == "install")
            return openAndSave<InstallWindowController>(name, &InstallWindowController::showInstallWindow);
        if (name == "about")
            return openAndSave<AboutWindowController>(name, &AboutWindowController::showAboutWindow);
        if (name == "menu")
            return saveMenuWindow(name);
        if (name == "help")
            return saveHelp(name);
        return saveAlert(name);
    }

private:
    bool save(const std::string& name, QWidget& window)
    {
        QCoreApplication::processEvents(); // to the size and in the colours in which the user sees it
        return window.grab().save(fPrefix + QString::fromStdString(name) + fSuffix + ".png");
    }

    template <class Controller> bool openAndSave(const std::string& name, const std::function<void()>& show)
    {
        show();
        if (Controller::openController() == nullptr)
            return false;
        ZEK_Window* const window = Controller::openController()->window();
        const bool isSaved = save(name, *window);
        window->hide();
        return isSaved;
    }

    bool saveAlert(const std::string& name)
    {
        const std::string prefix = "alert";
        if (name.size() != prefix.size() + 1 || name.compare(0, prefix.size(), prefix) != 0)
            return false;
        const auto dialog = DialogWindowController::initWithAlertPanelNumber(name.back() - '0');
        if (dialog == nullptr)
            return false;
        dialog->showWindow();
        const bool isSaved = save(name, *dialog->window());
        dialog->close();
        return isSaved;
    }

    bool saveMenuWindow(const std::string& name)
    {
        QCoreApplication::processEvents();
        const std::vector<ZEK_Window*> windows = ZEK_Window::windows();
        const auto found = std::find_if(windows.begin(), windows.end(), std::mem_fn(&QWidget::isVisible));
        return found != windows.end() && save(name, **found);
    }

    bool saveHelp(const std::string& name)
    {
        std::string problem;
        const auto book = HelpBook::open(HelpBookFolder(), problem);
        if (!book)
            return false;
        HelpWindow window(*book);
        window.showPage(QString());
        window.show();
        return save(name, window);
    }

    QString fPrefix;
    QString fSuffix;
};

/// Takes an option out of the arguments. @return whether it was there.
bool Take(std::vector<std::string>& arguments, const char* option)
{
    return std::erase(arguments, option) > 0;
}

}

int main(int argc, char* argv[])
{
    HostEnterHome();
    const QApplication application(argc, argv);
    std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool isDark = Take(arguments, "--dark");
    const bool driverChanged = Take(arguments, "--driver-changed");
    if (arguments.size() < 3) {
        std::fputs(kUsage, stderr);
        return 64;
    }
    QApplication::setQuitOnLastWindowClosed(false);
    InstallAccessibility();
    WindowFrontEnd frontEnd;
    AppController::init(frontEnd)->awakeFromNib();
    QApplication::setPalette(ApplicationPalette(isDark));
    if (driverChanged && DriverInterface::driverInterfacePtr()->install() != noErr)
        return 1;

    PictureBook book(QString::fromStdString(arguments[0]), QString::fromStdString(arguments[1]));
    for (size_t index = 2; index < arguments.size(); ++index) {
        if (book.add(arguments[index]))
            continue;
        std::fprintf(stderr, "pictures: no picture of \"%s\"\n", arguments[index].c_str());
        return 1;
    }
    std::fflush(stderr);
    std::_Exit(0); // windows that are still open would go on with the installation as they close
}
