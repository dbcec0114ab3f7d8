#include "tests/windows/Person.h"

#include "app/WindowFrontEnd.h"
#include "settings/Preferences.h"
#include "ui/framework/ZEK_Window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QTimer>
#include <QtTest/QTest>
#include <algorithm>
#include <cstdlib>

namespace fs = std::filesystem;

namespace {

constexpr int kTick = 10; // milliseconds
constexpr int kPatience = 1000; // ticks

PersonTest* gPerson = nullptr;

/// Has the mouse pressed and released as the desktop tells it: whatever lies there on the screen gets it.
void ClickAt(const QWidget& view, const QPoint& position)
{
    const QWidget& top = *view.window();
    QTest::mouseClick(top.windowHandle(), Qt::LeftButton, {}, view.mapTo(&top, position));
}

/// The window that a desktop would give the keyboard to.
ZEK_Window* FrontWindow()
{
    if (QWidget* const modal = QApplication::activeModalWidget())
        return qobject_cast<ZEK_Window*>(modal);
    if (QWidget* const active = QApplication::activeWindow(); active != nullptr && active->isVisible())
        return qobject_cast<ZEK_Window*>(active);
    const std::vector<ZEK_Window*> windows = ZEK_Window::windows();
    const auto open = std::find_if(windows.begin(), windows.end(), std::mem_fn(&QWidget::isVisible));
    return open != windows.end() ? *open : nullptr;
}

class ShowObserver : public QObject {
public:
    ShowObserver(QObject* parent, std::function<void(const std::string&)> hasShown)
        : QObject(parent)
        , fHasShown(std::move(hasShown))
    {
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<ZEK_Window*>(watched) != nullptr)
            fHasShown(watched->objectName().toStdString());
        return false;
    }

private:
    std::function<void(const std::string&)> fHasShown;
};

}

WindowsTest::WindowsTest()
{
    speak("en_US.UTF-8");
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", "none:", 1); // the desktop's colours are no part of this
    const fs::path runtimeFolder = volume.root() / "private/tmp/runtime";
    fs::create_directory(runtimeFolder);
    fs::permissions(runtimeFolder, fs::perms::owner_all);
    setenv("XDG_RUNTIME_DIR", runtimeFolder.c_str(), 1);
    fs::copy(INSTALLER_BUNDLE "/Contents/Resources", volume.resources(), fs::copy_options::recursive);
    fs::copy(INSTALLER_BUNDLE "/Contents/Info.plist", volume.installer() / "Contents/Info.plist");
    volume.recordDriverTool().recordTool("/bin/launchctl").recordTool("/tools/HelpViewer");
    setenv("HOST_TOOLS_FOLDER", (volume.root() / "tools").c_str(), 1);
}

void WindowsTest::speak(const std::string& locale) { setenv("LC_ALL", locale.c_str(), 1); }

void WindowsTest::prepare(const std::string& agentVersion, const std::string& driverVersion)
{
    fs::remove_all(volume.agent());
    fs::remove_all(volume.extensions() / "ZEKDockChargingSupport.kext");
    if (!agentVersion.empty())
        volume.installAgent(agentVersion);
    if (!driverVersion.empty())
        volume.installDriver(driverVersion);
}

void WindowsTest::acceptLicense() { Preferences::init()->setLastDisplayedVersionOfEndUserLicense(1); }

void PersonTest::when(const std::string& nib, std::function<void()> act)
{
    fSteps.push_back({ nib, std::move(act) });
}

int PersonTest::run()
{
    std::string name = "zek-velmora-installer";
    char* arguments[] = { name.data(), nullptr };
    gPerson = this;
    qAddPreRoutine(begin);
    return RunWithWindows(1, arguments);
}

