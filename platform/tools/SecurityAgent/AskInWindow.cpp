#include "AskInWindow.h"

#include "ConfirmationWindow.h"

#include <Host/HostDisplay.h>
#include <HostWindows/AppearanceFollower.h>

#include <QApplication>
#include <QLoggingCategory>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int Status(Answer answer) { return static_cast<int>(answer); }

/// In place of the abort that would follow, with a core dump: a display that cannot be used is nothing out of the
/// ordinary.
void LeaveOnFatalMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type == QtFatalMsg)
        std::_Exit(Status(Answer::nobodyAsked));
    std::cerr << qFormatLogMessage(type, context, message).toStdString() << '\n';
}

/// On some of the toolkit's platforms windows are there for programs alone.
bool IsSeen()
{
    const QString platform = QGuiApplication::platformName();
    return platform != "offscreen" && platform != "minimal";
}

Answer RunWindow(const Question& question, const AgentWords& words)
{
    qInstallMessageHandler(LeaveOnFatalMessage);
    // Why there is no window is of no use to somebody who is about to be asked on a terminal.
    // QT_LOGGING_RULES brings it back.
    QLoggingCategory::setFilterRules("qt.qpa.*=false");
    // The arguments of this program are not for the toolkit, which would take some names for options.
    char name[] = "SecurityAgent";
    char* arguments[] = { name, nullptr };
    int count = 1;
    HostPrepareForWindows();
    const QApplication application(count, arguments);
    if (!IsSeen())
        return Answer::nobodyAsked;
    const AppearanceFollower appearance;
    ConfirmationWindow window(question, words);
    window.bringToFront();
    QApplication::exec();
    return window.result() == QDialog::Accepted ? Answer::allowed : Answer::refused;
}

[[noreturn]] void RunWindowProcess(pid_t parent, const Question& question, const AgentWords& words)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        std::_Exit(Status(Answer::refused)); // killed before the line above could notice
    std::exit(Status(RunWindow(question, words)));
}

}

Answer AskInWindow(const Question& question, const AgentWords& words)
{
    const pid_t self = getpid();
    const pid_t child = fork();
    if (child < 0)
        return Answer::nobodyAsked;
    if (child == 0)
        RunWindowProcess(self, question, words);
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return Answer::nobodyAsked;
    }
    if (!WIFEXITED(status))
        return Answer::nobodyAsked;
    for (const Answer answer : { Answer::allowed, Answer::refused }) {
        if (WEXITSTATUS(status) == Status(answer))
            return answer;
    }
    return Answer::nobodyAsked;
}
