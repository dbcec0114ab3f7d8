#include "ProgramStart.h"

#include <csignal>

std::vector<char*> PointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

void ResetSignals()
{
    for (int number = 1; number < NSIG; ++number)
        (void)std::signal(number, SIG_DFL); // the few that refuse are at their default anyway
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}
