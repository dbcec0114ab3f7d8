#include "tests/framework/FrameworkTest.h"

#include "ui/framework/Accessibility.h"
#include "ui/framework/Modal.h"

#include <CoreFoundation/CoreFoundation.h>
#include <QApplication>
#include <QTest>
#include <QTimer>

TestApplication& TestApplication::init(FrontEnd& frontEnd)
{
    registerShared(std::unique_ptr<ZEK_AppController>(new TestApplication(frontEnd)));
    return dynamic_cast<TestApplication&>(*appControllerPtr());
}

FrameworkTest::FrameworkTest()
    : application(TestApplication::init(frontEnd))
{
    volume.makeInstaller("1.0");
    QFont font = QApplication::font();
    font.setPointSizeF(7);
    QApplication::setFont(font);
    setDark(false);
    InstallAccessibility();
    RegisterNibClass("FixedButton", [](QWidget* parent) { return new FixedButton(parent); });
}

FrameworkTest::~FrameworkTest()
{
    TestApplication::end();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void FrameworkTest::useLargeText()
{
    QFont font = QApplication::font();
    font.setPointSizeF(23);
    QApplication::setFont(font);
    ASSERT_GT(PixelsPerPoint(), 1.5);
}

void FrameworkTest::setDark(bool dark) { QApplication::setPalette(QPalette(dark ? Qt::black : Qt::white)); }

void FrameworkTest::tellAppearanceChange()
{
    CFNotificationCenterPostNotification(CFNotificationCenterGetDistributedCenter(),
        CFSTR("AppleInterfaceThemeChangedNotification"), nullptr, nullptr, true);
}

std::string FrameworkTest::control(
    const std::string& className, const std::string& name, const QRect& frame, const std::string& properties)
{
    const auto element = [](const std::string& tag, int value) {
        return "<" + tag + ">" + std::to_string(value) + "</" + tag + ">";
    };
    return "<widget class=\"" + className + "\" name=\"" + name + "\"><property name=\"geometry\"><rect>"
        + element("x", frame.x()) + element("y", frame.y()) + element("width", frame.width())
        + element("height", frame.height()) + "</rect></property>" + properties + "</widget>";
}

std::string FrameworkTest::property(const std::string& name, const std::string& value)
{
    return "<property name=\"" + name + "\" stdset=\"0\"><string>" + value + "</string></property>";
}

void FrameworkTest::writeNib(
    const std::string& name, const std::string& controls, const std::string& windowProperties) const
{
    const QRect whole(0, 0, 300, 200);
    const std::string content = control("QWidget", "contentView", whole, controls);
    TestVolume::write(volume.resources() / (name + ".ui"),
        "<ui version=\"4.0\">" + control("ZEK_Window", name, whole, windowProperties + content) + "</ui>");
}

void FrameworkTest::activate(QWidget& window)
{
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QCoreApplication::processEvents();
}

void FrameworkTest::holdKey(QWidget& window, Qt::Key key)
{
    if (!qt_sendShortcutOverrideEvent(&window, 0, key, Qt::NoModifier, "", true))
        QTest::keyPress(&window, key);
}

int32_t FrameworkTest::runModal(ZEK_Window& window, const std::function<void()>& action)
{
    QTimer watchdog;
    watchdog.setSingleShot(true);
    watchdog.callOnTimeout([] { StopModalWithCode(-99); });
    watchdog.start(10000);
    QTimer start;
    start.setSingleShot(true);
    start.callOnTimeout(action);
    start.start(0);
    return RunModalForWindow(window);
}
