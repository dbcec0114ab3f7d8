#include "tools/driverinstall/Report.h"

#include "tools/driverinstall/Outcome.h"
#include <cstdio>
#include <syslog.h>
#include <system_error>

Outcome Failure(ExitCode code, const std::string& text, int error)
{
    return { code, text + ": " + std::generic_category().message(error) };
}

std::string WithoutControlCharacters(std::string_view utf8)
{
    std::string shown;
    for (const char character : utf8) {
        const auto byte = static_cast<unsigned char>(character);
        // U+0080 to U+009F are C2 80 to C2 9F.
        if (shown.ends_with('\xc2') && byte >= 0x80 && byte < 0xa0)
            shown.back() = '?';
        else
            shown += byte < 0x20 || byte == 0x7f ? '?' : character;
    }
    return shown;
}

void Report(int priority, const std::string& text)
{
    const std::string line = WithoutControlCharacters(text);
    syslog(priority, "%s", line.c_str());
    (void)std::fprintf(stderr, "driverinstall: %s\n", line.c_str());
}
