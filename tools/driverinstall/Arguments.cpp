#include "tools/driverinstall/Arguments.h"

#include "tools/driverinstall/BundleSwap.h"
#include "tools/driverinstall/Report.h"
#include "util/CFText.h"

const char* const usageText = "usage: driverinstall install drivername NAME.kext sourcedirectory DIR"
                              " | driverinstall uninstall drivername NAME.kext";

bool IsExtensionName(std::string_view name)
{
    constexpr std::string_view extension = ".kext";
    return name.size() > extension.size() && name.size() <= longestName && name.ends_with(extension)
        && name.front() != '.' && name.find('/') == std::string_view::npos
        && WithoutControlCharacters(name) == name && CFText(name);
}

Outcome ParseArguments(const std::vector<std::string>& arguments, Request& request)
{
    const bool install
        = arguments.size() == 5 && arguments[0] == "install" && arguments[3] == "sourcedirectory";
    const bool uninstall = arguments.size() == 3 && arguments[0] == "uninstall";
    if ((!install && !uninstall) || arguments[1] != "drivername")
        return { ExitCode::usage, usageText };
    if (!IsExtensionName(arguments[2]))
        return { ExitCode::badName, "not the name of a kernel extension: " + arguments[2] };
    if (install && !arguments[4].starts_with('/'))
        return { ExitCode::badSource, "the source directory is not an absolute path: " + arguments[4] };
    request = { install ? Request::Verb::install : Request::Verb::uninstall, arguments[2],
        install ? arguments[4] : std::string() };
    return {};
}
