#include "app/AppController.h"

#include "install/DriverInterface.h"
#include "settings/Preferences.h"
#include "tests/support/RecordingFrontEnd.h"
#include "tests/support/TestVolume.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

using ::testing::ElementsAre;

constexpr const char* kDriver = "ZEKDockChargingSupport.kext";

/// The machine over the real back ends on a temporary volume; launchctl and the privileged tool only record.
class AppControllerTest : public ::testing::Test {
protected:
    AppControllerTest()
    {
        volume.makeInstaller("2.1").carryDriver("1.2").recordTool("/bin/launchctl").recordDriverTool();
    }

    AppController& started()
    {
        AppController& controller = *AppController::init(frontEnd);
        controller.applicationDidFinishLaunching();
        return controller;
    }
    AppController& startedWithLicense()
    {
        TestVolume::write(volume.preferencesFile(),
            "<plist version=\"1.0\"><dict><key>Last Displayed Version Of End User License</key>"
            "<integer>1</integer></dict></plist>");
        return started();
    }
    /// What the Install button does.
    static void pressInstall(AppController& controller)
    {
        controller.prepareToStartOperation();
        controller.goToNextState();
    }
    void breakDriverTool() { fs::permissions(volume.resources() / "driverinstall", fs::perms(0644)); }

    TestVolume volume;
    RecordingFrontEnd frontEnd;
};

}

TEST_F(AppControllerTest, AFreshSystemGoesFromTheLicenseToTheRestart)
{
    AppController& controller = started();
    EXPECT_THAT(frontEnd.events, ElementsAre("license"));
    EXPECT_EQ(controller.operation(), AppController::kInstall);
    controller.licenseAcceptedByUser(true);
    EXPECT_THAT(frontEnd.events, ElementsAre("license")) << "the answer alone moves nothing";
    controller.goToNextState();
    EXPECT_THAT(frontEnd.events, ElementsAre("license", "install window"));
    pressInstall(controller);
    EXPECT_THAT(frontEnd.events, ElementsAre("license", "install window", "alert 1", "restart", "terminate"));
    EXPECT_TRUE(fs::exists(volume.agent()));
    EXPECT_THAT(frontEnd.states, ElementsAre(1, 2, 3, 5, 6, 8, 12, 14));
    EXPECT_EQ(controller.error(), noErr);
}

TEST_F(AppControllerTest, OnlyTheAgreementOfThisVersionNeedsNoLicenseWindow)
{
    for (const char* other : { "<integer>0</integer>", "<integer>2</integer>", "<string>x</string>" }) {
        TestVolume::write(volume.preferencesFile(),
            std::string("<plist version=\"1.0\"><dict><key>Last Displayed Version Of End User License</key>")
                + other + "</dict></plist>");
        frontEnd.events.clear();
        started();
        EXPECT_THAT(frontEnd.events, ElementsAre("license")) << other;
    }
    frontEnd.events.clear();
    startedWithLicense();
    EXPECT_THAT(frontEnd.events, ElementsAre("install window"));
}

TEST_F(AppControllerTest, RefusingTheLicenseEndsWithNothingDone)
{
    AppController& controller = started();
    controller.licenseAcceptedByUser(false);
    controller.goToNextState();
    EXPECT_THAT(frontEnd.events, ElementsAre("license", "terminate"));
    EXPECT_FALSE(fs::exists(volume.support()));
    EXPECT_TRUE(volume.preferences().empty());
}

TEST_F(AppControllerTest, WindowsClosedWithoutAnAnswer)
{
    AppController& controller = started();
    controller.goToNextState();
    EXPECT_THAT(frontEnd.events, ElementsAre("license", "license")) << "the agreement comes again";
    controller.licenseAcceptedByUser(true);
    controller.goToNextState();
    controller.goToNextState();
    EXPECT_THAT(frontEnd.events, ElementsAre("license", "license", "install window"))
        << "the machine goes on waiting";
    controller.prepareToQuit();
    controller.goToNextState();
    EXPECT_EQ(frontEnd.events.back(), "terminate");
}

