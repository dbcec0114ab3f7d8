#include "util/CFUtilities.h"

#include "util/CFRef.h"

bool CastCFType(CFTypeRef object, CFTypeID expected, CFTypeRef* result)
{
    const bool isExpected = object != nullptr && CFGetTypeID(object) == expected;
    if (result != nullptr)
        *result = isExpected ? object : nullptr;
    return isExpected && result != nullptr;
}

void SafeCFRelease(CFTypeRef object)
{
    if (object != nullptr)
        CFRelease(object);
}

CFPropertyListRef CreatePropertyListFromBytes(const void* bytes, uint32_t length)
{
    if (bytes == nullptr)
        return nullptr;
    const CFRef<CFDataRef> data(CFDataCreateWithBytesNoCopy(
        kCFAllocatorDefault, static_cast<const UInt8*>(bytes), length, kCFAllocatorNull));
    return data ? CFPropertyListCreateWithData(
               kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr)
                : nullptr;
}