/// Called while the installer makes its QApplication.
void PersonTest::begin()
{
    auto* const timer = new QTimer(qApp);
    timer->setSingleShot(true);
    // Anew each time: a step may run an alert, in which a timer that has not returned from it would not go off again.
    QObject::connect(timer, &QTimer::timeout, timer, [timer] {
        timer->start(kTick);
        gPerson->proceed();
    });
    timer->start(kTick);
    // An event that is sent here has others handled with it, which the real end leaves undone. So what comes up after the
    // last step does not count.
    qApp->installEventFilter(new ShowObserver(qApp, [](const std::string& nib) {
        if (!gPerson->fSteps.empty())
            gPerson->shown.push_back(nib);
    }));
}

void PersonTest::proceed()
{
    ZEK_Window* const front = FrontWindow();
    if (front != nullptr && !front->isActiveWindow())
        front->activateWindow();
    if (++fIdleTicks > kPatience) {
        ADD_FAILURE() << "waited in vain for "
                      << (fSteps.empty() ? "the end" : "\"" + fSteps.front().nib + '"') << "; there was \""
                      << (front != nullptr ? front->objectName().toStdString() : "nothing") << '"';
        fSteps.clear();
        QCoreApplication::exit(-1);
        return;
    }
    if (fSteps.empty() || front == nullptr || !front->isActiveWindow()
        || front->objectName() != fSteps.front().nib.c_str())
        return;
    const std::function<void()> act = std::move(fSteps.front().act);
    fSteps.pop_front();
    fIdleTicks = 0;
    act();
}

ZEK_Window& PersonTest::window()
{
    ZEK_Window* const front = FrontWindow();
    if (front == nullptr)
        qFatal("there is no window");
    return *front;
}

QWidget& PersonTest::control(const char* name)
{
    auto* const view = window().findChild<QWidget*>(name);
    if (view == nullptr)
        qFatal("the window has no %s", name);
    return *view;
}

QString PersonTest::text(const char* label) { return control(label).property("text").toString(); }

bool PersonTest::isChecked(const char* button) { return control(button).property("checked").toBool(); }

void PersonTest::click(const char* name, Qt::Alignment side)
{
    const QWidget& view = control(name);
    const QPoint center = view.rect().center();
    ClickAt(view, side == Qt::AlignLeft ? QPoint(view.height() / 2, center.y()) : center);
}

void PersonTest::drag(const char* name)
{
    const QWidget& view = control(name);
    QWindow* const screen = window().windowHandle();
    const QPoint start = view.mapTo(&window(), QPoint(0, view.height() / 2));
    const QPoint end = start + QPoint(view.width() - 1, 0);
    QTest::mousePress(screen, Qt::LeftButton, {}, start);
    QTest::mouseMove(screen, (start + end) / 2);
    QTest::mouseMove(screen, end);
    QTest::mouseRelease(screen, Qt::LeftButton, {}, end);
}

void PersonTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(window().windowHandle(), key, modifiers);
}

void PersonTest::closeByTitleBar()
{
    QCloseEvent
        wish; // to the toolkit's window, as the desktop's wish; close() there would be the program's own
    QCoreApplication::sendEvent(window().windowHandle(), &wish);
}

void PersonTest::bringToFront(const std::string& nib)
{
    for (QWidget* const top : QApplication::topLevelWidgets()) {
        if (top->objectName().toStdString() == nib)
            top->activateWindow();
    }
}

bool PersonTest::choose(const QString& menu, const QString& item)
{
    const QMenuBar& bar = *window().findChild<QMenuBar*>();
    for (QAction* const title : bar.actions()) {
        if (title->text() == menu)
            ClickAt(bar, bar.actionGeometry(title).center());
    }
    auto* const open = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (open == nullptr)
        qFatal("the menu does not open");
    for (QAction* const action : open->actions()) {
        if (action->text() != item)
            continue;
        const bool isEnabled = action->isEnabled();
        ClickAt(*open, open->actionGeometry(action).center());
        open->close();
        return isEnabled;
    }
    qFatal("the menu has no such item");
}

void PersonTest::chooseUnseen(const QString& item)
{
    for (const QWidget* const top : QApplication::topLevelWidgets()) {
        for (QAction* const action : top->actions()) {
            if (action->text() == item)
                action->trigger();
        }
    }
}
