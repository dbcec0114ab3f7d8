#include "tests/windows/Person.h"

#include "ui/framework/ZEK_Window.h"
#include "ui/windows/AboutWindowController.h"

#include <Host/HostPath.h>
#include <QMenuBar>

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

constexpr const char* kApplication = "ZEK Velmora Installer";
constexpr const char* kAboutItem = "About ZEK Velmora Installer";
constexpr const char* kUninstallItem = "Uninstall ZEK Velmora…";
constexpr const char* kQuitItem = "Quit ZEK Velmora Installer";

}

using MenuTest = PersonTest;

TEST_F(MenuTest, UninstallsWhileTheAgreementIsNotAccepted)
{
    prepare("1.0", DRIVER_VERSION);
    when(kLicense, [] {
        EXPECT_FALSE(choose(kApplication, kAboutItem)) << "not before the install window has been there";
        choose(kApplication, kUninstallItem);
    });
    when(kAlert, [] {
        EXPECT_EQ(text("fTitlePtr"), "ZEK Velmora was uninstalled.");
        press(Qt::Key_Return);
    });
    EXPECT_EQ(run(), 0);
    EXPECT_FALSE(fs::exists(volume.support()));
    EXPECT_TRUE(fs::exists(volume.trash() / "ZEK Velmora.app"));
    EXPECT_THAT(volume.calls(), HasSubstr("uninstall\ndrivername\nZEKDockChargingSupport.kext"));
    EXPECT_TRUE(fs::exists(HostRestartRequestPath()));
}

TEST_F(MenuTest, StaysWhenTheInstallWindowIsGone)
{
    acceptLicense();
    prepare("1.0", "");
    when(kInstall, [] { press(Qt::Key_Escape); });
    when(kMenuWindow, [] { choose(kApplication, kUninstallItem); });
    when(kAlert, [] {
        chooseUnseen(kAboutItem);
        EXPECT_EQ(AboutWindowController::openController(), nullptr) << "the alert has to be answered first";
        press(Qt::Key_Escape);
    });
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(shown, ElementsAre(kInstall, kMenuWindow, kAlert));
    EXPECT_FALSE(fs::exists(volume.support()));
}

TEST_F(MenuTest, OffersNoUninstallationOfWhatIsNotThereAndQuits)
{
    acceptLicense();
    when(kInstall, [] { press(Qt::Key_Escape); });
    when(kMenuWindow, [] {
        EXPECT_FALSE(choose(kApplication, kUninstallItem));
        EXPECT_TRUE(choose(kApplication, kQuitItem));
    });
    EXPECT_EQ(run(), 0);
}

TEST_F(MenuTest, ClosingItsOwnWindowQuits)
{
    acceptLicense();
    when(kInstall, [] { press(Qt::Key_Escape); });
    when(kMenuWindow, [] {
        press(Qt::Key_Escape);
        EXPECT_TRUE(window().isVisible());
        closeByTitleBar();
    });
    EXPECT_EQ(run(), 0);
}

TEST_F(MenuTest, ShowsOneAboutWindowThatEachWayOfClosingForgets)
{
    const auto openAbout = [] {
        EXPECT_EQ(AboutWindowController::openController(), nullptr);
        choose(kApplication, kAboutItem);
    };
    acceptLicense();
    when(kInstall, openAbout);
    when(kAbout, [] {
        EXPECT_EQ(window().windowTitle(), "About ZEK Velmora Installer");
        EXPECT_EQ(text("fProductStringPtr"), "ZEK Velmora Installer");
        EXPECT_EQ(text("fVersionStringPtr"), "Version " INSTALLER_VERSION);
        choose(kApplication, kAboutItem);
        press(Qt::Key_W, Qt::ControlModifier);
    });
    when(kInstall, openAbout);
    when(kAbout, [] { press(Qt::Key_Escape); });
    when(kInstall, openAbout);
    when(kAbout, [] { closeByTitleBar(); });
    when(kInstall, [] {
        EXPECT_EQ(AboutWindowController::openController(), nullptr);
        press(Qt::Key_Q, Qt::ControlModifier);
    });
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(shown, ElementsAre(kInstall, kAbout, kAbout, kAbout));
}

TEST_F(MenuTest, AnAboutWindowThatIsOpenComesToTheFront)
{
    acceptLicense();
    when(kInstall, [] { choose(kApplication, kAboutItem); });
    when(kAbout, [] { bringToFront(kInstall); });
    when(kInstall, [] { choose(kApplication, kAboutItem); });
    when(kAbout, [] { bringToFront(kInstall); });
    when(kInstall, [] { click("fCancelButtonPtr"); });
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(shown, ElementsAre(kInstall, kAbout));
}

TEST_F(MenuTest, IsTitledInTheUsersLanguage)
{
    speak("de_DE.UTF-8");
    when(kLicense, [] {
        std::vector<std::string> titles;
        for (QAction* const menu : window().findChild<QMenuBar*>()->actions()) {
            titles.push_back(menu->text().toStdString());
            for (QAction* const item : menu->menu()->actions())
                titles.push_back(item->text().toStdString());
        }
        EXPECT_THAT(titles,
            ElementsAre("ZEK Velmora Installer", "Über ZEK Velmora Installer", "",
                "ZEK Velmora deinstallieren\u00a0…", "", "ZEK Velmora Installer beenden", "Hilfe",
                "ZEK Velmora-Hilfe"));
        press(Qt::Key_Q, Qt::ControlModifier);
    });
    EXPECT_EQ(run(), 0);
}

TEST_F(MenuTest, OpensTheHelpBookAsTheHelpButtonsDo)
{
    acceptLicense();
    prepare(INSTALLER_VERSION, "");
    when(kAlert, [] {
        click("fHelpButtonPtr");
        press(Qt::Key_Escape);
    });
    when(kInstall, [] {
        click("helpButton");
        press(Qt::Key_F1);
        choose("Help", "ZEK Velmora Help");
        press(Qt::Key_Q, Qt::ControlModifier);
    });
    EXPECT_EQ(run(), 0);
    const std::string call = (volume.resources() / "ZEK Velmora Help.help").string() + "\n\n";
    EXPECT_EQ(volume.callsOnce(call + call + call + call), call + call + call + call);
}
