#include "CoreFoundation/PropertyListParts.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include "CoreFoundation/PropertyListCheck.h"
#include "CoreFoundation/Runtime.h"

#include <plist/plist.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// Years with four digits: the library writes earlier ones shorter, which no reader takes for a year.
constexpr std::chrono::sys_days kReferenceDay { std::chrono::year { 2001 } / 1 / 1 };
constexpr std::chrono::sys_days kFirstXMLDay { std::chrono::year { 1000 } / 1 / 1 };
constexpr std::chrono::sys_days kAfterLastXMLDay { std::chrono::year { 10000 } / 1 / 1 };
constexpr auto kFirstXMLDate
    = static_cast<double>(std::chrono::seconds(kFirstXMLDay - kReferenceDay).count());
constexpr auto kAfterLastXMLDate
    = static_cast<double>(std::chrono::seconds(kAfterLastXMLDay - kReferenceDay).count());

/// Whether XML can hold all of it. @param text UTF-8, valid. Null ends a C string and so can be in neither
/// format.
bool IsWritable(std::string_view text, bool isXML)
{
    if (!isXML)
        return text.find('\0') == std::string_view::npos;
    const auto isForbidden
        = [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r'; };
    return std::none_of(text.begin(), text.end(), isForbidden)
        && text.find("\xEF\xBF\xBE") == std::string_view::npos // U+FFFE
        && text.find("\xEF\xBF\xBF") == std::string_view::npos; // U+FFFF
}

/// @param copy receives the text where the string cannot be pointed into.
/// @return the text in UTF-8, null-terminated; its data is null when the string has no UTF-8 form.
std::string_view TextOf(CFStringRef string, std::string& copy)
{
    if (const char* ascii = CFStringGetCStringPtr(string, kCFStringEncodingUTF8))
        return { ascii, static_cast<size_t>(CFStringGetLength(string)) };
    bool ok = false;
    copy = cf::Utf8(string, &ok);
    return ok ? std::string_view(copy) : std::string_view();
}

/// A date node with all of its digits, for dates that are not plain.
PropertyListTree NewWideDate(double secondsSinceReference)
{
    constexpr std::string_view head("bplist00\x33", 9);
    constexpr std::string_view tail("\x08" // offset of the only object
                                    "\0\0\0\0\0\0\x01\x01" // sizes of offsets and references
                                    "\0\0\0\0\0\0\0\x01" // objects
                                    "\0\0\0\0\0\0\0\0" // the root
                                    "\0\0\0\0\0\0\0\x11", // offset of the table of offsets
        33);
    const auto bits = std::bit_cast<uint64_t>(secondsSinceReference);
    std::string bytes(head);
    for (int shift = 56; shift >= 0; shift -= 8)
        bytes += static_cast<char>(bits >> shift & 0xFF);
    bytes += tail;
    plist_t node = nullptr;
    plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &node);
    return PropertyListTree(node);
}

PropertyListTree NewDate(double secondsSinceReference)
{
    if (!IsPlainDate(secondsSinceReference))
        return NewWideDate(secondsSinceReference);
    return PropertyListTree(plist_new_date(static_cast<int32_t>(secondsSinceReference), 0));
}

/// Turns objects into libplist's nodes, in one pass. The first fault stops it.
class Writer {
public:
    explicit Writer(CFPropertyListFormat format)
        : fIsXML(format == kCFPropertyListXMLFormat_v1_0)
    {
        if (!fIsXML && format != kCFPropertyListBinaryFormat_v1_0)
            fFault = "The property list format cannot be written.";
    }

    /// @return null on a fault.
    PropertyListTree tree(CFPropertyListRef plist) { return fFault ? nullptr : node(plist, 0); }

    const char* fault() const { return fFault; }
    bool hasCarriageReturns() const { return fHasCarriageReturns; }

private:
    std::nullptr_t fail(const char* fault)
    {
        fFault = fault;
        return nullptr;
    }

