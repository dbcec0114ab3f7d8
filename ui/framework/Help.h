#pragma once

#include <string>

/// The folder of the application's help book, which its information file names; "" when it has none.
std::string HelpBookFolder();

/// Opens the application's help book in the system's help viewer.
/// @param anchor where to open it; "" for the start page. @return false, with a message on standard error, when there is no
/// such book or no viewer.
bool ShowHelp(const std::string& anchor);

/// The same for an anchor of the book with this name; a book that is not the application's does not open.
bool OpenHelpAnchor(const std::string& anchor, const std::string& book);
