#include <IOKit/Properties.h>

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

namespace iokit {

Properties::Properties()
    : fValues(CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks))
{
}

Properties& Properties::text(const char* key, std::string_view utf8)
{
    return utf8.empty() ? *this : plainText(key, utf8);
}

Properties& Properties::plainText(const char* key, std::string_view utf8)
{
    return value(key, cf::Owned<CFTypeRef>(cf::MakeString(utf8)));
}

Properties& Properties::flag(const char* key, bool value)
{
    CFDictionarySetValue(
        fValues.get(), __CFStringMakeConstantString(key), value ? kCFBooleanTrue : kCFBooleanFalse);
    return *this;
}

Properties& Properties::number(const char* key, std::optional<uint64_t> number)
{
    if (!number)
        return *this;
    return value(key, cf::Owned<CFTypeRef>(CFNumberCreate(nullptr, kCFNumberSInt64Type, &*number)));
}

Properties& Properties::data(const char* key, std::string_view bytes)
{
    if (bytes.empty())
        return *this;
    const auto* const first = reinterpret_cast<const UInt8*>(bytes.data());
    return value(key, cf::Owned<CFTypeRef>(CFDataCreate(nullptr, first, static_cast<CFIndex>(bytes.size()))));
}

Properties& Properties::textData(const char* key, const std::string& text)
{
    return text.empty() ? *this : data(key, { text.c_str(), text.size() + 1 });
}

Properties& Properties::dictionary(const char* key, const Properties& values)
{
    if (CFDictionaryGetCount(values.fValues.get()) > 0)
        CFDictionarySetValue(fValues.get(), __CFStringMakeConstantString(key), values.fValues.get());
    return *this;
}

Properties& Properties::array(const char* key, CFArrayRef values)
{
    CFDictionarySetValue(fValues.get(), __CFStringMakeConstantString(key), values);
    return *this;
}

Properties& Properties::value(const char* key, const cf::Owned<CFTypeRef>& value)
{
    if (value)
        CFDictionarySetValue(fValues.get(), __CFStringMakeConstantString(key), value.get());
    return *this;
}

cf::Owned<CFDictionaryRef> Properties::take() { return cf::Owned<CFDictionaryRef>(fValues.release()); }

std::optional<uint64_t> NumberOf(CFTypeRef value)
{
    if (value == nullptr || CFGetTypeID(value) != CFNumberGetTypeID())
        return {};
    uint64_t number = 0;
    CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &number);
    return number;
}

bool IsTrue(CFTypeRef value)
{
    return value != nullptr && CFGetTypeID(value) == CFBooleanGetTypeID()
        && CFBooleanGetValue(static_cast<CFBooleanRef>(value));
}

}
