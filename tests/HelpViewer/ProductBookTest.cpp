// The help book that the installer carries.

#include "TestBook.h"

#include "CoreFoundation/Runtime.h"

#include <CoreFoundation/CFBundle.h>

#include <QDir>
#include <QRegularExpression>
#include <QTextDocument>
#include <map>
#include <set>

namespace {

constexpr const char* kBook = PRODUCT_RESOURCES "/ZEK Velmora Help.help";

struct Language {
    const char* locale;
    const char* folder;
};
constexpr Language kLanguages[]
    = { { "en_US.UTF-8", "en.lproj" }, { "de_DE.UTF-8", "de.lproj" }, { "fr_FR.UTF-8", "fr.lproj" },
          { "es_ES.UTF-8", "es.lproj" }, { "ja_JP.UTF-8", "ja.lproj" }, { "zh_CN.UTF-8", "zh-Hans.lproj" } };

class ProductBookTest : public testing::TestWithParam<Language> {
protected:
    ProductBookTest() { SetLanguage(GetParam().locale); }

    static HelpBook open()
    {
        std::string problem;
        return HelpBook::open(kBook, problem).value();
    }
    static QString folder(const char* language) { return QString(kBook) + "/Contents/Resources/" + language; }
    /// The pages of a language by name.
    static std::map<QString, QString> pages(const char* language)
    {
        std::map<QString, QString> result;
        const QDir place(folder(language));
        for (const QString& name : place.entryList({ "*.html" }, QDir::Files)) {
            QFile file(place.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            result[name] = QString::fromUtf8(file.readAll());
        }
        return result;
    }
    /// Every value of an attribute.
    static QStringList values(const QString& html, const char* attribute)
    {
        QStringList result;
        const QRegularExpression pattern(QString("\\s%1=\"([^\"]*)\"").arg(attribute));
        for (auto match = pattern.globalMatch(html); match.hasNext();)
            result.append(match.next().captured(1));
        return result;
    }

    const TestBook home;
};

/// A text of the installer's windows.
QString WindowText(const char* key)
{
    constexpr const char* path = PRODUCT_RESOURCES;
    const cf::Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path), static_cast<CFIndex>(strlen(path)), true));
    const cf::Owned<CFBundleRef> bundle(CFBundleCreate(kCFAllocatorDefault, url.get()));
    const cf::Owned<CFStringRef> text(CFBundleCopyLocalizedString(
        bundle.get(), cf::Owned<CFStringRef>(cf::MakeString(key)).get(), nullptr, nullptr));
    return QString::fromStdString(cf::Utf8(text.get()));
}

/// Spaces of all kinds count as one, and the colon of a label as none.
QString Plain(QString text)
{
    text.replace(QChar(QChar::Nbsp), u' ');
    return text.remove(QRegularExpression(" ?[:：]$"));
}

}

TEST_P(ProductBookTest, OpensInItsLanguage)
{
    const HelpBook book = open();
    EXPECT_TRUE(book.startPage().path().endsWith(QString(GetParam().folder) + "/index.html"));
    EXPECT_EQ(book.title(), WindowText("kHelpMenuItem"));
    const QString language = QString(GetParam().folder).section(u'.', 0, 0);
    for (const auto& [name, html] : pages(GetParam().folder))
        EXPECT_EQ(values(html, "lang"), QStringList(language)) << name.toStdString();
}

TEST_P(ProductBookTest, HasAllPagesAndAnchorsAndNoLinkThatLeadsNowhere)
{
    const HelpBook book = open();
    for (const char* anchor :
        { "install", "update", "driver", "restart", "usagedata", "uninstall", "troubleshooting" }) {
        const QUrl place = book.pageWithAnchor(anchor);
        EXPECT_EQ(place.fragment(), anchor);
        EXPECT_TRUE(place.path().contains(GetParam().folder)) << anchor;
    }
    const std::map<QString, QString> english = pages("en.lproj");
    const std::map<QString, QString> here = pages(GetParam().folder);
    ASSERT_EQ(here.size(), english.size());
    EXPECT_GE(english.size(), 5U);
    for (const auto& [name, html] : here) {
        ASSERT_EQ(english.count(name), 1U) << name.toStdString();
        EXPECT_EQ(values(html, "name"), values(english.at(name), "name")) << name.toStdString();
        EXPECT_EQ(values(html, "href").size(), values(english.at(name), "href").size()) << name.toStdString();
        for (const QString& link : values(html, "href")) {
            if (link.startsWith("https://www.zek.example/"))
                continue;
            const QUrl target(link);
            ASSERT_EQ(here.count(target.path()), 1U) << link.toStdString();
            EXPECT_TRUE(values(here.at(target.path()), "name").contains(target.fragment()))
                << link.toStdString();
        }
    }
}

TEST_P(ProductBookTest, NamesWhatTheWindowsShowAsTheyShowIt)
{
    QString text;
    for (const auto& [name, html] : pages(GetParam().folder)) {
        QTextDocument page;
        page.setHtml(html);
        text += page.toPlainText() + u'\n';
    }
    text = Plain(text);
    for (const char* key : { "Agree", "Install", "InstallAndRestart", "Update", "UpdateAndRestart", "Restart",
             "OK", "Cancel", "High-Powered Ports:", "Enabled", "Disabled", "kSendUsageDataButton",
             "kUninstallMenuItem", "kAboutMenuItem" })
        EXPECT_TRUE(text.contains(Plain(WindowText(key)))) << key;
    QStringList links;
    for (const auto& [name, html] : pages(GetParam().folder))
        links += values(html, "href");
    for (const char* key : { "kSendUsageDataMoreInfoURL", "kAboutWindowTechSupportURL" })
        EXPECT_TRUE(links.contains(WindowText(key))) << key;
}

INSTANTIATE_TEST_SUITE_P(Languages, ProductBookTest, testing::ValuesIn(kLanguages),
    [](const auto& language) { return std::string(language.param.locale, 2); });
