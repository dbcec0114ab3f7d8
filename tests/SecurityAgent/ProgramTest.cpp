#include "Agent.h"

#include <QFile>
#include <QtTest/QTest>
#include <csignal>
#include <gmock/gmock.h>
#include <utility>

using ::testing::HasSubstr;

namespace {

/// Answers the question on a terminal. @return the exit status.
int Answer(const std::string& typed, const char* language = "en_US.UTF-8")
{
    Terminal terminal("LC_ALL", language);
    terminal.agent.startFor("Program");
    terminal.type(typed, 1);
    return terminal.agent.exitStatus();
}

/// A process that has ended and that nobody has asked for its status has no program any more.
bool HasEnded(const QByteArray& process) { return !QFile::exists("/proc/" + process + "/exe"); }

QList<QByteArray> ChildrenOf(qint64 process)
{
    QFile children(QString("/proc/%1/task/%1/children").arg(process));
    return children.open(QIODevice::ReadOnly) ? children.readAll().simplified().split(' ')
                                              : QList<QByteArray>();
}

}

TEST(SecurityAgent, AnswersInTheUsersPlaceWhenTold)
{
    const std::pair<const char*, int> answers[]
        = { { "allow", 0 }, { "deny", 1 }, { "", 64 }, { "Allow", 64 } };
    for (const auto& [given, status] : answers) {
        Agent agent("SECURITY_AGENT_ANSWER", given);
        agent.startFor("Program");
        EXPECT_EQ(agent.exitStatus(), status) << given;
        EXPECT_EQ(agent.errors().empty(), status != 64) << given;
    }
    for (const QStringList& wrong : { QStringList(), QStringList("  "), QStringList({ "a", "b" }) }) {
        Agent agent("SECURITY_AGENT_ANSWER", "allow");
        agent.start(SECURITY_AGENT, wrong);
        EXPECT_EQ(agent.exitStatus(), 64);
    }
}

TEST(SecurityAgent, SaysWhenThereIsNobodyToAsk)
{
    for (const char* const display : { "", ":4242" }) {
        Agent agent("DISPLAY", display);
        agent.startFor("Program");
        EXPECT_EQ(agent.exitStatus(), 2);
        EXPECT_THAT(agent.errors(), HasSubstr("neither a display nor a terminal"));
    }
}

TEST(SecurityAgent, UnderstandsAnswersOnTheTerminal)
{
    for (const char* const yes : { "y\n", "  YES \n" })
        EXPECT_EQ(Answer(yes), 0) << yes;
    for (const char* const no : { "\n", "n\n", "No\n", "\x04", "\x03" })
        EXPECT_EQ(Answer(no), 1) << no;
    const struct {
        const char *language, *yes, *no;
    } words[] = { { "de_DE", "J\n", "nein\n" }, { "fr_FR", "oui\n", "non\n" },
        { "es_ES", "Si\u0301\n", "no\n" }, { "ja_JP", "ｙ\n", "いいえ\n" }, { "zh_CN", "是\n", "否\n" } };
    for (const auto& word : words) {
        EXPECT_EQ(Answer(word.yes, word.language), 0) << word.yes;
        EXPECT_EQ(Answer("y\n", word.language), 0) << word.language;
        EXPECT_EQ(Answer(word.no, word.language), 1) << word.no;
    }
}

TEST(SecurityAgent, AsksAgainTwiceAtMost)
{
    Terminal terminal;
    terminal.agent.startFor("Program");
    terminal.type("ja\n", 1);
    terminal.type(std::string("\xff\x01", 2) + std::string(1000, 'y') + '\n', 2);
    terminal.type("oui\n", 3);
    EXPECT_EQ(terminal.agent.exitStatus(), 1);
    Terminal other;
    other.agent.startFor("Program");
    other.type("what?\n", 1);
    other.type("y\n", 2);
    EXPECT_EQ(other.agent.exitStatus(), 0);
}

TEST(SecurityAgent, IgnoresWhatWasTypedBeforeTheQuestion)
{
    Terminal terminal;
    terminal.type("y\ny\n");
    terminal.agent.startFor("Program");
    terminal.type("n\n", 1);
    EXPECT_EQ(terminal.agent.exitStatus(), 1);
}

TEST(SecurityAgent, KeepsControlCharactersFromTheTerminal)
{
    Terminal terminal("ZEK_STARTUP_VOLUME", "/v\x1b[2J\x7f\u202e\u202c");
    terminal.agent.startFor("\x1b]0;t\x07<b>\u009bN\nx\r");
    terminal.type("n\n", 1);
    EXPECT_THAT(terminal.seen(), HasSubstr("“�]0;t�<b>�N�x�” wants"));
    EXPECT_THAT(terminal.seen(), HasSubstr("\n/v�[2J���\r\n"));
}

TEST(SecurityAgent, AsksOnTheTerminalWhereTheDisplayCannotBeUsed)
{
    const std::pair<const char*, const char*> displays[] = { { "DISPLAY", ":4242" },
        { "WAYLAND_DISPLAY", "none" }, { "QT_QPA_PLATFORM", "none" }, { "QT_QPA_PLATFORM", "offscreen" } };
    for (const auto& [name, value] : displays) {
        Terminal terminal(name, value);
        terminal.agent.startFor("Program");
        terminal.type("y\n", 1);
        EXPECT_EQ(terminal.agent.exitStatus(), 0) << name << '=' << value;
        EXPECT_EQ(terminal.agent.errors(), "") << "of no use to who is asked";
    }
}

TEST(SecurityAgent, TakesItsWindowAlongHoweverItEnds)
{
    const Screen screen;
    for (const int signal : { SIGINT, SIGTERM, SIGHUP, SIGKILL }) {
        Agent agent("DISPLAY", screen.display());
        agent.startFor("Program");
        ASSERT_TRUE(
            QTest::qWaitFor([&] { return !ChildrenOf(agent.processId()).value(0).isEmpty(); }, 10000));
        const QByteArray window = ChildrenOf(agent.processId()).value(0);
        kill(static_cast<pid_t>(agent.processId()), signal);
        EXPECT_EQ(agent.exitStatus(), signal == SIGKILL ? -1 : 1) << signal;
        EXPECT_TRUE(QTest::qWaitFor([&] { return HasEnded(window); }, 10000)) << signal;
    }
}

TEST(SecurityAgent, TellsTheAnswerGivenInItsWindow)
{
    for (const auto& [keys, status] : { std::pair("Tab Tab Return", 0), std::pair("Escape", 1) }) {
        const Screen screen;
        EXPECT_TRUE(screen.xdotool("keydown Return")) << "as if from the window before";
        Agent agent("DISPLAY", screen.display());
        agent.startFor("Program");
        EXPECT_TRUE(screen.xdotool("search --sync --onlyvisible --name 'Confirm Changes' windowfocus --sync "
                                   "sleep 1 keyup Return")); // until it has repeated
        EXPECT_TRUE(screen.xdotool(QString("key ") + keys));
        EXPECT_EQ(agent.exitStatus(), status);
    }
}
