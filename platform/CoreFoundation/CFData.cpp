#include <CoreFoundation/CFData.h>
#include <CoreFoundation/Runtime.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

// Either owns its bytes or wraps a caller's, which only an immutable object does.
struct __CFData : cf::Object {
    explicit __CFData(std::vector<UInt8> ownBytes)
        : Object(cf::kDataType)
        , own(std::move(ownBytes))
    {
    }
    __CFData(std::span<const UInt8> foreignBytes, CFAllocatorRef bytesDeallocator)
        : Object(cf::kDataType)
        , foreign(foreignBytes)
        , deallocator(bytesDeallocator)
    {
    }
    ~__CFData() override
    {
        if (foreign.data())
            CFAllocatorDeallocate(deallocator, const_cast<UInt8*>(foreign.data()));
    }

    static CFTypeID typeID() { return cf::kDataType; }

    std::span<const UInt8> bytes() const { return foreign.data() ? foreign : std::span<const UInt8>(own); }
    CFIndex length() const { return static_cast<CFIndex>(bytes().size()); }

    bool isEqual(const Object& other) const override
    {
        return std::ranges::equal(bytes(), static_cast<const __CFData&>(other).bytes());
    }
    CFHashCode hash() const override
    {
        // Long data differ early or in length; hashing megabytes would buy nothing.
        const auto start = bytes().first(std::min<size_t>(bytes().size(), 256));
        return std::hash<std::string_view>()({ reinterpret_cast<const char*>(start.data()), start.size() })
            + bytes().size();
    }
    CFStringRef copyDescription() const override;

    std::vector<UInt8> own;
    std::span<const UInt8> foreign;
    CFAllocatorRef deallocator = nullptr;
    size_t limit = 0; ///< 0: none
    bool isMutable = false;
};

CFStringRef __CFData::copyDescription() const
{
    constexpr size_t shown = 24;
    std::string text = "<CFData length = ";
    text.append(std::to_string(length())).append(", bytes = 0x");
    for (const UInt8 byte : bytes().first(std::min(bytes().size(), shown))) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    text += bytes().size() > shown ? "...>" : ">";
    return cf::MakeString(text);
}

namespace {

__CFData& CheckMutable(CFMutableDataRef data, const char* function)
{
    if (!cf::Check(data, function).isMutable)
        cf::Fail(function, "cannot change immutable data");
    return *data;
}

void Resize(__CFData& data, size_t length, const char* function)
{
    if (data.limit && length > data.limit)
        cf::Fail(function, "grows past the capacity it was made with");
    try {
        data.own.resize(length);
    } catch (const std::exception&) {
        cf::Fail(function, "memory cannot hold that length");
    }
}

CFMutableDataRef CreateMutable(CFIndex capacity, std::span<const UInt8> bytes, const char* function)
{
    if (capacity < 0)
        cf::Fail(function, "negative capacity");
    return cf::NullWithoutMemory([&] {
        auto* data = new __CFData({ bytes.begin(), bytes.end() });
        data->limit = static_cast<size_t>(capacity);
        data->isMutable = true;
        return data;
    });
}

}

CFTypeID CFDataGetTypeID() { return cf::kDataType; }

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length)
{
    if (length < 0 || (length > 0 && !bytes))
        return nullptr;
    return cf::NullWithoutMemory([&]() -> CFDataRef { return new __CFData({ bytes, bytes + length }); });
}

CFDataRef CFDataCreateWithBytesNoCopy(
    CFAllocatorRef, const UInt8* bytes, CFIndex length, CFAllocatorRef bytesDeallocator)
{
    if (length < 0 || (length > 0 && !bytes))
        return nullptr;
    return new __CFData({ bytes, static_cast<size_t>(length) }, bytesDeallocator);
}

CFDataRef CFDataCreateCopy(CFAllocatorRef allocator, CFDataRef theData)
{
    const __CFData& data = cf::Check(theData, __func__);
    return data.isMutable ? CFDataCreate(allocator, data.own.data(), data.length()) : cf::Retained(theData);
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef, CFIndex capacity)
{
    return CreateMutable(capacity, {}, __func__);
}

CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef, CFIndex capacity, CFDataRef theData)
{
    const auto bytes = cf::Check(theData, __func__).bytes();
    if (capacity != 0 && static_cast<size_t>(capacity) < bytes.size())
        cf::Fail(__func__, "the capacity is below the length");
    return CreateMutable(capacity, bytes, __func__);
}

CFIndex CFDataGetLength(CFDataRef theData) { return cf::Check(theData, __func__).length(); }

const UInt8* CFDataGetBytePtr(CFDataRef theData) { return cf::Check(theData, __func__).bytes().data(); }

UInt8* CFDataGetMutableBytePtr(CFMutableDataRef theData)
{
    return CheckMutable(theData, __func__).own.data();
}

void CFDataGetBytes(CFDataRef theData, CFRange range, UInt8* buffer)
{
    const __CFData& data = cf::Check(theData, __func__);
    cf::CheckRange(range, data.length(), __func__);
    std::copy_n(data.bytes().data() + range.location, range.length, buffer);
}

void CFDataSetLength(CFMutableDataRef theData, CFIndex length)
{
    __CFData& data = CheckMutable(theData, __func__);
    if (length < 0)
        cf::Fail(__func__, "negative length");
    Resize(data, static_cast<size_t>(length), __func__);
}

void CFDataIncreaseLength(CFMutableDataRef theData, CFIndex extraLength)
{
    __CFData& data = CheckMutable(theData, __func__);
    if (extraLength < 0)
        cf::Fail(__func__, "negative length");
    Resize(data, data.own.size() + static_cast<size_t>(extraLength), __func__);
}

void CFDataAppendBytes(CFMutableDataRef theData, const UInt8* bytes, CFIndex length)
{
    CFDataReplaceBytes(theData, CFRangeMake(CheckMutable(theData, __func__).length(), 0), bytes, length);
}

void CFDataReplaceBytes(CFMutableDataRef theData, CFRange range, const UInt8* newBytes, CFIndex newLength)
{
    __CFData& data = CheckMutable(theData, __func__);
    cf::CheckRange(range, data.length(), __func__);
    if (newLength < 0 || (newLength > 0 && !newBytes))
        cf::Fail(__func__, "bytes missing");
    // Growing may move the object's bytes, and the new ones may be some of them.
    const std::vector<UInt8> incoming(newBytes, newBytes + newLength);
    const size_t oldSize = data.own.size();
    const size_t newSize = oldSize - static_cast<size_t>(range.length) + incoming.size();
    const auto tailStart = static_cast<size_t>(range.location + range.length);
    const size_t tailSize = oldSize - tailStart;
    Resize(data, std::max(oldSize, newSize), __func__);
    if (tailSize > 0)
        std::memmove(&data.own[newSize - tailSize], &data.own[tailStart], tailSize);
    std::ranges::copy(incoming, data.own.begin() + range.location);
    data.own.resize(newSize);
}

void CFDataDeleteBytes(CFMutableDataRef theData, CFRange range)
{
    CFDataReplaceBytes(theData, range, nullptr, 0);
}
