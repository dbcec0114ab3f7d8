// Opens and closes each of the installer's windows, and the same .ui through the toolkit's own loader. Works on the
// start-up volume and main bundle that the environment names; bench/run prepares them.

#include "app/AppController.h"
#include "tests/support/RecordingFrontEnd.h"
#include "ui/windows/AboutWindowController.h"
#include "ui/windows/DialogWindowController.h"
#include "ui/windows/InstallWindowController.h"
#include "ui/windows/LicenseWindowController.h"
#include "util/Bundle.h"

#include <Host/HostPath.h>
#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>
#include <QtUiTools/QUiLoader>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>

namespace {

/// Counts how often windows are painted.
class PaintCounter : public QObject {
public:
    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && watched->isWidgetType()
            && static_cast<QWidget*>(watched)->isWindow())
            ++count;
        return false;
    }
};

PaintCounter* gPaintCounter = nullptr;

/// Runs one round after the other: `open` shows a window and answers it, or null when it cannot; `close` takes it away
/// again once it has been painted.
template <class Open, class Close> void RunRounds(benchmark::State& state, Open open, Close close)
{
    for ([[maybe_unused]] auto tick : state) {
        const int before = gPaintCounter->count;
        if (!open()) {
            state.SkipWithError("the window did not open");
            return;
        }
        while (gPaintCounter->count == before)
            QCoreApplication::processEvents();
        close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

template <class Controller> void WindowOurs(benchmark::State& state, void (*show)())
{
    RunRounds(
        state,
        [show] {
            show();
            return Controller::openController() != nullptr;
        },
        [] { Controller::openController()->close(); });
}

void AlertOurs(benchmark::State& state)
{
    std::unique_ptr<DialogWindowController> dialog;
    RunRounds(
        state,
        [&dialog] {
            dialog = DialogWindowController::initWithAlertPanelNumber(AppController::kInstallSucceeded);
            if (dialog != nullptr)
                dialog->showWindow();
            return dialog != nullptr;
        },
        [&dialog] {
            dialog->close();
            dialog.reset();
        });
}

/// The toolkit's loader, with its own classes in place of the framework's.
class PeerLoader : public QUiLoader {
public:
    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override
    {
        static const std::map<QString, QString> standIns {
            { "ZEK_Window", "QWidget" },
            { "ZEK_WindowHeaderView", "QWidget" },
            { "ClickableTextField", "QLabel" },
            { "HelpButton", "QPushButton" },
            { "InvisibleButton", "QPushButton" },
            { "LicenseTextView", "QTextBrowser" },
        };
        const auto found = standIns.find(className);
        return QUiLoader::createWidget(found != standIns.end() ? found->second : className, parent, name);
    }
};

/// No texts, no images, no agreement: only the controls as the .ui has them.
void WindowPeer(benchmark::State& state, PeerLoader& loader, const std::string& nibName)
{
    const QString file = QFile::decodeName((MainBundleResources() + "/" + nibName + ".ui").c_str());
    std::unique_ptr<QWidget> window;
    RunRounds(
        state,
        [&] {
            QFile nib(file);
            if (nib.open(QIODevice::ReadOnly))
                window.reset(loader.load(&nib));
            if (window != nullptr)
                window->show();
            return window != nullptr;
        },
        [&window] {
            window->close();
            window.reset();
        });
}

/// @param ours a function that takes the benchmark's state.
template <class Ours>
void RegisterPair(const std::string& name, Ours ours, PeerLoader& loader, const std::string& nibName)
{
    benchmark::RegisterBenchmark((name + "/ours").c_str(), ours)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((name + "/QUiLoader").c_str(), [&loader, nibName](benchmark::State& state) {
        WindowPeer(state, loader, nibName);
    })->Unit(benchmark::kMillisecond);
}

void RegisterAll(PeerLoader& loader)
{
    RegisterPair(
        "open, paint, close the license window",
        [](benchmark::State& state) {
            WindowOurs<LicenseWindowController>(state, LicenseWindowController::showLicenseWindow);
        },
        loader, "LicenseWindow");
    RegisterPair(
        "open, paint, close the install window",
        [](benchmark::State& state) {
            WindowOurs<InstallWindowController>(state, InstallWindowController::showInstallWindow);
        },
        loader, "InstallWindow");
    RegisterPair(
        "open, paint, close the About window",
        [](benchmark::State& state) {
            WindowOurs<AboutWindowController>(state, AboutWindowController::showAboutWindow);
        },
        loader, "AboutWindow");
    RegisterPair("open, paint, close an alert", AlertOurs, loader, "DialogWindow");
}

}

int main(int argc, char* argv[])
{
    if (std::getenv("ZEK_STARTUP_VOLUME") == nullptr) {
        std::fputs("window_bench: to be run by bench/run, which names a start-up volume\n", stderr);
        return EXIT_FAILURE;
    }
    HostEnterHome();
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    PaintCounter paintCounter;
    gPaintCounter = &paintCounter;
    qApp->installEventFilter(&paintCounter);
    // A controller that is never told that the application has launched does nothing when a window closes.
    RecordingFrontEnd frontEnd;
    AppController::init(frontEnd);
    PeerLoader loader; // one for all, since making one looks for plug-ins
    RegisterAll(loader);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}
