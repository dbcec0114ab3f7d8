#include "CoreFoundation/PropertyListMaker.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

#include "CoreFoundation/Runtime.h"

namespace {

void ReleaseFrom(std::vector<const void*>& refs, size_t first)
{
    for (size_t i = first; i < refs.size(); ++i)
        CFRelease(refs[i]);
    refs.resize(first);
}

CFArrayRef CreateMutableArray(const void** values, CFIndex count)
{
    CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    for (CFIndex i = 0; array && i < count; ++i)
        CFArrayAppendValue(array, values[i]);
    return array;
}

CFDictionaryRef CreateMutableDictionary(const void** keys, const void** values, CFIndex count)
{
    CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    for (CFIndex i = 0; dictionary && i < count; ++i)
        CFDictionarySetValue(dictionary, keys[i], values[i]);
    return dictionary;
}

} // namespace

PropertyListMaker::~PropertyListMaker()
{
    ReleaseFrom(fKeys, 0);
    ReleaseFrom(fValues, 0);
}

bool PropertyListMaker::add(CFTypeRef value)
{
    if (value)
        fValues.push_back(value);
    return value != nullptr;
}

bool PropertyListMaker::addString(CFStringRef string)
{
    if (!string || !mutableLeaves())
        return add(string);
    const cf::Owned<CFStringRef> original(string);
    return add(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, string));
}

bool PropertyListMaker::addData(CFDataRef data)
{
    if (!data || !mutableLeaves())
        return add(data);
    const cf::Owned<CFDataRef> original(data);
    return add(CFDataCreateMutableCopy(kCFAllocatorDefault, 0, data));
}

bool PropertyListMaker::finishArray(Start start)
{
    const void** values = fValues.data() + start.value;
    const auto count = static_cast<CFIndex>(fValues.size() - start.value);
    return replace(start,
        fOptions == kCFPropertyListImmutable
            ? CFArrayCreate(kCFAllocatorDefault, values, count, &kCFTypeArrayCallBacks)
            : CreateMutableArray(values, count));
}

bool PropertyListMaker::finishDictionary(Start start)
{
    const void** keys = fKeys.data() + start.key;
    const void** values = fValues.data() + start.value;
    const auto count = static_cast<CFIndex>(fKeys.size() - start.key);
    return replace(start,
        fOptions == kCFPropertyListImmutable ? CFDictionaryCreate(kCFAllocatorDefault, keys, values, count,
            &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks)
                                             : CreateMutableDictionary(keys, values, count));
}

CFTypeRef PropertyListMaker::take()
{
    const CFTypeRef result = fValues.back();
    fValues.pop_back();
    return result;
}

bool PropertyListMaker::replace(Start start, CFTypeRef container)
{
    ReleaseFrom(fKeys, start.key);
    ReleaseFrom(fValues, start.value);
    return add(container);
}
