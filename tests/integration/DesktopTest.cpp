// The windows on a desktop that has a settings portal.

#include "tests/HostAppearance/Desktop.h"
#include "tests/windows/Person.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/framework/ZEK_WindowHeaderView.h"

#include <QScreen>
#include <QtTest/QTest>
#include <cstdio>

namespace {

constexpr int kPatience = 20000; // milliseconds
constexpr QRgb kLightBlue = 0xFF005DA8;
constexpr QRgb kDarkBlue = 0xFF0066B9;

class DesktopTest : public PersonTest {
protected:
    DesktopTest()
        : fPortal(popen(SETTINGS_PORTAL, "we"))
    {
    }
    ~DesktopTest() override { pclose(fPortal); }

    void desktopChooses(int scheme)
    {
        (void)std::fprintf(fPortal, "%d\n", scheme);
        (void)std::fflush(fPortal);
    }

    /// @return whether the screen comes to show the header like this, without anybody asking the window to draw it.
    static bool headerBecomes(QRgb color)
    {
        const auto* const header = window().findChild<ZEK_WindowHeaderView*>();
        return QTest::qWaitFor(
            [&] {
                const QImage screen = window().screen()->grabWindow(window().winId()).toImage();
                return screen.pixel(header->mapTo(&window(), QPoint(1, 1))) == color;
            },
            kPatience);
    }

private:
    const SessionBus fBus { volume.root().string() };
    FILE* const fPortal;
};

}

TEST_F(DesktopTest, AShownHeaderIsPaintedAnewWhenTheDesktopTurnsDark)
{
    acceptLicense();
    when(kInstall, [this] {
        EXPECT_TRUE(headerBecomes(kLightBlue)) << "nobody has answered yet";
        desktopChooses(1);
        EXPECT_TRUE(headerBecomes(kDarkBlue)) << "a late answer";
        desktopChooses(2);
        EXPECT_TRUE(headerBecomes(kLightBlue));
        desktopChooses(1);
        EXPECT_TRUE(headerBecomes(kDarkBlue));
        click("fCancelButtonPtr");
    });
    EXPECT_EQ(run(), 0);
}
