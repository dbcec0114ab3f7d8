#include "util/PropertyLists.h"

#include "util/CFRef.h"
#include "util/FileContents.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

/// @return the object, which the caller releases, or null when the bytes hold none of the type.
template <class Ref> Ref Parse(CFDataRef data, CFTypeID type)
{
    CFRef<CFPropertyListRef> list(data != nullptr ? CFPropertyListCreateWithData(kCFAllocatorDefault, data,
                                      kCFPropertyListMutableContainersAndLeaves, nullptr, nullptr)
                                                  : nullptr);
    if (!list || CFGetTypeID(list.get()) != type)
        return nullptr;
    return static_cast<Ref>(const_cast<void*>(list.release()));
}

template <class Ref> Ref ReadFile(const char* path, CFTypeID type)
{
    const CFRef<CFDataRef> data(CreateCFDataFromContentsOfFile(path, 0, true));
    return Parse<Ref>(data.get(), type);
}

template <class Ref> Ref ReadBuffer(const void* buffer, uint32_t length, CFTypeID type)
{
    if (buffer == nullptr)
        return nullptr;
    const CFRef<CFDataRef> data(CFDataCreateWithBytesNoCopy(
        kCFAllocatorDefault, static_cast<const UInt8*>(buffer), length, kCFAllocatorNull));
    return Parse<Ref>(data.get(), type);
}

bool WriteBuffer(void** buffer, uint32_t* length, CFPropertyListRef object)
{
    if (buffer == nullptr || length == nullptr)
        return false;
    *buffer = nullptr;
    *length = 0;
    const CFRef<CFDataRef> data(object != nullptr
            ? CFPropertyListCreateData(kCFAllocatorDefault, object, kCFPropertyListXMLFormat_v1_0, 0, nullptr)
            : nullptr);
    const CFIndex size = data ? CFDataGetLength(data.get()) : 0;
    if (size == 0 || size > std::numeric_limits<uint32_t>::max())
        return false;
    *buffer = malloc(static_cast<size_t>(size));
    if (*buffer == nullptr)
        return false;
    std::memcpy(*buffer, CFDataGetBytePtr(data.get()), static_cast<size_t>(size));
    *length = static_cast<uint32_t>(size);
    return true;
}

bool WriteFile(const char* path, CFPropertyListRef object)
{
    void* buffer = nullptr;
    uint32_t length = 0;
    if (!WriteBuffer(&buffer, &length, object))
        return false;
    const OSStatus status = CreateFileFromContentsOfBuffer(buffer, length, path);
    free(buffer);
    return status == noErr;
}

}

CFMutableDictionaryRef CreateCFDictionaryWithContentsOfFile(const char* path)
{
    return ReadFile<CFMutableDictionaryRef>(path, CFDictionaryGetTypeID());
}

CFMutableArrayRef CreateCFArrayWithContentsOfFile(const char* path)
{
    return ReadFile<CFMutableArrayRef>(path, CFArrayGetTypeID());
}

CFMutableDictionaryRef CreateCFDictionaryWithContentsOfBuffer(const void* buffer, uint32_t length)
{
    return ReadBuffer<CFMutableDictionaryRef>(buffer, length, CFDictionaryGetTypeID());
}

CFMutableArrayRef CreateCFArrayWithContentsOfBuffer(const void* buffer, uint32_t length)
{
    return ReadBuffer<CFMutableArrayRef>(buffer, length, CFArrayGetTypeID());
}

bool CreateBufferFromCFDictionary(void** buffer, uint32_t* length, CFDictionaryRef dictionary)
{
    return WriteBuffer(buffer, length, dictionary);
}

bool CreateBufferFromCFArray(void** buffer, uint32_t* length, CFArrayRef array)
{
    return WriteBuffer(buffer, length, array);
}

bool SetContentsOfFileToCFDictionary(const char* path, CFDictionaryRef dictionary)
{
    return WriteFile(path, dictionary);
}

bool SetContentsOfFileToCFArray(const char* path, CFArrayRef array) { return WriteFile(path, array); }
