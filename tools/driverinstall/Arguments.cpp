#include "tools/driverinstall/Arguments.h"

#include "tools/driverinstall/BundleSwap.h"
#include "util/CFText.h"
#include <algorithm>

const char* const usageText = "usage: driverinstall install drivername NAME.kext sourcedirectory DIR"
                              " | driverinstall uninstall drivername NAME.kext";

namespace {

bool HasControlCharacter(std::string_view utf8)
{
    const auto isControl = [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; };
    if (std::any_of(utf8.begin(), utf8.end(), isControl))
        return true;
    // U+0080 to U+009F are C2 80 to C2 9F.
    const auto isSecondSet
        = [](unsigned char lead, unsigned char next) { return lead == 0xc2 && next < 0xa0; };
    return std::adjacent_find(utf8.begin(), utf8.end(), isSecondSet) != utf8.end();
}

}

bool IsExtensionName(std::string_view name)
{
    constexpr std::string_view extension = ".kext";
    return name.size() > extension.size() && name.size() <= longestName && name.ends_with(extension)
        && name.front() != '.' && name.find('/') == std::string_view::npos && !HasControlCharacter(name)
        && CFText(name);
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
