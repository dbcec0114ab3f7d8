#include "tests/windows/Person.h"

#include "tests/support/Browser.h"

#include "ui/framework/ZEK_Window.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QMetaEnum>

namespace fs = std::filesystem;
using ::testing::ElementsAre;

namespace {

using Names = std::vector<std::string>;

bool IsOperated(const QAccessibleInterface& part)
{
    return part.state().focusable || part.role() == QAccessible::Button || part.role() == QAccessible::Link;
}

/// Role and name of all controls that a screen reader finds in a part of a window, in its order.
void AddAnnounced(const QAccessibleInterface& part, Names& announced)
{
    for (int index = 0; index < part.childCount(); ++index) {
        const QAccessibleInterface& child = *part.child(index);
        if (child.state().invisible || child.role() == QAccessible::MenuBar)
            continue;
        if (IsOperated(child)) {
            announced.emplace_back(QMetaEnum::fromType<QAccessible::Role>().valueToKey(child.role()));
            announced.back() += " " + child.text(QAccessible::Name).toStdString();
            announced.back() += child.state().defaultButton ? ", default" : "";
        }
        AddAnnounced(child, announced);
    }
}

class ControlsTest : public PersonTest {
protected:
    static Names announced()
    {
        Names announced;
        AddAnnounced(*QAccessible::queryAccessibleInterface(&window()), announced);
        return announced;
    }

    static void giveKeyboardTo(const char* name)
    {
        int presses = 0;
        do
            press(Qt::Key_Tab); // which has the focus shown as well
        while (QApplication::focusWidget() != &control(name) && ++presses < 20);
        ASSERT_EQ(QApplication::focusWidget(), &control(name));
    }

    /// The controls that have the keyboard, one after another, from this one until that has it again. Each has to show it.
    static Names tabRound(const char* start, Qt::Key key = Qt::Key_Tab)
    {
        giveKeyboardTo(start);
        Names names;
        for (int presses = 0; presses < 20 && QApplication::focusWidget() != nullptr; ++presses) {
            QWidget& view = *QApplication::focusWidget();
            const std::string name = view.objectName().toStdString();
            if (names.size() > 1 && name == start)
                return names;
            if (names.empty() || names.back() != name) // there may be several links in it
                names.push_back(name);
            const QImage withKeyboard = view.grab().toImage();
            press(key);
            EXPECT_FALSE(view.grab().toImage() == withKeyboard) << name << " does not show the focus";
        }
        ADD_FAILURE() << "never back at " << start;
        return names;
    }

    Browser browser;
};

}

TEST_F(ControlsTest, TabGoesRoundAllThatCanBeUsed)
{
    when(kLicense, [] {
        EXPECT_THAT(tabRound("fAgreeButtonPtr"),
            ElementsAre("fAgreeButtonPtr", "fDisagreeButtonPtr", "fLicenceAgreementTextViewPtr"));
        click("fAgreeButtonPtr");
    });
    when(kInstall, [] {
        EXPECT_THAT(tabRound("fInstallButtonPtr"),
            ElementsAre("fInstallButtonPtr", "fCancelButtonPtr", "helpButton", "fSendUsageDataButtonPtr",
                "fSendUsageDataMoreInfoPtr"));
        EXPECT_THAT(tabRound("fInstallButtonPtr", Qt::Key_Backtab),
            ElementsAre("fInstallButtonPtr", "fSendUsageDataMoreInfoPtr", "fSendUsageDataButtonPtr",
                "helpButton", "fCancelButtonPtr"));
        choose("ZEK Velmora Installer", "About ZEK Velmora Installer");
    });
    when(kAbout, [] {
        EXPECT_THAT(tabRound("fProductInfoURLStringPtr"),
            ElementsAre("fProductInfoURLStringPtr", "fTechSupportURLStringPtr"));
        press(Qt::Key_Q, Qt::ControlModifier);
    });
    EXPECT_EQ(run(), 0);
}

