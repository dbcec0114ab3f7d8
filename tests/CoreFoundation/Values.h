#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <string>
#include <string_view>
#include <thread>
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

/// @return the string, which is released; "(null)" for null.
inline std::string Taken(CFStringRef string) { return Show(Hold(string)); }

template <class Value> Held<CFNumberRef> Number(CFNumberType type, Value value)
{
    return Hold(CFNumberCreate(nullptr, type, &value));
}
inline Held<CFNumberRef> Integer(SInt64 value) { return Number(kCFNumberSInt64Type, value); }
inline Held<CFNumberRef> Number(double value) { return Number(kCFNumberDoubleType, value); }

inline Held<CFDataRef> Data(std::string_view bytes)
{
    return Hold(CFDataCreate(
        nullptr, reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size())));
}
/// @return the bytes as text, "(null)" for null.
inline std::string Bytes(CFDataRef data)
{
    return data ? std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
               static_cast<size_t>(CFDataGetLength(data)))
                : "(null)";
}

inline Held<CFMutableDictionaryRef> Dictionary()
{
    return Hold(CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

inline Held<CFMutableArrayRef> Array(std::initializer_list<const char*> texts = {})
{
    auto array = Hold(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    for (const char* text : texts)
        CFArrayAppendValue(array.get(), Text(text).get());
    return array;
}

/// Arrays within arrays, as many as `depth`.
inline Held<CFMutableArrayRef> NestedArrays(int depth)
{
    auto outer = Array();
    for (int i = 1; i < depth; ++i) {
        auto next = Array();
        CFArrayAppendValue(next.get(), outer.get());
        outer = std::move(next);
    }
    return outer;
}

/// @return the strings of the array with a comma after each.
inline std::string List(CFArrayRef array)
{
    std::string result;
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i)
        result += Show(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, i))) + ',';
    return result;
}

/// Does the work in four threads at once, each with a number from 0, and waits for all.
template <class Work> void InThreads(const Work& work)
{
    std::vector<std::thread> threads;
    for (size_t i = 0; i < 4; ++i)
        threads.emplace_back(work, i);
    for (auto& thread : threads)
        thread.join();
}
