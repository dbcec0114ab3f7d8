// Whatever udev's record of a device holds, each of its properties can be shown in a line of its own.

#include "Host/HostTree.h"

#include <cstdlib>

namespace {

/// Whether a text is one line without blanks around it, fit to be shown.
bool IsLine(const std::string& text)
{
    return text == CleanLine(text) && text.find('\n') == std::string::npos;
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string_view record(reinterpret_cast<const char*>(bytes), size);
    for (const auto& [name, value] : UdevProperties(record)) {
        if (name.find('\n') != std::string::npos || !IsLine(value))
            std::abort();
        static_cast<void>(NumberIn(value));
    }
    return 0;
}