TEST_F(ControlsTest, TabPassesOverWhatIsDisabledOrHidden)
{
    acceptLicense();
    prepare(INSTALLER_VERSION, "");
    when(kAlert, [] {
        EXPECT_THAT(tabRound("fFirstButtonPtr"),
            ElementsAre("fFirstButtonPtr", "fSecondButtonPtr", "fHelpButtonPtr"));
        press(Qt::Key_Escape);
    });
    when(kInstall, [] {
        EXPECT_THAT(tabRound("fCancelButtonPtr"), ElementsAre("fCancelButtonPtr", "helpButton"));
        click("fCancelButtonPtr");
    });
    EXPECT_EQ(run(), 0);
}

TEST_F(ControlsTest, SpaceUsesTheControlThatHasTheKeyboard)
{
    acceptLicense();
    when(kInstall, [] {
        giveKeyboardTo("fSendUsageDataButtonPtr");
        press(Qt::Key_Space);
        EXPECT_FALSE(isChecked("fSendUsageDataButtonPtr"));
        giveKeyboardTo("fCancelButtonPtr");
        press(Qt::Key_Space);
    });
    EXPECT_EQ(run(), 0);
    EXPECT_FALSE(fs::exists(volume.support()));
}

TEST_F(ControlsTest, ReturnPressesTheDefaultButtonWhereverTheKeyboardIs)
{
    acceptLicense();
    prepare("1.0", DRIVER_VERSION);
    when(kInstall, [] {
        giveKeyboardTo("fCancelButtonPtr");
        press(Qt::Key_Return);
    });
    when(kAlert, [] { press(Qt::Key_Return); });
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(fs::exists(volume.trash() / "ZEK Velmora.app")) << "updated";
}

TEST_F(ControlsTest, LinksAreOpenedByKeyboardAndCopied)
{
    acceptLicense();
    when(kInstall, [] {
        giveKeyboardTo("fSendUsageDataMoreInfoPtr");
        press(Qt::Key_Return); // and not the default button
        choose("ZEK Velmora Installer", "About ZEK Velmora Installer");
    });
    when(kAbout, [] {
        giveKeyboardTo("fTechSupportURLStringPtr");
        press(Qt::Key_Space);
        click("fProductInfoURLStringPtr", Qt::AlignLeft);
        drag("fProductInfoURLStringPtr");
        press(Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(QApplication::clipboard()->text(), "www.zek.example/velmora");
        press(Qt::Key_Q, Qt::ControlModifier);
    });
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(browser.opened,
        ElementsAre("https://www.zek.example/velmora/usage-data", "https://www.zek.example/support",
            "https://www.zek.example/velmora"));
    EXPECT_FALSE(fs::exists(volume.support()));
}

TEST_F(ControlsTest, ReturnOnALinkOfTheAgreementDoesNotAgree)
{
    when(kLicense, [] {
        EXPECT_EQ(QApplication::focusWidget(), &control("fLicenceAgreementTextViewPtr"));
        press(Qt::Key_Tab);
        press(Qt::Key_Return);
        press(Qt::Key_Q, Qt::ControlModifier);
    });
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(browser.opened, ElementsAre("https://www.zek.example/privacy"));
    EXPECT_TRUE(volume.preferences().empty());
}

TEST_F(ControlsTest, AScreenReaderTellsWhatEachControlIsAndNoneThatIsNotThere)
{
    when(kLicense, [] {
        EXPECT_THAT(announced(),
            ElementsAre("StaticText License agreement", "Button Disagree", "Button Agree, default"));
        click("fAgreeButtonPtr");
    });
    when(kInstall, [] {
        EXPECT_THAT(announced(),
            ElementsAre("CheckBox Send anonymous usage data", "Link More information…", "Button Help",
                "Button Cancel", "Button Install and Restart, default"));
        choose("ZEK Velmora Installer", "About ZEK Velmora Installer");
    });
    when(kAbout, [] {
        EXPECT_THAT(announced(), ElementsAre("Link www.zek.example/velmora", "Link www.zek.example/support"));
        press(Qt::Key_Escape);
    });
    when(kInstall, [] { click("fInstallButtonPtr"); });
    when(kAlert, [] {
        EXPECT_THAT(announced(), ElementsAre("Button Help", "Button Restart, default"));
        EXPECT_EQ(control("fWindowBadgePtr").accessibleName(), "Information");
        press(Qt::Key_Escape);
    });
    EXPECT_EQ(run(), 0);
}