    PropertyListTree node(CFTypeRef value, unsigned depth)
    {
        if (!value)
            return fail("The property list has a null reference in it.");
        if (!takeSpace(kNodeSize + 2 * uint64_t { depth }))
            return nullptr;
        const CFTypeID type = CFGetTypeID(value);
        if (type == CFStringGetTypeID())
            return string(static_cast<CFStringRef>(value));
        if (type == CFDictionaryGetTypeID())
            return dictionary(static_cast<CFDictionaryRef>(value), depth + 1);
        if (type == CFNumberGetTypeID())
            return number(static_cast<CFNumberRef>(value));
        if (type == CFBooleanGetTypeID())
            return PropertyListTree(plist_new_bool(CFBooleanGetValue(static_cast<CFBooleanRef>(value))));
        if (type == CFArrayGetTypeID())
            return array(static_cast<CFArrayRef>(value), depth + 1);
        if (type == CFDataGetTypeID())
            return data(static_cast<CFDataRef>(value));
        if (type == CFDateGetTypeID())
            return date(CFDateGetAbsoluteTime(static_cast<CFDateRef>(value)));
        return fail("The property list has an object in it that is none of a property list.");
    }

    /// @param size the most bytes that something can take when written. libplist counts in 32 bits.
    bool takeSpace(uint64_t size)
    {
        fSize += size;
        if (fSize > UINT32_MAX)
            fail("The property list is too large.");
        return fSize <= UINT32_MAX;
    }

    bool checkText(std::string_view text)
    {
        if (!text.data() || !IsWritable(text, fIsXML)) {
            fail("The property list has text in it that the format cannot hold.");
            return false;
        }
        fHasCarriageReturns = fHasCarriageReturns || (fIsXML && text.find('\r') != std::string_view::npos);
        return takeSpace(text.size() * kLongestEscape);
    }

    PropertyListTree string(CFStringRef value)
    {
        std::string copy;
        const std::string_view text = TextOf(value, copy);
        return checkText(text) ? PropertyListTree(plist_new_string(text.data())) : nullptr;
    }

    static PropertyListTree number(CFNumberRef value)
    {
        if (CFNumberIsFloatType(value)) {
            double real = 0;
            CFNumberGetValue(value, kCFNumberFloat64Type, &real);
            return PropertyListTree(plist_new_real(real));
        }
        // Both formats take this for a signed number.
        uint64_t twosComplement = 0;
        CFNumberGetValue(value, kCFNumberSInt64Type, &twosComplement);
        return PropertyListTree(plist_new_uint(twosComplement));
    }

    PropertyListTree date(double at)
    {
        const double whole = std::floor(at);
        if (!fIsXML && std::isfinite(at))
            return NewDate(at);
        if (!(whole >= kFirstXMLDate && whole < kAfterLastXMLDate))
            return fail("The property list has a date in it that the format cannot hold.");
        return NewDate(whole);
    }

    PropertyListTree data(CFDataRef value)
    {
        const auto length = static_cast<uint64_t>(CFDataGetLength(value));
        if (!takeSpace(length * 2))
            return nullptr;
        // The library copies from the pointer even where there is nothing to copy.
        const char* bytes = length > 0 ? reinterpret_cast<const char*>(CFDataGetBytePtr(value)) : "";
        return PropertyListTree(plist_new_data(bytes, length));
    }

    bool enterContainer(unsigned depth)
    {
        if (depth > kPropertyListDepthLimit)
            fail("The property list is nested too deeply.");
        return depth <= kPropertyListDepthLimit;
    }

    PropertyListTree array(CFArrayRef value, unsigned depth)
    {
        if (!enterContainer(depth))
            return nullptr;
        PropertyListTree result(plist_new_array());
        const CFIndex count = CFArrayGetCount(value);
        for (CFIndex i = 0; i < count; ++i) {
            PropertyListTree item = node(CFArrayGetValueAtIndex(value, i), depth);
            if (!item)
                return nullptr;
            plist_array_append_item(result.get(), item.release());
        }
        return result;
    }

