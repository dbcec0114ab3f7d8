#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// Short forms for the tests of values.

struct ReleaseObject {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};
/// Holds what a Create or Copy function answered.
template <class Ref> using Held = std::unique_ptr<std::remove_pointer_t<Ref>, ReleaseObject>;
template <class Ref> Held<Ref> Hold(Ref ref) { return Held<Ref>(ref); }

inline Held<CFStringRef> Text(std::string_view utf8)
{
    return Hold(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(utf8.data()),
        static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

inline Held<CFStringRef> Units(std::u16string_view units)
{
    const std::vector<UniChar> chars(units.begin(), units.end());
    return Hold(CFStringCreateWithCharacters(nullptr, chars.data(), static_cast<CFIndex>(chars.size())));
}

inline Held<CFMutableStringRef> Mutable(std::string_view utf8)
{
    return Hold(CFStringCreateMutableCopy(nullptr, 0, Text(utf8).get()));
}

/// The string in UTF-8, "(null)" for none. Buffers are of the exact size, for the address sanitizer to see.
inline std::string Show(CFStringRef string)
{
    if (!string)
        return "(null)";
    const CFRange all { 0, CFStringGetLength(string) };
    CFIndex size = 0;
    if (CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, false, nullptr, 0, &size) != all.length)
        return "(no UTF-8)";
    std::vector<UInt8> bytes(static_cast<size_t>(size));
    CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, false, bytes.data(), size, nullptr);
    return { bytes.begin(), bytes.end() };
}
inline std::string Show(const Held<CFStringRef>& held) { return Show(held.get()); }
inline std::string Show(const Held<CFMutableStringRef>& held) { return Show(held.get()); }

template <class Value> Held<CFNumberRef> Number(CFNumberType type, Value value)
{
    return Hold(CFNumberCreate(nullptr, type, &value));
}
inline Held<CFNumberRef> Number(SInt64 value) { return Number(kCFNumberSInt64Type, value); }
inline Held<CFNumberRef> Number(double value) { return Number(kCFNumberDoubleType, value); }
