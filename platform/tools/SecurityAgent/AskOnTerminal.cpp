#include "AskOnTerminal.h"

#include "AgentWords.h"
#include "Question.h"

#include <Host/Descriptor.h>
#include <Host/WriteAll.h>

#include <QStringList>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <string>
#include <termios.h>

namespace {

constexpr int kAttempts = 3;

bool Write(const Descriptor& terminal, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return WriteAll(terminal.get(), bytes.constData(), static_cast<size_t>(bytes.size())) == 0;
}

/// @param line set to what was typed, without the line's end. @return 0 at the end of input, a negative number where
/// this process may not read from its terminal, else a positive one.
ssize_t ReadLine(const Descriptor& terminal, std::string& line)
{
    char buffer[256];
    for (line.clear(); line.empty() || line.back() != '\n';) {
        const ssize_t count = read(terminal.get(), buffer, sizeof(buffer));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count;
        line.append(buffer, static_cast<size_t>(count));
    }
    line.pop_back();
    return 1;
}

/// @return nothing when the line means neither.
std::optional<Answer> Meaning(const std::string& line, const AgentWords& words)
{
    // One form for what keyboards of different languages make of a letter.
    const QString typed
        = QString::fromStdString(line).normalized(QString::NormalizationForm_KC).toCaseFolded().trimmed();
    if (typed.isEmpty() || QString(words.no).split(' ').contains(typed))
        return Answer::refused;
    if (QString(words.yes).split(' ').contains(typed))
        return Answer::allowed;
    return std::nullopt;
}

QString Introduction(const Question& question, const AgentWords& words)
{
    return QString(words.message).arg(question.program) + '\n' + words.powers + '\n' + question.folder + '\n'
        + words.reason + '\n';
}

}

Answer AskOnTerminal(const Question& question, const AgentWords& words)
{
    const Descriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC));
    if (!terminal || !Write(terminal, Introduction(question, words)))
        return Answer::nobodyAsked;
    std::string line;
    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        tcflush(terminal.get(), TCIFLUSH);
        Write(terminal, QString(words.terminalQuestion) + ' ');
        const ssize_t got = ReadLine(terminal, line);
        if (got <= 0) {
            Write(terminal, "\n");
            return got == 0 ? Answer::refused : Answer::nobodyAsked;
        }
        if (const std::optional<Answer> answer = Meaning(line, words))
            return *answer;
        if (attempt < kAttempts)
            Write(terminal, QString(words.unclear) + '\n');
    }
    return Answer::refused;
}
