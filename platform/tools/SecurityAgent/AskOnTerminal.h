#pragma once

#include "Answer.h"

struct AgentWords;
struct Question;

/// Asks on the terminal that controls the process, wherever its standard streams lead, and waits for the answer. What
/// was typed before the question stood there does not count. An empty line means no, and so does the third line that
/// means nothing.
Answer AskOnTerminal(const Question& question, const AgentWords& words);
