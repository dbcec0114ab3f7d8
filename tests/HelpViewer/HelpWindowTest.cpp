#include "TestBook.h"

#include "HelpViewer/HelpWindow.h"
#include "tests/support/Browser.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>
#include <QToolButton>
#include <QtTest/QTest>
#include <gmock/gmock.h>
#include <memory>
#include <set>

namespace {

class HelpWindowTest : public testing::Test {
protected:
    ~HelpWindowTest() override
    {
        QApplication::setPalette(QPalette());
        QApplication::setFont(QFont());
    }

    /// Shows the book as it is by now.
    void show(const QString& anchor = {})
    {
        window = std::make_unique<HelpWindow>(files.open());
        window->showPage(anchor);
        window->bringToFront();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        page = window->findChild<QTextBrowser*>("page");
        search = window->findChild<QLineEdit*>("search");
    }
    QToolButton* button(const char* name) const { return window->findChild<QToolButton*>(name); }
    QString pageShown() const { return page->source().fileName(); }
    QString selected() const { return page->textCursor().selectedText(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }

    const TestBook files;
    std::unique_ptr<HelpWindow> window;
    QTextBrowser* page = nullptr;
    QLineEdit* search = nullptr;
};

/// A page of many paragraphs that are longer than a line, with a heading in the middle.
QString LongPage()
{
    QString body;
    for (int number = 0; number < 200; ++number)
        body += QString("<p>Line %1 %2</p>").arg(number).arg(QString("and so on ").repeated(20));
    return body.replace("<p>Line 100 ", "<h2><a name=\"middle\"></a>Middle</h2><p>Line 100 ");
}

}

TEST_F(HelpWindowTest, LinksLeadWithinTheBookOrToTheDesktopsBrowser)
{
    TestBook::write(files.outside("secret.html"), "secret");
    files.addPage("en.lproj/next.html", "<p>Next</p>");
    const QString hostile[]
        = { "../../../../secret.html", QUrl::fromLocalFile(files.outside("secret.html")).toString(),
              "javascript:next.html", "data:text/html,secret", "ftp://host/next.html", "missing.html" };
    for (const QString& link : hostile) {
        files.addPage("en.lproj/index.html", "<p>Start <a href=\"" + link + "\">link</a></p>");
        show();
        press(Qt::Key_Tab);
        press(Qt::Key_Return);
        EXPECT_EQ(page->toPlainText(), "Start link") << link.toStdString();
    }

    const Browser browser;
    files.addPage("en.lproj/index.html",
        "<p><a href=\"https://www.example.com/a?b#c\">1</a> <a href=\"next.html\">2</a></p>");
    show();
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_THAT(browser.opened, testing::ElementsAre("https://www.example.com/a?b#c"));
    EXPECT_EQ(pageShown(), "index.html");
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_EQ(pageShown(), "next.html");
    EXPECT_EQ(browser.opened.size(), 1);
}

TEST_F(HelpWindowTest, PagesLoadTheirPartsFromTheBookAlone)
{
    QImage picture(3, 3, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(QDir().mkpath(files.resource("shared")) && picture.save(files.resource("shared/in.png")));
    ASSERT_TRUE(picture.save(files.outside("out.png")));
    TestBook::write(files.resource("shared/in.css"), "p { color: #123456; }");
    TestBook::write(files.outside("out.css"), "p { color: #654321; }");
    TestBook::write(files.resource("shared/damaged.png"), "no picture");
    const QString pictures[] = { "../shared/in.png", "../../../../out.png", files.outside("out.png"),
        "file://" + files.outside("out.png"), "../shared/damaged.png", "missing.png" };
    QString body = "<p>text</p>";
    for (const QString& name : pictures)
        body += "<img src=\"" + name + "\">";
    const auto colour
        = [this] { return page->document()->find("text").charFormat().foreground().color().name(); };
    for (const QString& sheet :
        { QString("../../../../out.css"), files.outside("out.css"), QString("../shared/in.css") }) {
        files.addPage("en.lproj/index.html", body,
            "<link rel=\"stylesheet\" type=\"text/css\" href=\"" + sheet + "\">");
        show();
        EXPECT_EQ(colour() == "#123456", sheet == "../shared/in.css") << sheet.toStdString();
        EXPECT_NE(colour(), "#654321") << sheet.toStdString();
    }
    window->grab(); // which paints
    for (const QString& name : pictures) {
        const auto loaded
            = page->document()->resource(QTextDocument::ImageResource, QUrl(name)).value<QImage>();
        EXPECT_EQ(loaded.width(), name == "../shared/in.png" ? 3 : 1) << name.toStdString();
    }
}

TEST_F(HelpWindowTest, AnAnchorIsScrolledToWheneverItIsAskedFor)
{
    files.addPage("en.lproj/long.html", LongPage());
    const auto headingIsNearTheTop = [this] {
        const QTextCursor heading = page->document()->find("Middle");
        const int top = page->cursorRect(heading).top();
        return top >= 0 && top < page->viewport()->height() / 3;
    };
    show("middle"); // asked for before the window is visible
    EXPECT_TRUE(Eventually(headingIsNearTheTop));
    window->resize(window->width() / 2, window->height());
    EXPECT_TRUE(Eventually(headingIsNearTheTop)) << "lines break elsewhere";
    window->showPage({});
    window->showPage("middle");
    EXPECT_TRUE(Eventually(headingIsNearTheTop));
    window->showPage("unknown");
    EXPECT_EQ(pageShown(), "index.html");
}

TEST_F(HelpWindowTest, SearchFindsWhileTypingAndGoesRound)
{
    files.addPage("en.lproj/index.html", "<p>port one, port two, Portal, 高出力ポート</p>");
    show();
    const auto* const notFound = window->findChild<QLabel*>("notFound");
    press(Qt::Key_F, Qt::ControlModifier);
    ASSERT_EQ(QApplication::focusWidget(), search);
    QTest::keyClicks(search, "port");
    EXPECT_EQ(page->textCursor().selectionStart(), 0);
    press(Qt::Key_Return);
    EXPECT_EQ(page->textCursor().selectionStart(), 10);
    QTest::keyClicks(search, "a");
    EXPECT_EQ(selected(), "Porta");
    EXPECT_FALSE(notFound->isVisible());
    QTest::keyClicks(search, "x");
    EXPECT_TRUE(notFound->isVisible());
    EXPECT_EQ(search->accessibleDescription(), notFound->text());
    EXPECT_EQ(selected(), "");
    press(Qt::Key_Backspace);
    press(Qt::Key_Backspace);
    EXPECT_FALSE(notFound->isVisible());
    const int here = page->textCursor().selectionStart();
    press(Qt::Key_Return, Qt::ShiftModifier);
    press(Qt::Key_F3);
    EXPECT_EQ(page->textCursor().selectionStart(), here);
    for (int match = 0; match < 3; ++match)
        press(Qt::Key_Return);
    EXPECT_EQ(page->textCursor().selectionStart(), here) << "three matches, then the first again";

    press(Qt::Key_Escape);
    EXPECT_EQ(search->text(), "");
    EXPECT_TRUE(window->isVisible());
    search->setText("ポート");
    EXPECT_EQ(selected(), "ポート");
}

TEST_F(HelpWindowTest, ThePageFollowsThePaletteInItsPlace)
{
    files.addPage("en.lproj/long.html", LongPage() + "<a href=\"index.html\">link</a>");
    show("middle");
    page->verticalScrollBar()->setValue(page->verticalScrollBar()->value() + 333);
    const int place = page->verticalScrollBar()->value();
    QPalette dark(QColor(0x35, 0x36, 0x38), QColor(0x20, 0x21, 0x23));
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Link, QColor(0, 0, 0xee)); // unreadable on black
    QApplication::setPalette(dark);
    const auto colourOf
        = [this](const char* text) { return page->document()->find(text).charFormat().foreground().color(); };
    ASSERT_TRUE(Eventually([&] { return colourOf("Line 7") == dark.color(QPalette::Text); }));
    EXPECT_GT(colourOf("link").lightness(), 128);
    EXPECT_EQ(page->verticalScrollBar()->value(), place);
    EXPECT_EQ(pageShown(), "long.html");
}

TEST_F(HelpWindowTest, EverythingIsNamedAndReachedByTabInEveryLanguage)
{
    files.addPage("en.lproj/second.html", "<p><a name=\"second\">x</a></p>");
    std::set<QString> words;
    for (const char* locale : { "en_US", "de_DE", "fr_FR", "es_ES", "ja_JP", "zh_CN", "nl_NL" }) {
        SetLanguage((std::string(locale) + ".UTF-8").c_str());
        show();
        window->showPage("second");
        window->showPage({});
        page->backward();
        std::set<QString> names;
        for (int step = 0; step < 6; ++step) {
            press(Qt::Key_Tab);
            names.insert(QApplication::focusWidget()->accessibleName());
        }
        EXPECT_EQ(names.size(), 5U) << locale << ": three buttons, the field, the page";
        EXPECT_EQ(names.count({}), 0U);
        words.insert(button("contents")->text());
    }
    EXPECT_EQ(words, (std::set<QString> { "Contents", "Inhalt", "Sommaire", "Contenido", "目次", "目录" }));
}

TEST_F(HelpWindowTest, NothingIsCutOffInTextOfDoubleSize)
{
    SetLanguage("de_DE.UTF-8");
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * 2);
    QApplication::setFont(font);
    show();
    window->resize(1, 1);
    for (QWidget* const widget : { static_cast<QWidget*>(search), static_cast<QWidget*>(button("back")),
             static_cast<QWidget*>(button("forward")), static_cast<QWidget*>(button("contents")) }) {
        const QSize needed = widget->minimumSizeHint();
        EXPECT_EQ(widget->size().expandedTo(needed), widget->size()) << widget->objectName().toStdString();
    }
    EXPECT_GE(button("forward")->width(), button("forward")->fontMetrics().horizontalAdvance("Vorwärts"));
}
