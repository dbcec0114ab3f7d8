#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFUUID.h>
#include <CoreFoundation/Runtime.h>
#include <CoreFoundation/UrlText.h>

#include <array>
#include <bit>
#include <map>
#include <mutex>
#include <sys/random.h>

using UUIDBytes = std::array<UInt8, 16>;
static_assert(sizeof(UUIDBytes) == sizeof(CFUUIDBytes));

struct __CFUUID : cf::Object {
    explicit __CFUUID(const UUIDBytes& sixteen)
        : Object(cf::kUUIDType)
        , bytes(sixteen)
    {
    }
    static CFTypeID typeID() { return cf::kUUIDType; }

    bool isEqual(const Object& other) const override
    {
        return bytes == static_cast<const __CFUUID&>(other).bytes;
    }
    CFHashCode hash() const override
    {
        const std::string_view chars(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return std::hash<std::string_view>()(chars);
    }
    CFStringRef copyDescription() const override { return CFUUIDCreateString(nullptr, this); }

    UUIDBytes bytes;
};

namespace {

constexpr std::string_view kPattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

bool Parse(std::string_view text, UUIDBytes& bytes)
{
    if (text.size() != kPattern.size())
        return false;
    size_t digits = 0;
    for (size_t i = 0; i < kPattern.size(); i++) {
        if (kPattern[i] == '-') {
            if (text[i] != '-')
                return false;
            continue;
        }
        const int digit = cf::HexValue(text[i]);
        if (digit < 0)
            return false;
        UInt8& byte = bytes.at(digits++ / 2);
        byte = static_cast<UInt8>(byte << 4 | digit);
    }
    return true;
}

}

CFTypeID CFUUIDGetTypeID() { return cf::kUUIDType; }

CFUUIDRef CFUUIDCreate(CFAllocatorRef)
{
    UUIDBytes bytes {};
    // Requests this small are answered whole; the system has no lesser source to fall back on.
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        cf::Fail(__func__, "the system gives no random numbers");
    bytes[6] = static_cast<UInt8>((bytes[6] & 0x0f) | 0x40); // version 4
    bytes[8] = static_cast<UInt8>((bytes[8] & 0x3f) | 0x80); // the variant of RFC 4122
    return new __CFUUID(bytes);
}

CFUUIDRef CFUUIDCreateWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
    UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9, UInt8 byte10, UInt8 byte11,
    UInt8 byte12, UInt8 byte13, UInt8 byte14, UInt8 byte15)
{
    return new __CFUUID({ byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7, byte8, byte9, byte10,
        byte11, byte12, byte13, byte14, byte15 });
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes bytes)
{
    return new __CFUUID(std::bit_cast<UUIDBytes>(bytes));
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef, CFStringRef uuidStr)
{
    UUIDBytes bytes {};
    return uuidStr && Parse(cf::Utf8(uuidStr), bytes) ? new __CFUUID(bytes) : nullptr;
}

CFStringRef CFUUIDCreateString(CFAllocatorRef, CFUUIDRef uuid)
{
    const UUIDBytes& bytes = cf::Check(uuid, __func__).bytes;
    std::string text(kPattern);
    size_t digits = 0;
    for (char& c : text) {
        if (c == '-')
            continue;
        const UInt8 byte = bytes.at(digits / 2);
        c = "0123456789ABCDEF"[digits++ % 2 == 0 ? byte >> 4 : byte & 15];
    }
    return cf::MakeString(text);
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
    UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9, UInt8 byte10, UInt8 byte11,
    UInt8 byte12, UInt8 byte13, UInt8 byte14, UInt8 byte15)
{
    static auto& mutex = *new std::mutex;
    static auto& constants = *new std::map<UUIDBytes, CFUUIDRef>;
    const UUIDBytes bytes = { byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7, byte8, byte9, byte10,
        byte11, byte12, byte13, byte14, byte15 };
    const std::lock_guard lock(mutex);
    CFUUIDRef& constant = constants[bytes];
    if (!constant) {
        auto* uuid = new __CFUUID(bytes);
        uuid->makeForever();
        constant = uuid;
    }
    return constant;
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid)
{
    return std::bit_cast<CFUUIDBytes>(cf::Check(uuid, __func__).bytes);
}
