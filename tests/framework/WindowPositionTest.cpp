#include "ui/framework/WindowPosition.h"

#include "tests/framework/FrameworkTest.h"
#include "ui/framework/Archiver.h"
#include "util/CFText.h"

#include <QLocale>
#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace {

class WindowPositionTest : public FrameworkTest {
protected:
    static void keep(const std::string& text)
    {
        const CFRef<CFDataRef> value = ArchivedDataWithRootObject(CFText(text).get());
        CFPreferencesSetAppValue(CFSTR("Frame"), value.get(), kCFPreferencesCurrentApplication);
    }
    static std::string kept()
    {
        const CFRef<CFPropertyListRef> value(
            CFPreferencesCopyAppValue(CFSTR("Frame"), kCFPreferencesCurrentApplication));
        return StdString(
            UnarchiveObjectWithData(CFDynamicCast<CFDataRef>(value.get(), CFDataGetTypeID())).get());
    }
    static Rect saved()
    {
        Rect frame { 1, 1, 1, 1 };
        EXPECT_TRUE(ReturnSavedWindowFrame("Frame", frame));
        return frame;
    }
    static void makeResizable(ZEK_Window& window)
    {
        window.setProperty("resizable", true);
        window.setMinimumContentSize({ 120, 90 });
    }
};

}

TEST_F(WindowPositionTest, AFrameIsKeptAsTextAndRestored)
{
    ZEK_Window window;
    makeResizable(window);
    SetFrame(window, { 10, 20, 300, 200 });
    SaveWindowPosition(&window, "Frame");
    EXPECT_EQ(kept(), "{{10, 20}, {300, 200}}");
    SetFrame(window, { 50, 60, 400, 250 });
    EXPECT_TRUE(RestoreWindowPosition(window, "Frame"));
    EXPECT_EQ(Frame(window), (Rect { 10, 20, 300, 200 }));
    SaveWindowPosition(nullptr, "Frame");
    EXPECT_EQ(kept(), "{{0, 0}, {0, 0}}");
}

TEST_F(WindowPositionTest, WithoutAnEntryNothingChanges)
{
    ZEK_Window window;
    SetFrame(window, { 10, 20, 300, 200 });
    Rect frame { 1, 2, 3, 4 };
    EXPECT_FALSE(ReturnSavedWindowFrame("Frame", frame));
    EXPECT_EQ(frame, (Rect { 1, 2, 3, 4 }));
    EXPECT_FALSE(RestoreWindowPosition(window, "Frame"));
    EXPECT_EQ(Frame(window), (Rect { 10, 20, 300, 200 }));
}

TEST_F(WindowPositionTest, AFixedWindowGetsBackOnlyItsPlace)
{
    ZEK_Window window;
    SetFrame(window, { 10, 20, 300, 200 });
    keep("{{-3000, 5000}, {30, 20}}");
    EXPECT_TRUE(RestoreWindowPosition(window, "Frame")) << "on a screen or not";
    EXPECT_EQ(Frame(window), (Rect { -3000, 5000, 300, 200 }));
}

TEST_F(WindowPositionTest, AResizableWindowGetsNothingBelowItsMinimum)
{
    ZEK_Window window;
    makeResizable(window);
    SetFrame(window, { 10, 20, 300, 200 });
    for (const char* const small : { "{{1, 2}, {119, 90}}", "{{1, 2}, {120, 89}}" }) {
        keep(small);
        EXPECT_FALSE(RestoreWindowPosition(window, "Frame")) << small;
        EXPECT_EQ(Frame(window), (Rect { 10, 20, 300, 200 })) << small;
    }
    keep("{{1, 2}, {120, 90}}");
    EXPECT_TRUE(RestoreWindowPosition(window, "Frame"));
    EXPECT_EQ(Frame(window), (Rect { 1, 2, 120, 90 }));
}

