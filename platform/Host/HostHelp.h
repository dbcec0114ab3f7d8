#pragma once

#include <string>
#include <vector>

/// The command that shows a help book to the user: the stand-in program HelpViewer here, the system's help
/// viewer on a Mac, which is given no anchor. Whether the program is there is not looked at.
/// @param bookFolder host path of the book's bundle. @param anchor of the place to show; "" for the start
/// page.
/// @return the program's host path, then its arguments.
std::vector<std::string> HostHelpCommand(const std::string& bookFolder, const std::string& anchor);
