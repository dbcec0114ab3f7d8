#pragma once

#include "Tool.h"

#include <IOKit/Nvram.h>

#include <iosfwd>
#include <string>

/// nvram: tells and changes the variables of the start-up volume, the firmware's own on the system's.
/// @return 0; 1 for a wrong command line and for the first thing that cannot be done; what comes before has been done then.
int Nvram(const Arguments& arguments);
/// The same with these variables.
int ChangeNvram(const Arguments& arguments, iokit::Nvram& nvram, std::ostream& out);

/// Why something could not be done with variables, in words. @param error of iokit::Nvram.
std::string NvramErrorText(int error);

/// A value as a line shows it: what is no printable ASCII, and the percent sign, as "%0a".
std::string NvramText(const std::string& value);
/// Undoes that. A text with a percent sign that two hexadecimal digits do not follow means itself, as a whole.
std::string NvramValue(const std::string& text);
