#pragma once

#include <string>
#include <vector>

/// What starting a program takes beside fork() and exec().

/// @return pointers to the texts and a null at the end, as exec() takes its arguments and environment. They
/// are good as long as `texts` is left as it is.
std::vector<char*> PointersTo(std::vector<std::string>& texts);

/// Gives every signal its default and holds none back: how the starter treats them is no affair of the
/// program. Only for between fork() and exec(), where it is safe.
void ResetSignals();
