#include "tests/framework/FrameworkTest.h"
#include "ui/framework/InvisibleButton.h"
#include "ui/framework/Modal.h"

#include <QCloseEvent>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <gmock/gmock.h>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class WindowTest : public FrameworkTest {
protected:
    WindowTest()
    {
        writeNib("Window",
            control("FixedButton", "fCancel", { 200, 160, 80, 24 }, property("autoresizingMask", "minX maxY"))
                + control("QLineEdit", "fField", { 10, 10, 100, 24 }, property("autoresizingMask", "width")));
        writeNib("Closable", control("InvisibleButton", "fClose", { 0, 0, 0, 0 }),
            "<property name=\"closable\" stdset=\"0\"><bool>true</bool></property>");
        writeNib("WithInvisibleButton", control("InvisibleButton", "fClose", { 0, 0, 0, 0 }));
    }

    void show(const std::string& nib)
    {
        ASSERT_TRUE(controller.load(nib));
        controller.showWindow();
        activate(*controller.window());
    }

    /// Clicks the title bar's close button, as the desktop tells of it.
    static void closeFromOutside(const ZEK_Window& window)
    {
        QCloseEvent event;
        QCoreApplication::sendEvent(window.windowHandle(), &event);
        QCoreApplication::processEvents();
    }

    TestController controller;
};

}

TEST_F(WindowTest, ANibThatIsNoGoodLeavesNoWindowAndSaysWhy)
{
    TestVolume::write(
        volume.resources() / "Torn.ui", "<ui version=\"4.0\"><widget class=\"ZEK_Window\" name");
    TestVolume::write(
        volume.resources() / "Other.ui", "<ui version=\"4.0\">" + control("QWidget", "w", {}) + "</ui>");
    TestVolume::write(
        volume.resources() / "Empty.ui", "<ui version=\"4.0\">" + control("ZEK_Window", "w", {}) + "</ui>");
    struct Case {
        const char *nib, *outlet, *message;
    };
    for (const Case& c : { Case { "None", "", "None.ui" }, Case { "Torn", "", "Torn.ui" },
             Case { "Other", "", "Other.ui" }, Case { "Empty", "", "contentView" },
             Case { "Window", "fMissing", "fMissing" }, Case { "Window", "fField", "fField" } }) {
        TestController failing;
        failing.outlet = c.outlet;
        ::testing::internal::CaptureStderr();
        EXPECT_FALSE(failing.load(c.nib)) << c.nib;
        EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr(c.message));
        EXPECT_EQ(failing.window(), nullptr);
        EXPECT_EQ(failing.awakenings, 0);
        failing.showWindow();
        failing.close();
    }
}

TEST_F(WindowTest, AWindowIsAwokenOnceWhenItIsFirstAskedFor)
{
    ASSERT_TRUE(controller.load("Window"));
    EXPECT_EQ(controller.awakenings, 0);
    controller.showWindow();
    EXPECT_EQ(controller.window()->contentSize(), QSize(300, 200));
    EXPECT_EQ(controller.awakenings, 1);
    EXPECT_TRUE(controller.window()->isVisible());
    EXPECT_EQ(controller.window()->minimumSize(), controller.window()->maximumSize()) << "not resizable";
}

TEST_F(WindowTest, NibsGrowWithTheUsersText)
{
    useLargeText();
    controller.outlet = "fCancel";
    ASSERT_TRUE(controller.load("Window"));
    const double scale = PixelsPerPoint();
    EXPECT_EQ(controller.window()->contentSize(), (QSizeF(300, 200) * scale).toSize());
    EXPECT_NEAR(Frame(*controller.cancelButton).x, 200, 0.5 / scale);
    EXPECT_NEAR(Frame(*controller.cancelButton).y, 16, 1 / scale);
}

TEST_F(WindowTest, ControlsFollowTheWindowAsTheirMaskSays)
{
    controller.outlet = "fCancel";
    ASSERT_TRUE(controller.load("Window"));
    Rect frame = Frame(*controller.window());
    frame.width += 50;
    frame.height -= 30;
    SetFrame(*controller.window(), frame);
    EXPECT_EQ(Frame(*controller.window()), frame);
    EXPECT_EQ(Frame(*controller.cancelButton), (Rect { 250, 16, 80, 24 }));
    EXPECT_EQ(controller.window()->findChild<QLineEdit*>()->geometry(), QRect(10, 10, 150, 24));
}

