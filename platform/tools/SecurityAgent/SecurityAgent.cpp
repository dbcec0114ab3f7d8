// SecurityAgent: asks the user whether a program may make changes to the start-up volume. See kUsage.

#include "AgentWords.h"
#include "AskInWindow.h"
#include "AskOnTerminal.h"
#include "Question.h"

#include <Host/HostDisplay.h>
#include <Host/HostPath.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <unistd.h>

namespace {

constexpr const char* kUsage = R"(usage: SecurityAgent PROGRAM-NAME

Asks in a window, or on the terminal where there is none. Exit status:
0   the user allows it
1   the user refuses
2   there was nobody to ask
64  wrong use
The environment variable SECURITY_AGENT_ANSWER, "allow" or "deny", answers in the user's place.
)";
constexpr int kWrongUse = 64;
constexpr size_t kLongestName = 80;

/// To end the question is to refuse.
void Refuse(int) { _exit(static_cast<int>(Answer::refused)); }

Answer Ask(const Question& question)
{
    const AgentWords& words = UsersAgentWords();
    const Answer answer = HostHasDisplay() ? AskInWindow(question, words) : Answer::nobodyAsked;
    return answer == Answer::nobodyAsked ? AskOnTerminal(question, words) : answer;
}

int WrongUse(const char* explanation)
{
    std::cerr << explanation;
    return kWrongUse;
}

int AnswerFor(const std::string& given)
{
    if (given == "allow")
        return static_cast<int>(Answer::allowed);
    if (given == "deny")
        return static_cast<int>(Answer::refused);
    return WrongUse("SecurityAgent: SECURITY_AGENT_ANSWER has to be \"allow\" or \"deny\"\n");
}

}

int main(int argc, char** argv)
{
    if (argc != 2)
        return WrongUse(kUsage);
    const Question question { Showable(argv[1], kLongestName).trimmed(),
        Showable(HostStartupVolume(), PATH_MAX) };
    if (question.program.isEmpty())
        return WrongUse("SecurityAgent: the name of the program has to be more than spaces\n");
    if (const char* const given = std::getenv("SECURITY_AGENT_ANSWER"))
        return AnswerFor(given);

    for (const int signal : { SIGHUP, SIGINT, SIGTERM })
        (void)std::signal(signal, Refuse);
    const Answer answer = Ask(question);
    if (answer == Answer::nobodyAsked)
        std::cerr << "SecurityAgent: there is neither a display nor a terminal to ask on\n";
    return static_cast<int>(answer);
}