TEST_F(AppControllerTest, AnOlderAgentIsUpdatedAndTheDriverWithIt)
{
    volume.installAgent("2.0").installDriver("1.1");
    AppController& controller = startedWithLicense();
    EXPECT_EQ(controller.operation(), AppController::kUpdate);
    pressInstall(controller);
    EXPECT_THAT(frontEnd.events, ElementsAre("install window", "alert 3", "restart", "terminate"));
    EXPECT_THAT(frontEnd.states, ElementsAre(1, 3, 5, 7, 9, 12, 14));
    EXPECT_TRUE(
        Eventually([this] { return volume.calls().find("install\ndrivername") != std::string::npos; }));
}

TEST_F(AppControllerTest, ACurrentDriverIsLeftAloneAndNeedsNoRestart)
{
    volume.installDriver("1.2");
    pressInstall(startedWithLicense());
    EXPECT_THAT(frontEnd.events, ElementsAre("install window", "alert 1", "terminate"));
    EXPECT_EQ(volume.calls().find("drivername"), std::string::npos);
}

TEST_F(AppControllerTest, ACurrentAgentOffersTheDriverAlone)
{
    const struct {
        const char* installedDriver; ///< none when empty
        int32_t answer;
        std::vector<std::string> events;
        uint32_t operation;
    } cases[] = {
        { "", 1, { "install window", "alert 7", "alert 1", "restart", "terminate" },
            AppController::kInstallDriver },
        { "", 2, { "install window", "alert 7" }, AppController::kNothingToDo },
        { "", 0, { "install window", "alert 7" }, AppController::kNothingToDo },
        { "1.1", 1, { "install window", "alert 8", "alert 3", "restart", "terminate" },
            AppController::kUpdateDriver },
        { "1.3", 2, { "install window", "alert 8" }, AppController::kNothingToDo },
        { "nonsense", 2, { "install window", "alert 7" }, AppController::kNothingToDo },
        { "1.2", 1, { "install window" }, AppController::kNothingToDo },
    };
    volume.installAgent("2.1");
    for (const auto& each : cases) {
        fs::remove_all(volume.extensions() / kDriver);
        if (*each.installedDriver != '\0')
            volume.installDriver(each.installedDriver);
        frontEnd = RecordingFrontEnd();
        frontEnd.alertAnswers = { { 7, each.answer }, { 8, each.answer } };
        AppController& controller = startedWithLicense();
        EXPECT_EQ(frontEnd.events, each.events) << each.installedDriver << ' ' << each.answer;
        EXPECT_EQ(controller.operation(), each.operation);
        if (each.operation != AppController::kNothingToDo)
            continue;
        const size_t before = frontEnd.events.size();
        pressInstall(controller);
        EXPECT_EQ(frontEnd.events.size(), before) << "Install has nothing to start";
    }
}

TEST_F(AppControllerTest, AFailedAgentStepSkipsTheDriver)
{
    fs::remove_all(volume.resources() / "ZEK Velmora.app");
    AppController& controller = startedWithLicense();
    pressInstall(controller);
    EXPECT_THAT(frontEnd.events, ElementsAre("install window", "alert 2", "terminate"));
    EXPECT_EQ(controller.error(), fnfErr);
    EXPECT_EQ(volume.calls(), "");
}

TEST_F(AppControllerTest, AFailedDriverStepIsReportedAsTheOperationsFailure)
{
    breakDriverTool();
    volume.installAgent("1.0");
    AppController& controller = startedWithLicense();
    pressInstall(controller);
    EXPECT_THAT(frontEnd.events, ElementsAre("install window", "alert 4", "terminate"));
    EXPECT_EQ(controller.error(), errAuthorizationToolExecuteFailure);
}

TEST_F(AppControllerTest, UninstallWorksEvenWhileTheLicenseShows)
{
    volume.installAgent("2.1").installDriver("1.2");
    AppController& controller = started();
    controller.handleMenuSelection(AppController::kUninstallItem);
    EXPECT_THAT(frontEnd.events, ElementsAre("license", "alert 5", "restart", "terminate"));
    EXPECT_THAT(frontEnd.states, ElementsAre(1, 2, 10, 11, 12, 14));
    EXPECT_FALSE(fs::exists(volume.agent()));
    const size_t before = frontEnd.events.size();
    controller.goToNextState();
    EXPECT_EQ(frontEnd.events.size(), before) << "the license window that closes now starts nothing again";
}

