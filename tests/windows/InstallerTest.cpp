#include "tests/windows/Person.h"

#include "settings/Preferences.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/windows/InstallWindowController.h"
#include "ui/windows/LicenseWindowController.h"

#include <Host/HostPath.h>
#include <QTextBrowser>

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

namespace {

constexpr const char* kLicenseKey = "Last Displayed Version Of End User License";
constexpr const char* kUsageKey = "Collect Usage Info";

std::string Text(const QString& text) { return text.toStdString(); }

}

using InstallerTest = PersonTest;

TEST_F(InstallerTest, InstallsAfterAgreementAndAsksForTheRestart)
{
    Preferences::init()->setCollectUsageInfo(false);
    when(kLicense, [] {
        EXPECT_EQ(window().windowTitle(), "License Agreement");
        LicenseWindowController::showLicenseWindow();
        click("fAgreeButtonPtr");
    });
    when(kInstall, [] {
        EXPECT_EQ(text("fInstallButtonPtr"), "Install and Restart");
        EXPECT_EQ(text("fNewVersionPtr"), INSTALLER_VERSION);
        EXPECT_EQ(text("fHighPoweredPortsStatusPtr"), "Disabled");
        EXPECT_THAT(Text(text("fPrompt2Ptr")), EndsWith("save your work in other apps first."));
        EXPECT_FALSE(control("fCurrentVersionTitlePtr").isVisible());
        EXPECT_FALSE(control("fCurrentVersionPtr").isVisible());
        EXPECT_TRUE(isChecked("fSendUsageDataButtonPtr"));
        InstallWindowController::showInstallWindow();
        click("fInstallButtonPtr");
    });
    when(kAlert, [] {
        EXPECT_EQ(text("fTitlePtr"), "The installation was successful.");
        EXPECT_THAT(Text(text("fPromptPtr")), HasSubstr("when you log in.\n\nYour computer must restart"));
        EXPECT_EQ(text("fFirstButtonPtr"), "Restart");
        press(Qt::Key_Q, Qt::ControlModifier); // an alert has to be answered
        click("fFirstButtonPtr");
    });
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(shown, ElementsAre(kLicense, kInstall, kAlert))
        << "each once, and nothing flashes up between";
    EXPECT_TRUE(fs::exists(volume.agent() / "Contents/MacOS/ZEK Velmora"));
    EXPECT_TRUE(TestVolume::isPropertyList(volume.launchAgent()));
    EXPECT_THAT(volume.calls(), HasSubstr("install\ndrivername\nZEKDockChargingSupport.kext"));
    EXPECT_EQ(volume.preferences()[kLicenseKey], "1");
    EXPECT_FALSE(volume.preferences().contains(kUsageKey)) << "that is: collected";
    EXPECT_TRUE(fs::exists(HostRestartRequestPath()));
}

TEST_F(InstallerTest, TheUncheckedBoxKeepsUsageDataPrivate)
{
    acceptLicense();
    prepare("", DRIVER_VERSION);
    when(kInstall, [] {
        EXPECT_EQ(text("fInstallButtonPtr"), "Install");
        click("fSendUsageDataButtonPtr", Qt::AlignLeft);
        click("fInstallButtonPtr");
    });
    when(kAlert, [] {
        EXPECT_EQ(text("fFirstButtonPtr"), "OK");
        press(Qt::Key_Escape);
    });
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(volume.preferences()[kUsageKey], "false");
    EXPECT_FALSE(fs::exists(HostRestartRequestPath()));
}

TEST_F(InstallerTest, UpdatesAndLeavesTheUsageDataChoiceAlone)
{
    acceptLicense();
    prepare("1.0", DRIVER_VERSION);
    when(kInstall, [] {
        EXPECT_EQ(text("fInstallButtonPtr"), "Update");
        EXPECT_EQ(text("fCurrentVersionPtr"), "1.0");
        EXPECT_EQ(text("fNewVersionTitlePtr"), "New Version:");
        EXPECT_EQ(text("fHighPoweredPortsStatusPtr"), "Enabled");
        EXPECT_FALSE(control("fSendUsageDataButtonPtr").isVisible());
        EXPECT_FALSE(control("fSendUsageDataMoreInfoPtr").isVisible());
        EXPECT_FALSE(control("fSendUsageDataPromptPtr").isVisible());
        press(Qt::Key_Return);
    });
    when(kAlert, [] {
        EXPECT_EQ(text("fTitlePtr"), "The update was successful.");
        EXPECT_EQ(text("fPromptPtr"), "ZEK Velmora is up to date and ready to use.");
        press(Qt::Key_Enter);
    });
    EXPECT_EQ(run(), 0);
    EXPECT_FALSE(volume.preferences().contains(kUsageKey)) << "the box, which is not there, is not checked";
    EXPECT_TRUE(fs::exists(volume.agent() / "Contents/MacOS/ZEK Velmora"));
    EXPECT_TRUE(fs::exists(volume.trash() / "ZEK Velmora.app"));
}

TEST_F(InstallerTest, AFailureIsToldWithoutARestart)
{
    acceptLicense();
    fs::remove_all(volume.resources() / "ZEK Velmora.app");
    when(kInstall, [] { click("fInstallButtonPtr"); });
    when(kAlert, [] {
        EXPECT_EQ(text("fTitlePtr"), "The installation could not be completed.");
        EXPECT_EQ(text("fFirstButtonPtr"), "OK");
        closeByTitleBar();
    });
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(volume.calls(), "") << "the driver is not touched";
    EXPECT_FALSE(fs::exists(HostRestartRequestPath()));
}

