// Any file among the host's menus is an application with a name and a program, or none.

#include "HostApplications/DesktopEntry.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto entry = ReadDesktopEntry(std::string(reinterpret_cast<const char*>(data), size));
    if (entry && (entry->program.empty() || entry->names.empty()))
        std::abort();
    if (entry)
        (void)entry->nameForUser();
    return 0;
}
