#include "ui/framework/ClickableTextField.h"

#include "tests/framework/FrameworkTest.h"
#include "tests/support/Browser.h"
#include "ui/framework/KeyEquivalent.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <gmock/gmock.h>

namespace {

constexpr const char* kAddress = "https://zek.example/more";
constexpr QPoint kOnText(3, 3);

class LinkFieldTest : public FrameworkTest {
protected:
    LinkFieldTest()
    {
        field.resize(300, 40);
        field.setStringValue("More");
    }

    void click(QPoint position = kOnText) { QTest::mouseClick(&field, Qt::LeftButton, {}, position); }
    void moveTo(QPoint position, Qt::MouseButtons buttons = Qt::NoButton)
    {
        QMouseEvent event(
            QEvent::MouseMove, position, field.mapToGlobal(position), Qt::NoButton, buttons, {});
        QCoreApplication::sendEvent(&field, &event);
    }
    bool isLink() const { return field.font().underline() && !field.textFieldRect().isEmpty(); }

    Browser browser;
    ClickableTextField field;
};

}

TEST_F(LinkFieldTest, ItIsALinkWhileItHasAURLAndText)
{
    EXPECT_FALSE(isLink());
    EXPECT_EQ(field.textFieldRect(), QRect());
    QFont small = field.font();
    small.setPointSizeF(5);
    field.setFont(small);
    field.setURL_WithString(kAddress);
    EXPECT_TRUE(isLink());
    EXPECT_EQ(field.stringValue(), "More");
    EXPECT_EQ(field.font().pointSizeF(), QApplication::font().pointSizeF());
    EXPECT_EQ(field.textFieldRect(), QRect(QPoint(), field.fontMetrics().size(0, "More")));
    field.setStringValue("More <b>than</b> this");
    EXPECT_EQ(field.textFieldRect().width(), field.fontMetrics().size(0, "More <b>than</b> this").width());
    field.setURL_WithString("no url at all");
    EXPECT_EQ(field.url(), nullptr);
    EXPECT_FALSE(isLink());
    EXPECT_EQ(field.stringValue(), "More <b>than</b> this");
    field.setURL_WithString("\xff");
    EXPECT_EQ(field.url(), nullptr);
}

TEST_F(LinkFieldTest, AURLForAnEmptyFieldWaitsForItsText)
{
    ClickableTextField empty;
    empty.setURL_WithString(kAddress);
    EXPECT_FALSE(empty.font().underline());
    EXPECT_EQ(empty.textFieldRect(), QRect());
    empty.setStringValue("Text");
    EXPECT_TRUE(empty.font().underline());
    EXPECT_FALSE(empty.textFieldRect().isEmpty());
}

TEST_F(LinkFieldTest, ASingleClickOpensTheLatestURL)
{
    field.setURL_WithString("https://old.example/");
    field.setURL_WithString(kAddress);
    QTest::mousePress(&field, Qt::LeftButton, {}, kOnText);
    EXPECT_TRUE(browser.opened.empty()) << "not before the button is let go";
    QTest::mouseRelease(&field, Qt::LeftButton, {}, kOnText);
    EXPECT_THAT(browser.opened, testing::ElementsAre(kAddress));
    QTest::mouseClick(&field, Qt::RightButton, {}, kOnText);
    EXPECT_EQ(browser.opened.size(), 1);
    field.setURL_Ptr({});
    click();
    EXPECT_EQ(browser.opened.size(), 1);
}

TEST_F(LinkFieldTest, FurtherClicksInARowAndDragsOpenNothing)
{
    field.setURL_WithString(kAddress);
    click();
    QTest::mouseDClick(&field, Qt::LeftButton, {}, kOnText);
    click();
    click();
    EXPECT_EQ(browser.opened.size(), 1) << "the first click";
    QTest::qWait(QApplication::doubleClickInterval() + 10);
    click();
    EXPECT_EQ(browser.opened.size(), 2) << "a row of its own";

    QTest::mousePress(&field, Qt::LeftButton, {}, kOnText);
    moveTo(kOnText + QPoint(60, 0), Qt::LeftButton);
    QTest::mouseRelease(&field, Qt::LeftButton, {}, kOnText + QPoint(60, 0));
    EXPECT_EQ(browser.opened.size(), 2);
}

TEST_F(LinkFieldTest, TheHandIsOverTheTextOfALinkOnly)
{
    const QPoint beside(field.fontMetrics().horizontalAdvance("More") + 1, 3);
    moveTo(kOnText);
    EXPECT_NE(field.cursor().shape(), Qt::PointingHandCursor);
    field.setURL_WithString(kAddress);
    moveTo(kOnText);
    EXPECT_EQ(field.cursor().shape(), Qt::PointingHandCursor);
    moveTo(beside);
    EXPECT_NE(field.cursor().shape(), Qt::PointingHandCursor);
    moveTo(kOnText);
    field.setURL_Ptr({});
    EXPECT_NE(field.cursor().shape(), Qt::PointingHandCursor);
}

TEST_F(LinkFieldTest, TheKeyboardOpensItOnceBeforeAnyDefaultButton)
{
    QWidget window;
    auto* const link = new ClickableTextField(&window);
    QPushButton button("Go", &window);
    SetReturnKeyEquivalent(button);
    int pressed = 0;
    QObject::connect(&button, &QAbstractButton::clicked, [&] { ++pressed; });
    link->setStringValue("More");
    EXPECT_EQ(link->focusPolicy(), Qt::NoFocus);
    link->setURL_WithString(kAddress);
    window.show();
    activate(window);
    link->setFocus();
    for (const Qt::Key key : { Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_A })
        QTest::keyClick(link, key);
    EXPECT_EQ(browser.opened.size(), 3);
    EXPECT_EQ(pressed, 0);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, {}, " ", true);
    QCoreApplication::sendEvent(link, &held);
    EXPECT_EQ(browser.opened.size(), 3) << "a key that is held down does not open it again and again";
}