TEST_F(AppControllerTest, AFailedRemovalOfTheDriverIsReported)
{
    breakDriverTool();
    volume.installAgent("2.1").installDriver("1.2");
    startedWithLicense().handleMenuSelection(AppController::kUninstallItem);
    EXPECT_THAT(frontEnd.events, ElementsAre("install window", "alert 6", "terminate"));
}

TEST_F(AppControllerTest, AFailedRemovalOfTheAgentKeepsTheDriver)
{
    volume.installAgent("2.1").installDriver("1.2").breakTrash();
    AppController& controller = startedWithLicense();
    controller.handleMenuSelection(AppController::kUninstallItem);
    EXPECT_THAT(frontEnd.events, ElementsAre("install window", "alert 6", "terminate"));
    EXPECT_EQ(controller.error(), permErr);
    EXPECT_EQ(volume.calls().find("drivername"), std::string::npos);
}

TEST_F(AppControllerTest, MenuItemsAreOfferedWhenTheyMakeSense)
{
    AppController& fresh = started();
    EXPECT_FALSE(fresh.validateMenuItem(AppController::kAboutItem)) << "not before the install window";
    EXPECT_FALSE(fresh.validateMenuItem(AppController::kUninstallItem)) << "nothing is installed";
    EXPECT_TRUE(fresh.validateMenuItem(AppController::kQuitItem));
    EXPECT_TRUE(fresh.validateMenuItem(AppController::kHelpItem));

    volume.installAgent("2.1").installDriver("1.2");
    AppController& installed = startedWithLicense();
    EXPECT_TRUE(installed.validateMenuItem(AppController::kAboutItem));
    EXPECT_TRUE(installed.validateMenuItem(AppController::kUninstallItem));
    const size_t before = frontEnd.events.size();
    installed.handleMenuSelection(AppController::kQuitItem);
    EXPECT_EQ(frontEnd.events.size(), before);
    installed.handleMenuSelection(AppController::kAboutItem);
    EXPECT_EQ(frontEnd.events.back(), "about");
}

TEST_F(AppControllerTest, WithoutADriverInterfaceNothingIsOfferedAndNothingBreaks)
{
    fs::remove_all(volume.installer());
    volume.installAgent("1.0");
    setenv("CFProcessPath", (volume.root() / "missing/program").c_str(), 1);
    AppController& controller = started();
    EXPECT_EQ(DriverInterface::driverInterfacePtr(), nullptr);
    EXPECT_EQ(controller.operation(), AppController::kNothingToDo);
    EXPECT_TRUE(controller.validateMenuItem(AppController::kUninstallItem));
    controller.licenseAcceptedByUser(true);
    controller.goToNextState();
    EXPECT_THAT(frontEnd.events, ElementsAre("license", "install window"));
    controller.handleMenuSelection(AppController::kUninstallItem);
    EXPECT_THAT(frontEnd.events, ElementsAre("license", "install window", "alert 5", "terminate"));
}

TEST_F(AppControllerTest, NoAlertIsShownForNumberZero)
{
    AppController& controller = *AppController::init(frontEnd);
    EXPECT_EQ(controller.runAlertPanel(0), 0);
    EXPECT_TRUE(frontEnd.events.empty());
    frontEnd.alertAnswers[8] = 2;
    EXPECT_EQ(controller.runAlertPanel(8), 2);
}

TEST_F(AppControllerTest, MenusAreTitledInTheBundlesLanguage)
{
    TestVolume::write(volume.resources() / "en.lproj/Localizable.strings",
        "\"kAboutMenuItem\" = \"About It\"; \"kUninstallMenuItem\" = \"Remove It\"; \"kHelpMenu\" = \"Help\";"
        "\"kHelpMenuItem\" = \"Help on It\";");
    AppController::init(frontEnd)->awakeFromNib();
    EXPECT_EQ(frontEnd.menuTitles[101], "About It");
    EXPECT_EQ(frontEnd.menuTitles[102], "Remove It");
    EXPECT_EQ(frontEnd.menuTitles[200], "Help");
    EXPECT_EQ(frontEnd.menuTitles[201], "Help on It");
    EXPECT_EQ(frontEnd.menuTitles[103], "kQuitMenuItem") << "a missing text shows its key";
    EXPECT_EQ(frontEnd.menuTitles.size(), 5U);
}
