#pragma once

#include <optional>
#include <string>
#include <vector>

/// Puts right what whoever started this program may have left odd, and a program inherits. Standard streams that are
/// closed are given to nobody, so that no file opened later becomes one and receives messages; the ends of children
/// are not ignored, so that they can be waited for. To be called first in main.
void PutProcessInOrder();

/// Starts a program and leaves it to itself: nothing waits for it, and it is never a zombie of this process.
/// It inherits this process's environment and standard streams.
/// @param path host path of the program; argument zero is the same text. @param arguments the rest, in order.
/// @return 0 once the program runs, else the errno of what kept it from starting.
int LaunchDetached(const std::string& path, const std::vector<std::string>& arguments);

/// Runs a program to its end and collects its standard output; its standard error is discarded.
/// @return what it wrote when it ended with exit status 0; nothing when it could not run or ended otherwise.
std::optional<std::string> OutputOfProgram(
    const std::string& path, const std::vector<std::string>& arguments);
