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

template <class Controller, void (*kShow)()> void WindowOurs(benchmark::State& state)
{
    RunRounds(
        state,
        [] {
            kShow();
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

PeerLoader* gPeerLoader = nullptr; ///< one for all, since making one looks for plug-ins

/// No texts, no images, no agreement: only the controls as the .ui has them.
void WindowPeer(benchmark::State& state, const std::string& nibName)
{
    const QString file = QFile::decodeName((MainBundleResources() + "/" + nibName + ".ui").c_str());
    std::unique_ptr<QWidget> window;
    RunRounds(
        state,
        [&] {
            QFile nib(file);
            if (nib.open(QIODevice::ReadOnly))
                window.reset(gPeerLoader->load(&nib));
            if (window != nullptr)
                window->show();
            return window != nullptr;
        },
        [&window] {
            window->close();
            window.reset();
        });
}

BENCHMARK_TEMPLATE(WindowOurs, LicenseWindowController, LicenseWindowController::showLicenseWindow)
    ->Name("open, paint, close the license window/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowPeer, license, "LicenseWindow")
    ->Name("open, paint, close the license window/QUiLoader")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(WindowOurs, InstallWindowController, InstallWindowController::showInstallWindow)
    ->Name("open, paint, close the install window/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowPeer, install, "InstallWindow")
    ->Name("open, paint, close the install window/QUiLoader")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(WindowOurs, AboutWindowController, AboutWindowController::showAboutWindow)
    ->Name("open, paint, close the About window/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowPeer, about, "AboutWindow")
    ->Name("open, paint, close the About window/QUiLoader")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(AlertOurs)->Name("open, paint, close an alert/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowPeer, alert, "DialogWindow")
    ->Name("open, paint, close an alert/QUiLoader")
    ->Unit(benchmark::kMillisecond);

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
    PeerLoader loader;
    gPeerLoader = &loader;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    gPeerLoader = nullptr;
    return EXIT_SUCCESS;
}
