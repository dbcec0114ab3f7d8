#include "TestBook.h"

#include <QDir>
#include <QFile>
#include <sys/stat.h>

namespace {

class HelpBookTest : public testing::Test {
protected:
    QUrl urlOf(const QString& resource) const
    {
        return QUrl::fromLocalFile(QFileInfo(files.resource(resource)).canonicalFilePath());
    }

    const TestBook files;
};

}

TEST_F(HelpBookTest, ABookIsReadInTheUsersLanguage)
{
    files.addPage("de.lproj/index.html", "<p>Anfang</p>");
    TestBook::write(files.resource("de.lproj/InfoPlist.strings"), "\"HPDBookTitle\" = \"Probehilfe\";");
    const std::pair<const char*, const char*> choices[]
        = { { "de_AT.UTF-8", "de" }, { "en_GB.UTF-8", "en" }, { "ja_JP.UTF-8", "en" }, { "C", "en" } };
    for (const auto& [locale, language] : choices) {
        SetLanguage(locale);
        const HelpBook book = files.open();
        EXPECT_EQ(book.startPage(), urlOf(QString(language) + ".lproj/index.html")) << locale;
        EXPECT_EQ(book.title(), QString(language) == "de" ? "Probehilfe" : "Test Help") << locale;
    }
}

TEST_F(HelpBookTest, AMissingOrDamagedBookIsNamedWithItsFault)
{
    const auto startPage
        = [](const QString& path) { return "<key>HPDBookAccessPath</key><string>" + path + "</string>"; };
    TestBook::write(files.outside("secret.html"), "secret");
    ASSERT_TRUE(QFile::link(files.outside("secret.html"), files.resource("en.lproj/link.html")));
    const QString damages[] = { "", "<key>HPDBookAccessPath</key><integer>1</integer>", startPage(""),
        startPage("missing.html"), startPage("../../../secret.html"), startPage("../../../../secret.html"),
        startPage("link.html"), startPage("."), startPage(QString(5000, 'x')) };
    for (const QString& info : damages) {
        files.writeInfo(info);
        EXPECT_EQ(files.problem().find(files.folder() + ": "), 0U) << info.left(80).toStdString();
    }
    TestBook::write(files.outside("Test.help/Contents/Info.plist"), "bplist00");
    EXPECT_NE(files.problem(), "");
    ASSERT_TRUE(QDir(files.outside("Test.help")).removeRecursively());
    EXPECT_NE(files.problem(), "");
}

TEST_F(HelpBookTest, AnAnchorIsFoundOnTheFirstPageThatHasIt)
{
    files.addPage("en.lproj/a.html", "<!-- <a name=\"named\"> --><p>name=\"named\" id=\"named\"</p>");
    files.addPage("en.lproj/b.html", "<h2><a name=\"named\"></a>Empty</h2><a name='über uns #1'>x</a>");
    files.addPage("en.lproj/c.html", "<h2 id=named>Later</h2><div><p id=\"inner\">x</p></div>");
    files.addPage("de.lproj/d.html", "<h2 id=\"german\">x</h2>");
    TestBook::write(files.resource("en.lproj/e.html"), "<a name=\"\xff\xfe<<<<\x00");
    const HelpBook book = files.open();
    const auto found = [&](const char* anchor) { return book.pageWithAnchor(anchor); };
    EXPECT_EQ(found("named").fileName(), "b.html");
    EXPECT_EQ(found("named").fragment(), "named");
    EXPECT_EQ(found("über uns #1").fragment(QUrl::FullyDecoded), "über uns #1");
    EXPECT_EQ(found("inner").fileName(), "c.html");
    for (const char* unknown : { "", "german", "Named", "nam", "missing", "\n" })
        EXPECT_EQ(found(unknown), book.startPage()) << unknown;
}

TEST_F(HelpBookTest, OnlyFilesOfTheBookAreHandedOut)
{
    TestBook::write(files.outside("secret.html"), "secret");
    TestBook::write(files.outside("Test.help/Contents/Resources-2/secret.html"), "secret");
    TestBook::write(files.resource("shared/picture.png"), "picture");
    ASSERT_TRUE(QFile::link(files.outside("secret.html"), files.resource("en.lproj/link.html")));
    ASSERT_EQ(mkfifo(qUtf8Printable(files.resource("en.lproj/pipe.html")), 0600), 0);
    const HelpBook book = files.open();
    EXPECT_EQ(book.read(book.startPage().resolved(QUrl("../shared/picture.png"))), "picture");
    const QString start = book.startPage().toString(QUrl::RemoveFilename);
    for (const char* outside : { "../../../../secret.html", "../../Resources-2/secret.html",
             "../../Info.plist", "link.html", "pipe.html", ".", "missing.html" }) {
        EXPECT_FALSE(book.contains(QUrl(start + outside))) << outside;
        EXPECT_FALSE(book.read(QUrl(start + outside)).has_value()) << outside;
    }
    for (const char* elsewhere :
        { "", "index.html", "https://www.example.com/index.html", "data:text/html,x" })
        EXPECT_FALSE(book.contains(QUrl(elsewhere))) << elsewhere;
    QUrl remote = book.startPage();
    remote.setHost("server");
    EXPECT_FALSE(book.contains(remote));
}