TEST_F(WindowPositionTest, WhatIsNoFrameCountsAsTheZeroRectangle)
{
    for (const char* const text :
        { "", "here", "{{1, 2}, {3}}", "{{1, 2}, {3, x}}", "{{nan, 2}, {3, inf}}" }) {
        keep(text);
        EXPECT_EQ(saved(), Rect()) << text;
    }
    CFPreferencesSetAppValue(CFSTR("Frame"), CFSTR("{{1, 2}, {3, 4}}"), kCFPreferencesCurrentApplication);
    EXPECT_EQ(saved(), Rect()) << "a text that is not archived";
    keep(" { { 1.5,-2 },{ 3e2, 4 } } ");
    EXPECT_EQ(saved(), (Rect { 1.5, -2, 300, 4 }));

    ZEK_Window window;
    SetFrame(window, { 10, 20, 300, 200 });
    keep("{{1e300, 0}, {1, 1}}");
    EXPECT_TRUE(RestoreWindowPosition(window, "Frame"));
    EXPECT_EQ(window.pos().x(), QWIDGETSIZE_MAX) << "as far to the right as there is";
}

TEST_F(WindowPositionTest, FractionsSurviveInLanguagesWithADecimalComma)
{
    useLargeText();
    QLocale::setDefault(QLocale(QLocale::German));
    ZEK_Window window;
    makeResizable(window);
    window.setContentSize({ 301, 211 });
    window.move(13, 17);
    SaveWindowPosition(&window, "Frame");
    QLocale::setDefault(QLocale::system());
    const std::string text = kept();
    EXPECT_EQ(std::count(text.begin(), text.end(), ','), 3) << text;
    EXPECT_NE(text.find('.'), std::string::npos) << text;

    window.setContentSize({ 400, 300 });
    window.move(0, 0);
    EXPECT_TRUE(RestoreWindowPosition(window, "Frame"));
    EXPECT_EQ(window.geometry(), QRect(13, 17, 301, 211));
}

TEST_F(WindowPositionTest, AWindowComesBackWhereItWasClosed)
{
    writeNib("Window", "");
    TestController first;
    first.key = "Frame";
    ASSERT_TRUE(first.load("Window"));
    first.showWindow();
    const QPoint center = first.window()->pos();
    EXPECT_EQ(center.x(), (first.window()->screen()->availableGeometry().width() - 300) / 2);
    first.window()->move(17, 33);
    first.showWindow(); // nothing is kept yet
    EXPECT_EQ(first.window()->pos(), center);
    first.window()->move(17, 33);
    first.close();
    EXPECT_EQ(first.closings, 2) << "once for each time it was shown";

    TestController second;
    second.key = "Frame";
    ASSERT_TRUE(second.load("Window"));
    second.showWindow();
    EXPECT_EQ(second.window()->pos(), QPoint(17, 33));
}

TEST_F(WindowPositionTest, NothingIsKeptUnlessTheApplicationAndTheWindowWantIt)
{
    writeNib("Window", "");
    keep("{{1, 2}, {300, 200}}");
    for (const bool remembers : { false, true }) {
        application.remembersPositions = remembers;
        TestController controller;
        if (!remembers)
            controller.key = "Frame";
        ASSERT_TRUE(controller.load("Window"));
        controller.showWindow();
        EXPECT_NE(Frame(*controller.window()).x, 1);
        controller.close();
        EXPECT_EQ(controller.closings, 1);
        EXPECT_EQ(kept(), "{{1, 2}, {300, 200}}");
    }
    TestController unregistered;
    unregistered.key = "Frame";
    ASSERT_TRUE(unregistered.load("Window"));
    unregistered.window()->move(5, 6);
    unregistered.showWindowWithoutRestoringWindowPositions();
    EXPECT_TRUE(unregistered.window()->isVisible());
    EXPECT_EQ(unregistered.window()->pos(), QPoint(5, 6));
    unregistered.close();
    EXPECT_EQ(unregistered.closings, 0);
    EXPECT_EQ(kept(), "{{1, 2}, {300, 200}}");
}
