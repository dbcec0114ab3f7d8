#include <IOKit/Matching.h>

#include <CoreFoundation/CFNumber.h>
#include <IOKit/IOBSD.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <vector>

namespace iokit {

namespace {

bool HasClass(const Entry& entry, CFTypeRef name) { return entry.conformsTo(cf::TextOf(name)); }

bool HasName(const Entry& entry, CFTypeRef name)
{
    const std::string text = cf::TextOf(name);
    return !text.empty() && (text == entry.name || text == entry.fullName());
}

bool HasNumber(const Entry& entry, CFTypeRef number) { return NumberOf(number) == entry.id; }

bool HasProperty(const Entry& entry, CFStringRef key, CFTypeRef value)
{
    const cf::Owned<CFTypeRef> own = entry.currentProperty(key);
    return own && CFEqual(own.get(), value);
}

/// @param test bool(CFTypeRef key, CFTypeRef value). @return whether it is true of all; false for another type.
template <class Test> bool AllOf(CFTypeRef dictionary, Test test)
{
    if (CFGetTypeID(dictionary) != CFDictionaryGetTypeID())
        return false;
    const auto all = static_cast<CFDictionaryRef>(dictionary);
    std::vector<const void*> keys(static_cast<size_t>(CFDictionaryGetCount(all)));
    CFDictionaryGetKeysAndValues(all, keys.data(), nullptr);
    return std::all_of(keys.begin(), keys.end(), [&](const void* key) {
        return CFGetTypeID(key) == CFStringGetTypeID()
            && test(static_cast<CFStringRef>(key), CFDictionaryGetValue(all, key));
    });
}

bool HasProperties(const Entry& entry, CFTypeRef properties)
{
    return AllOf(
        properties, [&entry](CFStringRef key, CFTypeRef value) { return HasProperty(entry, key, value); });
}

struct Criterion {
    const char* key;
    bool (*isMet)(const Entry& entry, CFTypeRef value);
    bool takesArray; ///< of which one is enough
};

constexpr std::array kCriteria {
    Criterion { kIOProviderClassKey, HasClass, false },
    Criterion { kIONameMatchKey, HasName, true },
    Criterion { kIOPropertyMatchKey, HasProperties, true },
    Criterion { kIORegistryEntryIDKey, HasNumber, false },
};

bool IsMet(const Criterion& criterion, const Entry& entry, CFTypeRef value)
{
    if (!criterion.takesArray || CFGetTypeID(value) != CFArrayGetTypeID())
        return criterion.isMet(entry, value);
    const auto array = static_cast<CFArrayRef>(value);
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        if (criterion.isMet(entry, CFArrayGetValueAtIndex(array, i)))
            return true;
    }
    return false;
}

}

bool Matches(const Entry& entry, CFDictionaryRef matching)
{
    if (!entry.service || !entry.service->registered || !entry.service->active)
        return false;
    return AllOf(matching, [&entry](CFStringRef key, CFTypeRef value) {
        const auto* const criterion = std::find_if(kCriteria.begin(), kCriteria.end(),
            [key](const Criterion& one) { return CFEqual(key, __CFStringMakeConstantString(one.key)); });
        return criterion != kCriteria.end() ? IsMet(*criterion, entry, value)
                                            : HasProperty(entry, key, value);
    });
}

}

namespace {

/// @param value of the key; null where it could not be made. @return null as well then.
CFMutableDictionaryRef MatchingDictionary(const char* key, const cf::Owned<CFTypeRef>& value)
{
    if (!value)
        return nullptr;
    const CFMutableDictionaryRef matching = CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(matching, __CFStringMakeConstantString(key), value.get());
    return matching;
}

/// @param text null for none, as one that is not UTF-8.
cf::Owned<CFTypeRef> Text(const char* text)
{
    return cf::Owned<CFTypeRef>(text != nullptr ? cf::MakeString(text) : nullptr);
}

}

CFMutableDictionaryRef IOServiceMatching(const char* name)
{
    return MatchingDictionary(kIOProviderClassKey, Text(name));
}

CFMutableDictionaryRef IOServiceNameMatching(const char* name)
{
    return MatchingDictionary(kIONameMatchKey, Text(name));
}

CFMutableDictionaryRef IOBSDNameMatching(
    mach_port_t /*masterPort*/, uint32_t /*options*/, const char* bsdName)
{
    return MatchingDictionary(kIOBSDNameKey, Text(bsdName));
}

CFMutableDictionaryRef IORegistryEntryIDMatching(uint64_t entryID)
{
    return MatchingDictionary(
        kIORegistryEntryIDKey, cf::Owned<CFTypeRef>(CFNumberCreate(nullptr, kCFNumberSInt64Type, &entryID)));
}
