#include "ui/framework/Archiver.h"

#include <cstdint>
#include <cstdlib>

/// What is read from any bytes is a text that comes back the same from the archive made of it.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const CFRef<CFDataRef> data(CFDataCreate(kCFAllocatorDefault, bytes, static_cast<CFIndex>(size)));
    const CFRef<CFStringRef> text = UnarchiveObjectWithData(data.get());
    if (!text)
        return 0;
    const CFRef<CFStringRef> again = UnarchiveObjectWithData(ArchivedDataWithRootObject(text.get()).get());
    if (!again || !CFEqual(text.get(), again.get()))
        std::abort();
    return 0;
}
