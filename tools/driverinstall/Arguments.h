#pragma once

#include "tools/driverinstall/Outcome.h"
#include <string>
#include <string_view>
#include <vector>

/// What the caller asks for.
struct Request {
    enum class Verb { install, uninstall };

    Verb verb = Verb::uninstall;
    std::string name; ///< bare bundle name, as IsExtensionName() wants it
    std::string source; ///< install only: absolute Mac path of the folder that the bundle lies in
};

/// The two forms that are accepted, in one line.
extern const char* const usageText;

/// Reads the arguments after argument zero. Only these two forms, in exactly this order, are accepted:
///   install drivername NAME sourcedirectory DIR
///   uninstall drivername NAME
/// @param request filled in where the outcome is ok.
/// @return ok, usage, badName, or badSource when DIR is not absolute.
Outcome ParseArguments(const std::vector<std::string>& arguments, Request& request);

/// Whether `name` can stand in the folder of extensions under the tool's care: UTF-8 without control
/// characters, no "/", no "." at the start, something before ".kext" at the end, and short enough for the
/// tool's hidden names.
bool IsExtensionName(std::string_view name);
