#include <CoreFoundation/CFPropertyList.h>

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include "CoreFoundation/PropertyListCheck.h"
#include "CoreFoundation/PropertyListMaker.h"
#include "CoreFoundation/PropertyListParts.h"
#include "CoreFoundation/Runtime.h"

#include <vector>

namespace {

CFErrorRef CreateError(CFIndex code, const char* description)
{
    const cf::Owned<CFStringRef> text(cf::MakeString(description));
    const void* key = kCFErrorLocalizedDescriptionKey;
    const void* value = text.get();
    const cf::Owned<CFDictionaryRef> userInfo(CFDictionaryCreate(kCFAllocatorDefault, &key, &value, 1,
        &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    return CFErrorCreate(kCFAllocatorDefault, kCFErrorDomainCocoa, code, userInfo.get());
}

/// Copies a property list in one pass. The first fault stops it.
class Copier {
public:
    explicit Copier(CFOptionFlags options)
        : fMaker(options)
    {
    }

    CFPropertyListRef copy(CFPropertyListRef plist) { return add(plist, 0) ? fMaker.take() : nullptr; }

private:
    bool add(CFTypeRef value, unsigned depth)
    {
        if (!value)
            return false;
        const CFTypeID type = CFGetTypeID(value);
        if (type == CFDictionaryGetTypeID())
            return addDictionary(static_cast<CFDictionaryRef>(value), depth + 1);
        if (type == CFArrayGetTypeID())
            return addArray(static_cast<CFArrayRef>(value), depth + 1);
        if (type == CFStringGetTypeID())
            return fMaker.addString(CFStringCreateCopy(kCFAllocatorDefault, static_cast<CFStringRef>(value)));
        if (type == CFDataGetTypeID())
            return fMaker.addData(CFDataCreateCopy(kCFAllocatorDefault, static_cast<CFDataRef>(value)));
        const bool isLeaf
            = type == CFNumberGetTypeID() || type == CFBooleanGetTypeID() || type == CFDateGetTypeID();
        return isLeaf && fMaker.add(CFRetain(value));
    }

    bool addArray(CFArrayRef array, unsigned depth)
    {
        if (depth > kPropertyListDepthLimit)
            return false;
        const PropertyListMaker::Start start = fMaker.start();
        const CFIndex count = CFArrayGetCount(array);
        for (CFIndex i = 0; i < count; ++i) {
            if (!add(CFArrayGetValueAtIndex(array, i), depth))
                return false;
        }
        return fMaker.finishArray(start);
    }

    bool addDictionary(CFDictionaryRef dictionary, unsigned depth)
    {
        if (depth > kPropertyListDepthLimit)
            return false;
        const PropertyListMaker::Start start = fMaker.start();
        const auto count = static_cast<size_t>(CFDictionaryGetCount(dictionary));
        std::vector<const void*> keys(count);
        std::vector<const void*> values(count);
        CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
        for (size_t i = 0; i < count; ++i) {
            if (!keys[i] || CFGetTypeID(keys[i]) != CFStringGetTypeID())
                return false;
            fMaker.addKey(CFStringCreateCopy(kCFAllocatorDefault, static_cast<CFStringRef>(keys[i])));
            if (!add(values[i], depth))
                return false;
        }
        return fMaker.finishDictionary(start);
    }

    PropertyListMaker fMaker;
};

} // namespace

PointLocale::PointLocale()
{
    static const locale_t pointLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    fPrevious = uselocale(pointLocale);
}

CFPropertyListRef CFPropertyListCreateWithData(
    CFAllocatorRef, CFDataRef data, CFOptionFlags options, CFPropertyListFormat* format, CFErrorRef* error)
{
    CFPropertyListFormat found = kCFPropertyListXMLFormat_v1_0;
    const char* fault = "Memory is too short for the property list.";
    const CFPropertyListRef plist
        = cf::NullWithoutMemory([&] { return CreatePropertyList(data, options, found, fault); });
    if (plist && format)
        *format = found;
    if (!plist && error)
        *error = CreateError(kCFPropertyListReadCorruptError, fault);
    return plist;
}

CFDataRef CFPropertyListCreateData(CFAllocatorRef, CFPropertyListRef propertyList,
    CFPropertyListFormat format, CFOptionFlags, CFErrorRef* error)
{
    const char* fault = "Memory is too short for the property list.";
    const CFDataRef data
        = cf::NullWithoutMemory([&] { return CreatePropertyListData(propertyList, format, fault); });
    if (!data && error)
        *error = CreateError(kCFPropertyListWriteStreamError, fault);
    return data;
}

Boolean CFPropertyListIsValid(CFPropertyListRef plist, CFPropertyListFormat format)
{
    const auto check = [&] { return CanWritePropertyList(plist, format) ? plist : nullptr; };
    return cf::NullWithoutMemory(check) != nullptr;
}

CFPropertyListRef CFPropertyListCreateDeepCopy(
    CFAllocatorRef, CFPropertyListRef propertyList, CFOptionFlags mutabilityOption)
{
    return cf::NullWithoutMemory([&] { return Copier(mutabilityOption).copy(propertyList); });
}
