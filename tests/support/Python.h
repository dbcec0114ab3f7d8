#pragma once

#include <string>

/// What Python makes of a property list. @param script that prints something of the list "p". @return all of its output,
/// errors as well.
std::string PythonOfPropertyList(const std::string& list, const std::string& script);
