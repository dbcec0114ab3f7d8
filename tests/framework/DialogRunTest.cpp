#include "tests/framework/TestDialog.h"
#include "ui/framework/HelpButton.h"

#include <QApplication>
#include <QCheckBox>
#include <QTest>
#include <gmock/gmock.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DialogRunTest : public DialogTest {
protected:
    DialogRunTest()
    {
        dialog.fFirstButtonStringPtr = "First";
        dialog.fSecondButtonStringPtr = "Second";
        dialog.fThirdButtonStringPtr = "Third";
    }

    /// Runs an alert and does the action once it can have the keyboard.
    static int32_t run(TestDialog& alert, const std::function<void()>& action)
    {
        alert.showWindow();
        return runModal(*alert.window(), [&] {
            activate(*alert.window());
            action();
        });
    }
    static int32_t runKey(TestDialog& alert, Qt::Key key)
    {
        return run(alert, [&] { QTest::keyClick(alert.window(), key); });
    }
    int32_t runButton(const char* outlet)
    {
        return run(dialog, [&] { dialog.view<QPushButton>(outlet).click(); });
    }
    void tickSuppressBox()
    {
        dialog.fSuppressDialogKeyPtr = "Key";
        ASSERT_TRUE(dialog.init());
        dialog.view<QCheckBox>("fDontDisplayWarningAgainButtonPtr").setChecked(true);
    }

    TestDialog dialog;
};

}

TEST_F(DialogRunTest, EachButtonHasItsResult)
{
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(runButton("fFirstButtonPtr"), 1);
    EXPECT_EQ(runButton("fSecondButtonPtr"), 2);
    EXPECT_EQ(runButton("fThirdButtonPtr"), 3);
    EXPECT_FALSE(dialog.window()->isVisible());
    EXPECT_THAT(dialog.events, ElementsAre("action 1", "action 2", "action 3")) << "told while still showing";
}

TEST_F(DialogRunTest, ReturnPressesTheFirstButtonUnlessAnotherIsNamed)
{
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(runKey(dialog, Qt::Key_Return), 1);
    EXPECT_EQ(runKey(dialog, Qt::Key_Enter), 1);
    TestDialog second;
    ASSERT_TRUE(second.init());
    second.fFirstButtonStringPtr = "First";
    second.fSecondButtonStringPtr = "Second";
    second.fReturnKeyButton = 2;
    EXPECT_EQ(runKey(second, Qt::Key_Return), 2);
}

TEST_F(DialogRunTest, EscapePressesTheCancelButtonWhereThereIsOne)
{
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(runKey(dialog, Qt::Key_Escape), 0) << "three buttons, none named";
    dialog.fCommandPeriodKeyButton = 2;
    auto& second = dialog.view<FixedButton>("fSecondButtonPtr");
    EXPECT_EQ(run(dialog,
                  [&] {
                      second.paintedDown.clear();
                      QTest::keyClick(dialog.window(), Qt::Key_Escape);
                  }),
        2);
    EXPECT_THAT(second.paintedDown, ElementsAre(true, false));
    EXPECT_THAT(dialog.events, ElementsAre("action 0", "action 2"));
    TestDialog single;
    single.fFirstButtonStringPtr = "OK";
    ASSERT_TRUE(single.init());
    EXPECT_EQ(runKey(single, Qt::Key_Escape), 1);
    single.fCommandPeriodKeyButton = 4;
    EXPECT_EQ(single.returnCancelButton(), &single.view<QPushButton>("fFirstButtonPtr"));
}

TEST_F(DialogRunTest, TheSuppressBoxCountsWithAnyButton)
{
    tickSuppressBox();
    EXPECT_FALSE(dialog.suppressDialog());
    EXPECT_EQ(runButton("fThirdButtonPtr"), 3);
    EXPECT_THAT(application.suppressed, ElementsAre("Key"));
    EXPECT_TRUE(dialog.suppressDialog());
    application.suppressed.clear();
    EXPECT_EQ(runKey(dialog, Qt::Key_Escape), 0);
    EXPECT_THAT(application.suppressed, ElementsAre("Key"));
    application.suppressed.clear();
    dialog.view<QCheckBox>("fDontDisplayWarningAgainButtonPtr").setChecked(false);
    EXPECT_EQ(runButton("fFirstButtonPtr"), 1);
    EXPECT_THAT(application.suppressed, IsEmpty());
}

TEST_F(DialogRunTest, AQuitResultQuitsAfterTheWindowHasGone)
{
    ASSERT_TRUE(dialog.init());
    dialog.fQuitResult = 1;
    runButton("fFirstButtonPtr");
    dialog.fQuitResultValid = true;
    runButton("fSecondButtonPtr");
    EXPECT_THAT(dialog.events, ElementsAre("action 1", "action 2"));
    dialog.events.clear();
    runButton("fFirstButtonPtr");
    EXPECT_THAT(dialog.events, ElementsAre("action 1", "quit, closed"));
}

TEST_F(DialogRunTest, AnAlertAnswersOnceWhateverElseIsClickedMeanwhile)
{
    ASSERT_TRUE(dialog.init());
    auto& first = dialog.view<QPushButton>("fFirstButtonPtr");
    EXPECT_EQ(run(dialog,
                  [&] {
                      first.animateClick(); // takes a tenth of a second
                      QTest::keyClick(dialog.window(), Qt::Key_Escape);
                  }),
        0);
    QTest::qWait(200);
    EXPECT_THAT(dialog.events, ElementsAre("action 0"));
}

TEST_F(DialogRunTest, TheDefaultButtonHasTheKeyboardAndTheDesktopsAccent)
{
    ASSERT_TRUE(dialog.init());
    dialog.fReturnKeyButton = 2;
    auto& second = dialog.view<QPushButton>("fSecondButtonPtr");
    EXPECT_EQ(run(dialog,
                  [&] {
                      EXPECT_TRUE(second.hasFocus());
                      QPalette red = QApplication::palette();
                      red.setColor(QPalette::Highlight, Qt::red);
                      QApplication::setPalette(red);
                      EXPECT_EQ(second.palette().color(QPalette::Button).hue(), QColor(Qt::red).hue());
                      holdKey(*dialog.window(), Qt::Key_Return); // still down from the window before
                      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
                  }),
        2);
}

TEST_F(DialogRunTest, HelpOpensThePageOfTheAlert)
{
    application.setDefaultHelpHint(3);
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(dialog.fHelpHint, 3);
    dialog.showWindow();
    dialog.view<HelpButton>("fHelpButtonPtr").click();
    EXPECT_THAT(frontEnd.events, ElementsAre("help  (start)"));
    EXPECT_FALSE(dialog.view<HelpButton>("fHelpButtonPtr").isHidden());
    TestDialog early;
    early.prelogin = true;
    ASSERT_TRUE(early.init());
    EXPECT_TRUE(early.view<HelpButton>("fHelpButtonPtr").isHidden());
}
