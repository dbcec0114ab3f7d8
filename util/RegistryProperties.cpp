#include "util/RegistryProperties.h"

#include <algorithm>
#include <cstring>

CFRef<CFTypeRef> OwnProperty(io_registry_entry_t entry, CFStringRef key)
{
    return CFRef<CFTypeRef>(entry != 0 && key != nullptr
            ? IORegistryEntryCreateCFProperty(entry, key, kCFAllocatorDefault, 0)
            : nullptr);
}

CFRef<CFTypeRef> SearchedProperty(io_registry_entry_t entry, CFStringRef key)
{
    return CFRef<CFTypeRef>(entry != 0
            ? IORegistryEntrySearchCFProperty(entry, kIOServicePlane, key, kCFAllocatorDefault,
                kIORegistryIterateRecursively | kIORegistryIterateParents)
            : nullptr);
}

CFRef<CFTypeRef> SearchedMember(io_registry_entry_t entry, CFStringRef dictionary, CFStringRef key)
{
    const CFRef<CFTypeRef> found = SearchedProperty(entry, dictionary);
    const auto members = CFDynamicCast<CFDictionaryRef>(found.get(), CFDictionaryGetTypeID());
    return CFRef<CFTypeRef>::Retained(members != nullptr ? CFDictionaryGetValue(members, key) : nullptr);
}

std::optional<int64_t> NumberFrom(CFTypeRef value)
{
    const auto number = CFDynamicCast<CFNumberRef>(value, CFNumberGetTypeID());
    if (number == nullptr)
        return {};
    int64_t result = 0;
    CFNumberGetValue(number, kCFNumberSInt64Type, &result);
    return result;
}

bool IsString(CFTypeRef value, CFStringRef text)
{
    const auto string = CFDynamicCast<CFStringRef>(value, CFStringGetTypeID());
    return string != nullptr && CFStringCompare(string, text, 0) == kCFCompareEqualTo;
}

bool IsTrue(CFTypeRef value)
{
    const auto boolean = CFDynamicCast<CFBooleanRef>(value, CFBooleanGetTypeID());
    return boolean != nullptr && CFBooleanGetValue(boolean);
}

bool CopyASCII(CFTypeRef value, char* buffer, size_t size)
{
    if (buffer == nullptr || size == 0)
        return false;
    const auto string = CFDynamicCast<CFStringRef>(value, CFStringGetTypeID());
    const bool isCopied = string != nullptr
        && CFStringGetCString(string, buffer, static_cast<CFIndex>(size), kCFStringEncodingASCII);
    if (!isCopied)
        *buffer = 0;
    return isCopied;
}

void Clear(char* buffer, size_t size)
{
    if (buffer != nullptr)
        std::memset(buffer, 0, size);
}

bool CopyText(char* destination, const char* source, size_t size)
{
    if (destination == nullptr || size == 0)
        return false;
    const size_t length = std::strlen(source);
    const size_t count = std::min(length, size - 1);
    std::memmove(destination, source, count);
    destination[count] = 0;
    return count == length;
}
