#include "tools/driverinstall/Report.h"

#include "tools/driverinstall/Outcome.h"
#include <algorithm>
#include <cstdio>
#include <syslog.h>
#include <system_error>

Outcome Failure(ExitCode code, const std::string& text, int error)
{
    return { code, text + ": " + std::generic_category().message(error) };
}

void Report(int priority, const std::string& text)
{
    std::string line = text;
    const auto isControl = [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; };
    std::replace_if(line.begin(), line.end(), isControl, '?');
    syslog(priority, "%s", line.c_str());
    (void)std::fprintf(stderr, "driverinstall: %s\n", line.c_str());
}
