#pragma once

#include "Answer.h"

struct AgentWords;
struct Question;

/// Asks in a window on the display that the environment names, and waits for the answer. The window has a process of
/// its own: the toolkit ends the one it is in where the display cannot be used. That, and a display that nobody can
/// see, count as nobody asked; a window in use that loses its display counts as refused. The window goes when the
/// caller is killed.
/// To be called before there are other threads, and without a QApplication.
Answer AskInWindow(const Question& question, const AgentWords& words);
