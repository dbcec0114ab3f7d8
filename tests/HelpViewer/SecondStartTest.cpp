#include "TestBook.h"

#include "HelpViewer/SingleViewer.h"

#include <Host/HostHelp.h>

#include <QDir>
#include <QLocalSocket>
#include <QProcess>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class SecondStartTest : public testing::Test {
protected:
    ~SecondStartTest() override { unsetenv("HOST_TOOLS_FOLDER"); }

    /// Starts the program as the installer does. It is ended with the object.
    void start(QProcess& viewer, const std::string& anchor = {}) const
    {
        setenv("HOST_TOOLS_FOLDER", qUtf8Printable(QFileInfo(HELP_VIEWER).path()), 1);
        const std::vector<std::string> command = HostHelpCommand(files.folder(), anchor);
        QStringList arguments;
        for (size_t i = 1; i < command.size(); ++i)
            arguments.append(QString::fromStdString(command[i]));
        viewer.start(QString::fromStdString(command.front()), arguments);
    }
    /// Runs the program to its end. @return its exit status, -1 when it did not end.
    static int run(QProcess& viewer, const QStringList& arguments)
    {
        viewer.start(HELP_VIEWER, arguments);
        return viewer.waitForFinished(10000) && viewer.exitStatus() == QProcess::NormalExit
            ? viewer.exitCode()
            : -1;
    }
    QStringList sockets() const
    {
        return QDir(files.outside("HelpViewer")).entryList(QDir::System | QDir::NoDotAndDotDot);
    }
    QString socket() const { return files.outside("HelpViewer/" + sockets().value(0)); }

    const TestBook files;
    QStringList asked;
    const std::function<void(const QString&)> record
        = [this](const QString& anchor) { asked.append(anchor); };
};

/// Ends the process, however the test ends.
class Viewer : public QProcess {
public:
    ~Viewer() override
    {
        kill();
        waitForFinished();
    }
};

}

TEST_F(SecondStartTest, TheRunningViewerShowsThePageAndTheSecondEnds)
{
    SingleViewer first(files.open().folder(), record);
    ASSERT_FALSE(first.handOver({}));
    const QStringList anchors { "über uns", "", "restart" };
    for (const QString& anchor : anchors) {
        Viewer second;
        start(second, anchor.toStdString());
        EXPECT_TRUE(Eventually([&] { return second.state() == QProcess::NotRunning; }));
        EXPECT_EQ(second.exitCode(), 0);
    }
    EXPECT_EQ(asked, anchors);

    SingleViewer other("/another/book", record);
    EXPECT_FALSE(other.handOver("x"));
    EXPECT_EQ(sockets().size(), 2) << "each book has its own viewer";
}

TEST_F(SecondStartTest, WhatAKilledViewerLeftIsReplaced)
{
    {
        Viewer first;
        start(first);
        ASSERT_TRUE(Eventually([&] { return sockets().size() == 1; }));
        Viewer second;
        EXPECT_EQ(run(second, { QString::fromStdString(files.folder()) }), 0);
        EXPECT_EQ(first.state(), QProcess::Running);
    }
    ASSERT_EQ(sockets().size(), 1) << "left over";
    SingleViewer next(files.open().folder(), record);
    EXPECT_FALSE(next.handOver({}));
    Viewer last;
    start(last, "there");
    EXPECT_TRUE(Eventually([&] { return asked == QStringList("there"); }));
}

TEST_F(SecondStartTest, AFolderThatOthersCanEnterIsNotUsed)
{
    const QString folder = files.outside("HelpViewer");
    ASSERT_EQ(mkdir(qUtf8Printable(folder), 0700), 0);
    ASSERT_EQ(chmod(qUtf8Printable(folder), 0770), 0);
    SingleViewer first(files.open().folder(), record);
    EXPECT_FALSE(first.handOver({}));
    EXPECT_EQ(sockets(), QStringList());
    ASSERT_EQ(chmod(qUtf8Printable(folder), 0700), 0);
    if (geteuid() != 0)
        return;
    ASSERT_EQ(chown(qUtf8Printable(folder), 65534, 65534), 0);
    SingleViewer second(files.open().folder(), record);
    EXPECT_FALSE(second.handOver({}));
    EXPECT_EQ(sockets(), QStringList()) << "another user's folder";
}

TEST_F(SecondStartTest, WhateverComesInKeepsTheViewerGoing)
{
    SingleViewer first(files.open().folder(), record);
    ASSERT_FALSE(first.handOver({}));
    QLocalSocket silent;
    silent.connectToServer(socket());
    QLocalSocket endless;
    endless.connectToServer(socket());
    endless.write(QByteArray(100000, 'x'));
    EXPECT_TRUE(Eventually([&] { return endless.state() == QLocalSocket::UnconnectedState; }));
    QLocalSocket strange;
    strange.connectToServer(socket());
    strange.write(QByteArray("\0\xff\xfe", 3));
    strange.write("\nmore\n");
    EXPECT_TRUE(Eventually([&] { return asked.size() == 1; }));
    Viewer second;
    start(second, "there");
    EXPECT_TRUE(Eventually([&] { return asked.size() == 2 && asked.last() == "there"; }));
}

TEST_F(SecondStartTest, ABookThatCannotBeShownIsToldWithoutADisplay)
{
    Viewer viewer;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DISPLAY");
    environment.insert("QT_QPA_PLATFORM", "xcb");
    viewer.setProcessEnvironment(environment);
    EXPECT_EQ(run(viewer, { "/nowhere/Missing.help", "anchor" }), 1);
    EXPECT_EQ(
        viewer.readAllStandardError(), "HelpViewer: /nowhere/Missing.help: There is no such help book\n");
    EXPECT_EQ(run(viewer, {}), 64);
    EXPECT_EQ(run(viewer, { "a", "b", "c" }), 64);
}
