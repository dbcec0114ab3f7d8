#include "PropertyList.h"

namespace launchd {

namespace {
/// `value` may be null, for instance for lack of memory; then the key stays unset.
void Set(CFMutableDictionaryRef dictionary, const char* key, CFTypeRef value)
{
    const CFOwned<CFStringRef> name = MakeText(key);
    if (name && value)
        CFDictionarySetValue(dictionary, name.get(), value);
}

CFOwned<CFDataRef> MakeData(std::string_view bytes)
{
    return CFOwned<CFDataRef>(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
        static_cast<CFIndex>(bytes.size())));
}

std::string Description(CFErrorRef error)
{
    const CFOwned<CFStringRef> text(error ? CFErrorCopyDescription(error) : nullptr);
    return (text ? TextOf(text.get()) : std::nullopt).value_or("unreadable");
}
}

std::optional<std::string> TextOf(CFStringRef text)
{
    const CFRange all = CFRangeMake(0, CFStringGetLength(text));
    CFIndex size = 0;
    if (CFStringGetBytes(text, all, kCFStringEncodingUTF8, 0, false, nullptr, 0, &size) != all.length)
        return std::nullopt;
    std::string utf8(static_cast<size_t>(size), '\0');
    CFStringGetBytes(
        text, all, kCFStringEncodingUTF8, 0, false, reinterpret_cast<UInt8*>(utf8.data()), size, &size);
    if (utf8.find('\0') != std::string::npos)
        return std::nullopt;
    return utf8;
}

CFOwned<CFStringRef> MakeText(std::string_view utf8)
{
    return CFOwned<CFStringRef>(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
            static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

CFOwned<CFMutableDictionaryRef> ReadDictionary(std::string_view bytes, std::string& problem)
{
    const CFOwned<CFDataRef> data = MakeData(bytes);
    CFErrorRef error = nullptr;
    CFOwned<CFPropertyListRef> root(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListMutableContainers, nullptr, &error));
    const CFOwned<CFErrorRef> ownedError(error);
    if (!root)
        problem = "not a property list (" + Description(error) + ")";
    else if (CFGetTypeID(root.get()) != CFDictionaryGetTypeID())
        problem = "the property list is not a dictionary";
    else
        return CFOwned<CFMutableDictionaryRef>(
            static_cast<CFMutableDictionaryRef>(const_cast<void*>(root.release())));
    return nullptr;
}

std::optional<std::string> WriteDictionary(CFDictionaryRef dictionary, CFPropertyListFormat format)
{
    const CFOwned<CFDataRef> data(
        CFPropertyListCreateData(kCFAllocatorDefault, dictionary, format, 0, nullptr));
    if (!data)
        return std::nullopt;
    return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
        static_cast<size_t>(CFDataGetLength(data.get())));
}

bool SetText(CFMutableDictionaryRef dictionary, const char* key, std::string_view utf8)
{
    const CFOwned<CFStringRef> text = MakeText(utf8);
    Set(dictionary, key, text.get());
    return text != nullptr;
}

void SetInteger(CFMutableDictionaryRef dictionary, const char* key, long long value)
{
    const CFOwned<CFNumberRef> number(CFNumberCreate(kCFAllocatorDefault, kCFNumberLongLongType, &value));
    Set(dictionary, key, number.get());
}

void SetBytes(CFMutableDictionaryRef dictionary, const char* key, std::string_view bytes)
{
    Set(dictionary, key, MakeData(bytes).get());
}

void SetBoolean(CFMutableDictionaryRef dictionary, const char* key, bool value)
{
    Set(dictionary, key, value ? kCFBooleanTrue : kCFBooleanFalse);
}

CFOwned<CFMutableDictionaryRef> MakeDictionary()
{
    return CFOwned<CFMutableDictionaryRef>(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

} // namespace launchd
