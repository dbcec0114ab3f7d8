#include <CoreFoundation/EncodingList.h>
#include <CoreFoundation/Encodings.h>
#include <CoreFoundation/StringObject.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

CFStringRef __CFString::copyDescription() const
{
    char16_t quote = u'"';
    std::u16string shown(1, quote);
    shown += text.units();
    shown += quote;
    return cf::MakeString(cf::Text(std::move(shown)));
}

CFStringRef __CFString::copyFormattedText() const { return CFStringCreateCopy(nullptr, this); }

namespace cf {

namespace {

std::span<const UInt8> BytesOf(std::string_view chars)
{
    return { reinterpret_cast<const UInt8*>(chars.data()), chars.size() };
}

CFStringRef Create(CFStringEncoding encoding, std::span<const UInt8> bytes, bool external)
{
    return NullWithoutMemory([&]() -> CFStringRef {
        // Nearly all strings, made without detours.
        const std::string_view chars(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        if (HasAsciiAsPart(encoding) && IsAscii(chars))
            return new __CFString(Text(std::string(chars)));
        std::optional<Text> text = Decode(encoding, bytes, external);
        return text ? MakeString(std::move(*text)) : nullptr;
    });
}

/// The constant strings by their bytes in the program's text.
struct Constants {
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    std::shared_mutex mutex;
    std::unordered_map<std::string, CFStringRef, Hash, std::equal_to<>> strings;
};

}

CFStringRef MakeString(std::string_view utf8) { return Create(kCFStringEncodingUTF8, BytesOf(utf8), false); }

std::string Utf8(CFStringRef string, bool* ok)
{
    std::optional<std::string> bytes = Encode(Check(string, __func__).text, kCFStringEncodingUTF8);
    if (ok)
        *ok = bytes.has_value();
    return bytes ? std::move(*bytes) : std::string();
}

std::string TextOf(CFTypeRef value)
{
    return As<__CFString>(value) ? Utf8(static_cast<CFStringRef>(value)) : "";
}

}

CFStringRef __CFStringMakeConstantString(const char* cStr)
{
    // Never destroyed, so that the strings last as long as the code that names them.
    static auto& constants = *new cf::Constants;
    const std::string_view bytes(cStr);
    {
        const std::shared_lock lock(constants.mutex);
        const auto known = constants.strings.find(bytes);
        if (known != constants.strings.end())
            return known->second;
    }
    const std::unique_lock lock(constants.mutex);
    const auto [place, isNew] = constants.strings.try_emplace(std::string(bytes), nullptr);
    if (!isNew) // another thread was quicker
        return place->second;
    std::optional<cf::Text> text = cf::Decode(kCFStringEncodingUTF8, cf::BytesOf(bytes), false);
    if (!text)
        cf::Fail("CFSTR", "the literal is not UTF-8");
    auto* string = new __CFString(std::move(*text));
    string->makeForever();
    place->second = string;
    return string;
}

CFTypeID CFStringGetTypeID() { return cf::kStringType; }

CFStringEncoding CFStringGetSystemEncoding() { return kCFStringEncodingMacRoman; }

Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding) { return cf::IsKnownEncoding(encoding); }

CFStringEncoding CFStringConvertWindowsCodepageToEncoding(UInt32 codepage)
{
    const cf::Encoding* encoding = cf::FindEncodingOfCodepage(codepage);
    return encoding ? encoding->id : kCFStringEncodingInvalidId;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* cStr, CFStringEncoding encoding)
{
    return cStr ? cf::Create(encoding, cf::BytesOf(cStr), false) : nullptr;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex numBytes,
    CFStringEncoding encoding, Boolean isExternalRepresentation)
{
    if (numBytes < 0 || (numBytes > 0 && !bytes))
        return nullptr;
    return cf::Create(encoding, { bytes, static_cast<size_t>(numBytes) }, isExternalRepresentation);
}

CFStringRef CFStringCreateWithCStringNoCopy(
    CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding, CFAllocatorRef contentsDeallocator)
{
    CFStringRef string = CFStringCreateWithCString(alloc, cStr, encoding);
    if (string)
        CFAllocatorDeallocate(contentsDeallocator, const_cast<char*>(cStr));
    return string;
}

CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
    CFStringEncoding encoding, Boolean isExternalRepresentation, CFAllocatorRef contentsDeallocator)
{
    CFStringRef string = CFStringCreateWithBytes(alloc, bytes, numBytes, encoding, isExternalRepresentation);
    if (string)
        CFAllocatorDeallocate(contentsDeallocator, const_cast<UInt8*>(bytes));
    return string;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* chars, CFIndex numChars)
{
    if (numChars < 0 || (numChars > 0 && !chars))
        return nullptr;
    return cf::NullWithoutMemory(
        [&] { return cf::MakeString(cf::Text(std::u16string(chars, chars + numChars))); });
}

