#include "tests/HostAppearance/Desktop.h"

#include <CoreFoundation/CoreFoundation.h>
#include <HostWindows/AppearanceFollower.h>
#include <QApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>

namespace {

void Count(CFNotificationCenterRef, void* count, CFNotificationName, const void*, CFDictionaryRef)
{
    ++*static_cast<int*>(count);
}

/// An application with windows on a desktop whose portal answers.
class FollowerTest : public testing::Test {
protected:
    FollowerTest()
    {
        fFolder = mkdtemp(fFolder.data());
        unsetenv("XDG_RUNTIME_DIR");
        CFNotificationCenterAddObserver(CFNotificationCenterGetDistributedCenter(), &fNotices, Count,
            CFSTR("AppleInterfaceThemeChangedNotification"), nullptr,
            CFNotificationSuspensionBehaviorDeliverImmediately);
    }
    ~FollowerTest() override
    {
        CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetDistributedCenter(), &fNotices);
        std::filesystem::remove_all(fFolder);
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    /// Lets portal and application talk until the application is as expected. @return whether it came to be.
    bool becomes(Portal& portal, bool dark)
    {
        const QDeadlineTimer giveUp(10000);
        while (AppearanceIsDark() != dark && !giveUp.hasExpired()) {
            portal.process();
            QCoreApplication::processEvents();
            QThread::msleep(1);
        }
        return AppearanceIsDark() == dark;
    }

    std::string fFolder = testing::TempDir() + "follower-XXXXXX";
    int fNotices = 0;
};

}

TEST_F(FollowerTest, ColoursFollowTheDesktopLiveAndEachChangeIsToldOnce)
{
    const SessionBus bus(fFolder);
    Portal portal(Answer(1));
    const AppearanceFollower follower;
    EXPECT_FALSE(AppearanceIsDark());
    EXPECT_TRUE(becomes(portal, true));
    EXPECT_EQ(fNotices, 1);
    portal.announce(Number(2));
    EXPECT_TRUE(becomes(portal, false));
    portal.announce(Number(1));
    EXPECT_TRUE(becomes(portal, true));
    EXPECT_EQ(fNotices, 3);
    portal.announce(Number(0));
    EXPECT_TRUE(becomes(portal, false)) << "without a preference it looks as the toolkit would";
}

TEST_F(FollowerTest, WithoutADesktopThePaletteDecides)
{
    const QPalette before = QApplication::palette();
    const AppearanceFollower follower;
    EXPECT_EQ(fNotices, 0);
    QApplication::setPalette(QPalette(QColor(0x303030), QColor(0x202020)));
    EXPECT_TRUE(AppearanceIsDark());
    EXPECT_EQ(fNotices, 1);
    QApplication::setPalette(QPalette(QColor(0x404040), QColor(0x303030)));
    EXPECT_EQ(fNotices, 1) << "dark already";
    QApplication::setPalette(before);
}