TEST_F(InstallerTest, WithNothingToDoOnlyCancelIsOffered)
{
    acceptLicense();
    prepare(INSTALLER_VERSION, DRIVER_VERSION);
    when(kInstall, [] {
        EXPECT_EQ(text("fPrompt1Ptr"), "ZEK Velmora is already up to date on this computer.");
        EXPECT_EQ(text("fCurrentVersionPtr"), INSTALLER_VERSION);
        EXPECT_FALSE(control("fNewVersionTitlePtr").isVisible());
        EXPECT_FALSE(control("fNewVersionPtr").isVisible());
        EXPECT_FALSE(control("fSendUsageDataButtonPtr").isVisible());
        press(Qt::Key_Return);
        click("fInstallButtonPtr");
        EXPECT_TRUE(window().isVisible());
        click("fCancelButtonPtr");
    });
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(volume.calls(), "");
}

TEST_F(InstallerTest, RefusingTheAgreementLeavesNothingBehind)
{
    when(kLicense, [] { click("fDisagreeButtonPtr"); });
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(volume.preferences().empty());
    EXPECT_FALSE(fs::exists(volume.support()));
}

TEST_F(InstallerTest, EscapeLeavesTheAgreementUnansweredAndControlWRefusesIt)
{
    when(kLicense, [] { press(Qt::Key_Escape); });
    when(kLicense, [] { press(Qt::Key_Period, Qt::ControlModifier); });
    when(kLicense, [] { press(Qt::Key_W, Qt::ControlModifier); });
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(shown, ElementsAre(kLicense, kLicense, kLicense));
    EXPECT_TRUE(volume.preferences().empty());
}

TEST_F(InstallerTest, TheTitleBarRefusesTheAgreementAsControlWDoes)
{
    when(kLicense, [] { closeByTitleBar(); });
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(shown, ElementsAre(kLicense));
    EXPECT_TRUE(volume.preferences().empty());
}

TEST_F(InstallerTest, AgreeingStoresTheVersionOfThisAgreementOverALaterOne)
{
    Preferences::init()->setLastDisplayedVersionOfEndUserLicense(2);
    when(kLicense, [] { press(Qt::Key_Return); });
    when(kInstall, [] { press(Qt::Key_W, Qt::ControlModifier); });
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(volume.preferences()[kLicenseKey], "1");
    EXPECT_FALSE(fs::exists(volume.support())) << "Control-W cancels";
}

TEST_F(InstallerTest, AMissingAgreementCanStillBeAnswered)
{
    fs::remove(volume.resources() / "en.lproj/License Agreement.rtf");
    when(kLicense, [] {
        EXPECT_TRUE(
            dynamic_cast<QTextBrowser&>(control("fLicenceAgreementTextViewPtr")).document()->isEmpty());
        click("fAgreeButtonPtr");
    });
    when(kInstall, [] { click("fCancelButtonPtr"); });
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(volume.preferences()[kLicenseKey], "1");
}

TEST_F(InstallerTest, WithoutTheNibOfAWindowTheMenuIsLeft)
{
    fs::remove(volume.resources() / "LicenseWindow.ui");
    when(kMenuWindow, [] { press(Qt::Key_Q, Qt::ControlModifier); });
    EXPECT_EQ(run(), 0);
}

TEST_F(InstallerTest, WithoutTheNibOfAnAlertOffersCountAsDeclined)
{
    acceptLicense();
    prepare(INSTALLER_VERSION, "");
    TestVolume::write(volume.resources() / "DialogWindow.ui", "<ui version=\"4.0\"><widget");
    when(kInstall, [] { closeByTitleBar(); });
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(volume.calls(), "");
}

namespace {

struct Offer {
    const char *name, *driver, *title, *button;
};

/// What the person does with an offer.
struct Answer {
    const char* name;
    bool accepts;
    Qt::Key key; ///< where not a click on the first button
};

// What test names show of them.
void PrintTo(const Offer& offer, std::ostream* stream) { *stream << offer.name; }
void PrintTo(const Answer& answer, std::ostream* stream) { *stream << answer.name; }

class DriverOfferTest : public PersonTest,
                        public ::testing::WithParamInterface<std::tuple<Offer, Answer>> { };

}

TEST_P(DriverOfferTest, IsTakenByAClickOnTheFirstButtonAlone)
{
    const auto& [offer, answer] = GetParam();
    acceptLicense();
    prepare(INSTALLER_VERSION, offer.driver);
    when(kAlert, [&offer = offer, &answer = answer] {
        EXPECT_EQ(text("fTitlePtr"), offer.title);
        EXPECT_EQ(text("fFirstButtonPtr"), offer.button);
        if (answer.accepts)
            click("fFirstButtonPtr");
        else
            press(answer.key);
    });
    if (answer.accepts)
        when(kAlert, [] { click("fFirstButtonPtr"); });
    else
        when(kInstall, [] { click("fCancelButtonPtr"); });
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(volume.calls().starts_with("install\n"), answer.accepts);
    EXPECT_EQ(fs::exists(HostRestartRequestPath()), answer.accepts);
    EXPECT_EQ(shown.size(), answer.accepts ? 3U : 2U) << "one offer at most";
}

INSTANTIATE_TEST_SUITE_P(Offers, DriverOfferTest,
    ::testing::Combine(
        ::testing::Values(
            Offer { "Install", "", "Install the high-powered ports driver?", "Install and Restart" },
            Offer { "Update", "0.9", "Update the high-powered ports driver?", "Update and Restart" }),
        ::testing::Values(Answer { "Click", true, {} }, Answer { "Return", false, Qt::Key_Return },
            Answer { "Escape", false, Qt::Key_Escape })),
    [](const auto& offered) {
        return std::string(std::get<0>(offered.param).name) + std::get<1>(offered.param).name;
    });
