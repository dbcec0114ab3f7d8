#include "SecurityAgent/ConfirmationWindow.h"
#include "SecurityAgent/AgentWords.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QtTest/QTest>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <set>

namespace {

class ConfirmationWindowTest : public testing::Test {
protected:
    ConfirmationWindowTest()
    {
        setenv("LC_ALL", "en_US.UTF-8", 1);
        // No preferences of a real home decide the language.
        setenv("CFFIXED_USER_HOME", "/nonexistent", 1);
    }
    ~ConfirmationWindowTest() override { unsetenv("CFFIXED_USER_HOME"); }

    void show(const QString& program = "Program", const QString& folder = "/volume")
    {
        window = std::make_unique<ConfirmationWindow>(Question { program, folder }, UsersAgentWords());
        window->bringToFront();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    void press(Qt::Key key) const
    {
        ASSERT_TRUE(window->isVisible());
        QTest::keyClick(QApplication::focusWidget(), key);
    }
    /// The key's first press happens elsewhere, and may reach this window or not.
    void hold(Qt::Key key) const
    {
        for (const bool isRepeated : { false, true, true }) {
            ASSERT_TRUE(window->isVisible());
            QKeyEvent held(QEvent::KeyPress, key, Qt::NoModifier, {}, isRepeated);
            QApplication::sendEvent(QApplication::focusWidget(), &held);
        }
    }
    QPushButton* button(const char* name) const { return window->findChild<QPushButton*>(name); }
    bool isAllowed() const { return !window->isVisible() && window->result() == QDialog::Accepted; }
    bool isRefused() const { return !window->isVisible() && window->result() == QDialog::Rejected; }

    std::unique_ptr<ConfirmationWindow> window;
};

/// Whether all of the label's text lies within the label.
bool IsWhole(const QLabel& label)
{
    const QRect space = label.contentsRect();
    return space.contains(label.fontMetrics().boundingRect(space, Qt::TextWordWrap, label.text()));
}

void ExpectNothingClipped(const QWidget& window)
{
    for (const QWidget* const part : window.findChildren<QWidget*>())
        EXPECT_TRUE(window.rect().contains(part->geometry())) << part->objectName().toStdString();
    for (const QLabel* const label : window.findChildren<QLabel*>())
        EXPECT_TRUE(IsWhole(*label)) << label->text().toStdString();
    for (const QPushButton* const button : window.findChildren<QPushButton*>())
        EXPECT_EQ(button->size().expandedTo(button->sizeHint()), button->size())
            << button->text().toStdString();
}

}

TEST_F(ConfirmationWindowTest, OnlyAllowAllows)
{
    show();
    button("allow")->click();
    EXPECT_TRUE(isAllowed());
    show();
    button("cancel")->click();
    EXPECT_TRUE(isRefused());
    show();
    press(Qt::Key_Escape);
    EXPECT_TRUE(isRefused());
    show();
    window->close();
    EXPECT_TRUE(isRefused());
}

TEST_F(ConfirmationWindowTest, ReturnActsOnAButtonThatTabHasChosenAndOnNothingElse)
{
    for (const Qt::Key key : { Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space }) {
        show();
        hold(key); // since the window before
        press(key);
        EXPECT_TRUE(window->isVisible()) << key;
        press(Qt::Key_Tab);
        EXPECT_TRUE(button("cancel")->hasFocus());
        press(Qt::Key_Tab);
        press(key);
        EXPECT_TRUE(isAllowed()) << key;
    }
    show();
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_TRUE(isRefused());
}

TEST_F(ConfirmationWindowTest, TextsAreShownAsTheyAreAndToldToScreenReaders)
{
    const QString program = "<b>A&B</b> %1 %2";
    const QString folder = "/<i>x</i>/" + QString(500, 'W');
    show(program, folder);
    for (const QLabel* const label : window->findChildren<QLabel*>())
        EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->objectName().toStdString();
    EXPECT_TRUE(window->findChild<QLabel*>("message")->text().contains(program));
    const auto* const path = window->findChild<QLabel*>("folder");
    EXPECT_TRUE(path->text().startsWith("/<i>x</i>/"));
    EXPECT_TRUE(path->toolTip().contains("&lt;i&gt;")) << "tool tips take markup for what it is";
    const QAccessibleInterface* const reader = QAccessible::queryAccessibleInterface(window.get());
    EXPECT_EQ(reader->role(), QAccessible::Dialog);
    const QString told = reader->text(QAccessible::Description);
    EXPECT_TRUE(told.contains(program) && told.contains(folder)) << told.toStdString();
}

TEST_F(ConfirmationWindowTest, NothingIsClippedInAnyLanguageOrSize)
{
    const QFont usual = QApplication::font();
    const QString longest(300, 'W');
    std::set<QString> titles;
    for (const int percent : { 100, 200 }) {
        QFont font = usual;
        font.setPointSizeF(usual.pointSizeF() * percent / 100);
        QApplication::setFont(font);
        for (const char* const locale : { "en_US", "de_DE", "es_ES", "fr_FR", "ja_JP", "zh_CN" }) {
            SCOPED_TRACE(std::string(locale) + ' ' + std::to_string(percent));
            setenv("LC_ALL", locale, 1);
            for (const QString& text : { QString("Program"), longest, QString("長い名前").repeated(50) }) {
                show(text, '/' + text);
                ExpectNothingClipped(*window);
            }
            titles.insert(window->windowTitle());
        }
    }
    QApplication::setFont(usual);
    EXPECT_EQ(titles.size(), 6U);
}

TEST(Showable, LeavesNothingThatActsOrHides)
{
    const struct {
        std::string given;
        std::string shown;
    } texts[] = {
        { "Program 2 – ünïcode 日本 😀 <b>", "Program 2 – ünïcode 日本 😀 <b>" },
        { "a\x1b[31m\r\n\t\x7f", "a�[31m����" },
        { "\u009b\u0085", "��" }, // control characters that terminals know, too
        { "\u202Etxt.exe\u202C\u200B\u2028", "�txt.exe���" },
        { "\xFFz\xC3", "�z�" },
        { std::string("a\0b", 3), "a�b" },
    };
    for (const auto& text : texts)
        EXPECT_EQ(Showable(text.given, 80).toStdString(), text.shown);
}

TEST(Showable, MakesRoomInTheMiddleOfALongText)
{
    EXPECT_EQ(Showable("1234567890", 10), "1234567890");
    EXPECT_EQ(Showable("12345678901", 10), "12345…8901");
    EXPECT_EQ(Showable("😀😀😀😀😀😀😀😀😀😀😀", 10), "😀😀😀😀😀…😀😀😀😀");
    EXPECT_EQ(Showable(std::string(1 << 20, 'x'), 80).size(), 80);
}
