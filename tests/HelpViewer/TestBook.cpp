#include "TestBook.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtTest/QTest>
#include <cstdlib>

TestBook::TestBook()
    : fRuntimeFolder(qgetenv("XDG_RUNTIME_DIR"))
{
    setenv("CFFIXED_USER_HOME", qUtf8Printable(fFolder.path()), 1);
    setenv("XDG_RUNTIME_DIR", qUtf8Printable(fFolder.path()), 1);
    SetLanguage("en_US.UTF-8");
    writeInfo("<key>HPDBookTitle</key><string>Test Help</string>"
              "<key>HPDBookAccessPath</key><string>index.html</string>");
    addPage("en.lproj/index.html", "<p>Start</p>");
}

TestBook::~TestBook()
{
    unsetenv("CFFIXED_USER_HOME");
    setenv("XDG_RUNTIME_DIR", fRuntimeFolder.constData(), 1);
}

QString TestBook::resource(const QString& name) const
{
    return outside("Test.help/Contents/Resources/" + name);
}

void TestBook::addPage(const QString& name, const QString& body, const QString& head) const
{
    const QString page
        = "<html><head><meta charset=\"utf-8\">" + head + "</head><body>" + body + "</body></html>";
    write(resource(name), page.toUtf8());
}

void TestBook::writeInfo(const QString& entries) const
{
    write(outside("Test.help/Contents/Info.plist"),
        ("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>").toUtf8());
}

void TestBook::write(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

HelpBook TestBook::open() const
{
    std::string problem;
    const std::optional<HelpBook> book = HelpBook::open(folder(), problem);
    if (!book)
        ADD_FAILURE() << problem;
    return book.value();
}

std::string TestBook::problem() const
{
    std::string problem = "left as it was";
    const bool isOpen = HelpBook::open(folder(), problem).has_value();
    EXPECT_EQ(isOpen, problem.empty());
    return problem;
}

void SetLanguage(const char* locale) { setenv("LC_ALL", locale, 1); }

bool Eventually(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 10000); }