    struct Entry {
        const char* key;
        CFTypeRef value;
    };

    /// @return false on a fault.
    bool sortEntries(CFDictionaryRef dictionary, std::vector<Entry>& entries)
    {
        const auto count = static_cast<size_t>(CFDictionaryGetCount(dictionary));
        std::vector<const void*> keys(count);
        std::vector<const void*> values(count);
        CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
        entries.reserve(count);
        for (size_t i = 0; i < count; ++i) {
            const char* key = keyText(keys[i]);
            if (!key)
                return false;
            entries.push_back({ key, values[i] });
        }
        std::sort(entries.begin(), entries.end(),
            [](const Entry& a, const Entry& b) { return std::strcmp(a.key, b.key) < 0; });
        return true;
    }

    /// @return null on a fault; else the text, valid while this object and the key live.
    const char* keyText(CFTypeRef key)
    {
        if (!key || CFGetTypeID(key) != CFStringGetTypeID())
            return fail("A dictionary of the property list has a key that is not a string.");
        std::string copy;
        const std::string_view text = TextOf(static_cast<CFStringRef>(key), copy);
        if (!checkText(text))
            return nullptr;
        const bool isCopy = text.data() == copy.data();
        return isCopy ? fKeyCopies.emplace_back(std::move(copy)).c_str() : text.data();
    }

    PropertyListTree dictionary(CFDictionaryRef value, unsigned depth)
    {
        std::vector<Entry> entries;
        if (!enterContainer(depth) || !sortEntries(value, entries))
            return nullptr;
        PropertyListTree result(plist_new_dict());
        for (const Entry& entry : entries) {
            PropertyListTree item = node(entry.value, depth);
            if (!item)
                return nullptr;
            plist_dict_set_item(result.get(), entry.key, item.release());
        }
        return result;
    }

    static constexpr uint64_t kNodeSize = 64; ///< tags and line ends
    static constexpr uint64_t kLongestEscape = 5; ///< "&amp;" and "&#13;"

    const char* fFault = nullptr;
    std::deque<std::string> fKeyCopies;
    uint64_t fSize = 0;
    bool fIsXML;
    bool fHasCarriageReturns = false;
};

/// XML readers take a bare carriage return for a line feed.
CFDataRef CreateDataWithEscapedCarriageReturns(std::string_view xml)
{
    std::string escaped;
    escaped.reserve(xml.size() + xml.size() / 16);
    for (const char c : xml) {
        if (c == '\r')
            escaped += "&#13;";
        else
            escaped += c;
    }
    return CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(escaped.data()),
        static_cast<CFIndex>(escaped.size()));
}

} // namespace

CFDataRef CreatePropertyListData(CFPropertyListRef plist, CFPropertyListFormat format, const char*& fault)
{
    Writer writer(format);
    const PropertyListTree tree = writer.tree(plist);
    if (!tree) {
        fault = writer.fault();
        return nullptr;
    }
    const PointLocale locale;
    char* bytes = nullptr;
    uint32_t size = 0;
    const auto write = format == kCFPropertyListBinaryFormat_v1_0 ? plist_to_bin : plist_to_xml;
    write(tree.get(), &bytes, &size);
    MallocOwned<char> owned(bytes);
    if (!owned)
        return nullptr;
    if (writer.hasCarriageReturns())
        return CreateDataWithEscapedCarriageReturns({ bytes, size });
    return CFDataCreateWithBytesNoCopy(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(owned.release()),
        static_cast<CFIndex>(size), kCFAllocatorMalloc);
}

bool CanWritePropertyList(CFPropertyListRef plist, CFPropertyListFormat format)
{
    return Writer(format).tree(plist) != nullptr;
}
