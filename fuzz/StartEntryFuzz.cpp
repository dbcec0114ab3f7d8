// Whatever an entry of the firmware's menu holds, it leads to a partition with a UUID or to none.

#include "boot/StartEntries.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const auto entry = StartEntryIn({ reinterpret_cast<const char*>(bytes), size });
    const bool isFit = !entry || entry->partition.empty()
        || (entry->partition.size() == 36
            && entry->partition.find_first_not_of("0123456789ABCDEF-") == std::string::npos);
    if (!isFit)
        std::abort();
    return 0;
}