// A Mac decomposes accented letters on the way to a file name. Here a file name is the bytes it was made
// with, and two spellings of one letter are two names, so they stay as they are in both directions.
CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef alloc, const char* buffer)
{
    return CFStringCreateWithCString(alloc, buffer, kCFStringEncodingUTF8);
}

CFStringRef CFStringCreateFromExternalRepresentation(
    CFAllocatorRef alloc, CFDataRef data, CFStringEncoding encoding)
{
    return CFStringCreateWithBytes(alloc, CFDataGetBytePtr(data), CFDataGetLength(data), encoding, true);
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef, CFStringRef str, CFRange range)
{
    const __CFString& string = cf::Check(str, __func__);
    cf::CheckRange(range, string.length(), __func__);
    return cf::MakeString(
        string.text.substring(static_cast<size_t>(range.location), static_cast<size_t>(range.length)));
}

CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef theString)
{
    const __CFString& string = cf::Check(theString, __func__);
    return string.isMutable() ? cf::MakeString(string.text) : cf::Retained(theString);
}

CFIndex CFStringGetLength(CFStringRef theString) { return cf::Check(theString, __func__).length(); }

UniChar CFStringGetCharacterAtIndex(CFStringRef theString, CFIndex idx)
{
    const __CFString& string = cf::Check(theString, __func__);
    cf::CheckIndex(idx, string.length(), __func__);
    return string.text[static_cast<size_t>(idx)];
}

void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar* buffer)
{
    const __CFString& string = cf::Check(theString, __func__);
    cf::CheckRange(range, string.length(), __func__);
    for (CFIndex i = 0; i < range.length; i++)
        buffer[i] = string.text[static_cast<size_t>(range.location + i)];
}

Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding)
{
    const __CFString& string = cf::Check(theString, __func__);
    if (!buffer || bufferSize < 1)
        return false;
    auto* bytes = reinterpret_cast<UInt8*>(buffer);
    const size_t room = static_cast<size_t>(bufferSize) - 1;
    const cf::Encoded done
        = cf::Encode(string.text, 0, string.text.length(), encoding, 0, false, bytes, room);
    const bool whole = cf::IsKnownEncoding(encoding) && done.units == string.text.length();
    buffer[whole ? done.bytes : 0] = '\0';
    return whole;
}

const char* CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding)
{
    const __CFString& string = cf::Check(theString, __func__);
    return string.text.isAscii() && cf::HasAsciiAsPart(encoding) ? string.text.ascii().c_str() : nullptr;
}

const UniChar* CFStringGetCharactersPtr(CFStringRef) { return nullptr; }

CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
    Boolean isExternalRepresentation, UInt8* buffer, CFIndex maxBufLen, CFIndex* usedBufLen)
{
    const __CFString& string = cf::Check(theString, __func__);
    cf::CheckRange(range, string.length(), __func__);
    const cf::Encoded done = cf::Encode(string.text, static_cast<size_t>(range.location),
        static_cast<size_t>(range.length), encoding, lossByte, isExternalRepresentation, buffer,
        static_cast<size_t>(std::max<CFIndex>(maxBufLen, 0)));
    if (usedBufLen)
        *usedBufLen = static_cast<CFIndex>(done.bytes);
    return static_cast<CFIndex>(done.units);
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding)
{
    // Room for a byte order mark, which CFStringGetBytes may put in front.
    constexpr CFIndex mark = 4;
    const auto perUnit = static_cast<CFIndex>(cf::MaximumBytesPerUnit(encoding));
    if (perUnit == 0 || length < 0 || length > (INT64_MAX - mark) / perUnit)
        return kCFNotFound;
    return length * perUnit + (cf::HasAsciiAsPart(encoding) ? 0 : mark);
}

Boolean CFStringGetFileSystemRepresentation(CFStringRef string, char* buffer, CFIndex maxBufLen)
{
    // A null within would cut the name short and name another file.
    return CFStringGetCString(string, buffer, maxBufLen, kCFStringEncodingUTF8)
        && cf::Encode(string->text, kCFStringEncodingUTF8)->find('\0') == std::string::npos;
}

CFIndex CFStringGetMaximumSizeOfFileSystemRepresentation(CFStringRef string)
{
    const CFIndex size = CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8);
    return size == kCFNotFound ? size : size + 1;
}

CFDataRef CFStringCreateExternalRepresentation(
    CFAllocatorRef alloc, CFStringRef theString, CFStringEncoding encoding, UInt8 lossByte)
{
    const cf::Text& text = cf::Check(theString, __func__).text;
    const cf::Encoded size = cf::Encode(text, 0, text.length(), encoding, lossByte, true, nullptr, 0);
    if (!cf::IsKnownEncoding(encoding) || size.units < text.length())
        return nullptr;
    return cf::NullWithoutMemory([&] {
        std::vector<UInt8> bytes(size.bytes);
        cf::Encode(text, 0, text.length(), encoding, lossByte, true, bytes.data(), bytes.size());
        return CFDataCreate(alloc, bytes.data(), static_cast<CFIndex>(bytes.size()));
    });
}