TEST_F(WindowTest, EscapeAndControlPeriodCloseTheWindow)
{
    show("Window");
    QTest::keyClick(controller.window(), Qt::Key_Period);
    QTest::keyClick(controller.window(), Qt::Key_X, Qt::ControlModifier);
    EXPECT_TRUE(controller.window()->isVisible());
    QTest::keyClick(controller.window()->findChild<QLineEdit*>(), Qt::Key_Escape);
    EXPECT_FALSE(controller.window()->isVisible()) << "from wherever the keyboard is";
    controller.showWindow();
    QTest::keyClick(controller.window(), Qt::Key_Period, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_FALSE(controller.window()->isVisible());
}

TEST_F(WindowTest, TheCancelButtonIsSeenPressedBeforeTheWindowCloses)
{
    controller.outlet = "fCancel";
    show("Window");
    auto& button = dynamic_cast<FixedButton&>(*controller.cancelButton);
    button.paintedDown.clear();
    QElapsedTimer pause;
    pause.start();
    QTest::keyClick(controller.window(), Qt::Key_Escape);
    EXPECT_GE(pause.elapsed(), 50);
    EXPECT_THAT(button.paintedDown, ElementsAre(true, false));
    EXPECT_FALSE(controller.window()->isVisible());
}

TEST_F(WindowTest, TheCloseButtonClosesAClosableWindowAndElseActsAsAKey)
{
    show("Closable");
    int clicks = 0;
    const auto count = [&] { ++clicks; };
    QObject::connect(controller.window()->findChild<InvisibleButton*>(), &QAbstractButton::clicked, count);
    closeFromOutside(*controller.window());
    EXPECT_FALSE(controller.window()->isVisible());
    EXPECT_EQ(controller.closings, 1);
    EXPECT_EQ(clicks, 0);

    TestController other;
    ASSERT_TRUE(other.load("WithInvisibleButton"));
    other.showWindow();
    QObject::connect(other.window()->findChild<InvisibleButton*>(), &QAbstractButton::clicked, count);
    closeFromOutside(*other.window());
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(other.closings, 0);
    EXPECT_TRUE(other.window()->isVisible());
    other.close();
    EXPECT_EQ(other.closings, 1) << "the program itself closes it as it likes";

    TestController plain;
    ASSERT_TRUE(plain.load("Window"));
    plain.showWindow();
    EXPECT_EQ(runModal(*plain.window(), [&] { closeFromOutside(*plain.window()); }), 0);
    EXPECT_FALSE(plain.window()->isVisible()) << "as after Escape";
    EXPECT_EQ(plain.closings, 1);
    plain.showWindow();
    EXPECT_TRUE(plain.window()->isVisible()) << "it can come back";
}

TEST_F(WindowTest, AModalRunGivesItsCode)
{
    StopModalWithCode(7); // outside of one: not kept for the next
    show("Window");
    ZEK_Window& window = *controller.window();
    EXPECT_EQ(runModal(window, [&] { controller.close(); }), 0) << "closed without a code";
    controller.showWindow();
    EXPECT_EQ(runModal(window, [] { StopModalWithCode(2); }), 2);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(WindowTest, ModalRunsEndInnermostFirst)
{
    show("Window");
    TestController inner;
    ASSERT_TRUE(inner.load("Window"));
    inner.showWindow();
    int32_t innerCode = -1;
    const int32_t outerCode = runModal(*controller.window(), [&] {
        innerCode = runModal(*inner.window(), [] { StopModalWithCode(5); });
        StopModalWithCode(6);
    });
    EXPECT_EQ(innerCode, 5);
    EXPECT_EQ(outerCode, 6);
}

TEST_F(WindowTest, AControllerMayGoInTheMiddleOfItsWindowsEvents)
{
    auto going = std::make_unique<TestController>();
    ASSERT_TRUE(going->load("WithInvisibleButton"));
    going->showWindow();
    const QPointer<ZEK_Window> window = going->window();
    QObject::connect(
        window->findChild<InvisibleButton*>(), &QAbstractButton::clicked, [&] { going.reset(); });
    window->findChild<InvisibleButton*>()->click();
    ASSERT_NE(window, nullptr);
    window->findChild<InvisibleButton*>()->click();
    QTest::keyClick(window.data(), Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window, nullptr);
}
