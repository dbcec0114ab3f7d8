#include "CoreFoundation/Runtime.h"
#include "CoreFoundation/StringsTable.h"

#include <CoreFoundation/CFString.h>

#include <cstdint>
#include <cstdlib>

namespace {

void CheckPair(const void* key, const void* value, void*)
{
    if (CFGetTypeID(key) != CFStringGetTypeID() || CFGetTypeID(value) != CFStringGetTypeID())
        std::abort();
}

} // namespace

/// Any bytes give a dictionary of strings by strings.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const cf::Owned<CFDictionaryRef> table(CreateStringsTable({ bytes, size }));
    if (!table)
        std::abort();
    CFDictionaryApplyFunction(table.get(), CheckPair, nullptr);
    return 0;
}
