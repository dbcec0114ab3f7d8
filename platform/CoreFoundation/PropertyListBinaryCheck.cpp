#include "CoreFoundation/PropertyListCheck.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr size_t kTrailerSize = 32;

// About what libplist takes for a node beside its payload; the budget then is the memory that reading may
// cost.
constexpr uint64_t kNodeCost = 64;
constexpr uint64_t kBaseBudget = uint64_t { 64 } << 20;
constexpr uint64_t kBudgetPerByte = 32;

constexpr const char* kMalformed = "The binary property list is malformed.";

/// Object kinds, in the upper half of the first byte.
enum Kind : uint8_t {
    kSimple = 0x0,
    kInteger = 0x1,
    kReal = 0x2,
    kDate = 0x3,
    kData = 0x4,
    kASCIIString = 0x5,
    kUnicodeString = 0x6,
    kUID = 0x8,
    kArray = 0xA,
    kDictionary = 0xD
};

struct Object {
    Kind kind;
    uint64_t count; ///< elements, pairs, characters or bytes
    size_t content; ///< where they begin
};

/// What expanding an object leads to; kept, so that an object with many references is measured once.
struct Measure {
    uint64_t cost = 0;
    unsigned depth = 0; ///< containers on the longest way down, the object itself included
    enum State : uint8_t { kUnseen, kOpen, kDone } state = kUnseen;
};

class BinaryChecker {
public:
    explicit BinaryChecker(std::string_view bytes)
        : fBytes(bytes)
    {
    }

    PropertyListCheck check()
    {
        uint64_t top = 0;
        if (!readTrailer(top) || !measure(top, 0))
            return { fFault, {}, false, false };
        return { nullptr, fBytes, fHasWideIntegers, fHasWideDates };
    }

private:
    bool fail(const char* fault)
    {
        fFault = fault;
        return false;
    }

    /// @param position of a number of 1 to 8 bytes that lies inside the bytes.
    uint64_t number(size_t position, size_t size) const
    {
        uint64_t value = 0;
        for (const char c : fBytes.substr(position, size))
            value = value << 8 | static_cast<uint8_t>(c);
        return value;
    }

    bool readTrailer(uint64_t& top)
    {
        if (!fBytes.starts_with(kMagic) || fBytes.size() < kMagic.size() + kTrailerSize)
            return false;
        const size_t trailer = fBytes.size() - kTrailerSize;
        fOffsetSize = static_cast<uint8_t>(fBytes[trailer + 6]);
        fReferenceSize = static_cast<uint8_t>(fBytes[trailer + 7]);
        const uint64_t count = number(trailer + 8, 8);
        top = number(trailer + 16, 8);
        const uint64_t table = number(trailer + 24, 8);
        if (fOffsetSize < 1 || fOffsetSize > 8 || fReferenceSize < 1 || fReferenceSize > 8 || table > trailer)
            return false;
        if (count == 0 || count > (trailer - table) / fOffsetSize || top >= count)
            return false;
        fOffsetTable = table;
        fMeasures.resize(count);
        return true;
    }

    /// Reads the first byte of an object and, where the count does not fit into it, the integer that follows.
    bool readObject(uint64_t index, Object& object) const
    {
        uint64_t position = number(fOffsetTable + index * fOffsetSize, fOffsetSize);
        if (position < kMagic.size() || position >= fOffsetTable)
            return false;
        const auto marker = static_cast<uint8_t>(fBytes[position++]);
        object.kind = static_cast<Kind>(marker >> 4);
        object.count = marker & 0xFU;
        if (object.count == 0xF && object.kind >= kData) {
            if (position >= fOffsetTable || static_cast<uint8_t>(fBytes[position]) >> 4 != kInteger)
                return false;
            const size_t size = size_t { 1 } << (static_cast<uint8_t>(fBytes[position++]) & 0xFU);
            if (size > 8 || size > fOffsetTable - position)
                return false;
            object.count = number(position, size);
            position += size;
        }
        object.content = position;
        return true;
    }

    /// 16 bytes are the form of unsigned integers above 2^63-1; nothing larger can be held.
    bool isWideInteger(const Object& object)
    {
        fHasWideIntegers = true;
        return object.count == 4 && fOffsetTable - object.content >= 16 && number(object.content, 8) == 0;
    }

    bool isDate(const Object& object)
    {
        if (fOffsetTable - object.content < 8)
            return false;
        const auto at = std::bit_cast<double>(number(object.content, 8));
        fHasWideDates = fHasWideDates || !IsPlainDate(at);
        return std::isfinite(at);
    }

    /// @return the payload of a leaf in bytes; false where it does not fit or the kind is none of a property
    /// list.
    bool leafSize(const Object& object, uint64_t& size)
    {
        switch (object.kind) {
        case kSimple:
            size = 0;
            return object.count == 8 || object.count == 9;
        case kInteger:
            size = uint64_t { 1 } << object.count;
            return size <= 8 || isWideInteger(object);
        case kReal:
            size = uint64_t { 1 } << object.count;
            return size == 4 || size == 8;
        case kDate:
            size = 8;
            return object.count == 3 && isDate(object);
        case kData:
        case kASCIIString:
            size = object.count;
            return true;
        case kUnicodeString:
            size = object.count * 2;
            return object.count <= fBytes.size();
        case kUID:
            size = object.count + 1;
            return size <= 8;
        default:
            return false;
        }
    }

    bool measureLeaf(const Object& object, Measure& result)
    {
        uint64_t size = 0;
        if (!leafSize(object, size) || size > fOffsetTable - object.content)
            return false;
        if (!hasWholeText(object))
            return fail("The binary property list has text with a null character or half a surrogate pair.");
        result.cost = kNodeCost + size;
        return true;
    }

    /// libplist would cut the text at a null and leave halves of pairs out.
    bool hasWholeText(const Object& object) const
    {
        if (object.kind == kASCIIString)
            return fBytes.substr(object.content, object.count).find('\0') == std::string_view::npos;
        if (object.kind != kUnicodeString)
            return true;
        bool inPair = false;
        for (uint64_t i = 0; i < object.count; ++i) {
            const uint64_t unit = number(object.content + 2 * i, 2);
            const bool isSecond = unit >= 0xDC00 && unit <= 0xDFFF;
            if (unit == 0 || isSecond != inPair)
                return false;
            inPair = unit >= 0xD800 && unit <= 0xDBFF;
        }
        return !inPair;
    }

    bool measureContainer(const Object& object, Measure& result, unsigned depth)
    {
        if (depth > kPropertyListDepthLimit)
            return fail("The property list is nested too deeply.");
        const uint64_t room = (fOffsetTable - object.content) / fReferenceSize;
        const uint64_t perEntry = object.kind == kDictionary ? 2 : 1;
        if (object.count > room / perEntry)
            return false;
        result = { kNodeCost, 1 };
        for (uint64_t i = 0; i < object.count * perEntry; ++i) {
            const uint64_t child = number(object.content + i * fReferenceSize, fReferenceSize);
            if (child >= fMeasures.size() || !measure(child, depth))
                return false;
            const bool isKey = object.kind == kDictionary && i < object.count;
            if (isKey && !isString(child))
                return fail("A dictionary of the binary property list has a key that is not a string.");
            result.cost += fMeasures[child].cost;
            result.depth = std::max(result.depth, fMeasures[child].depth + 1);
            if (result.cost > kBaseBudget + fBytes.size() * kBudgetPerByte)
                return fail("The binary property list expands to too much.");
        }
        return true;
    }

    bool isString(uint64_t index) const
    {
        Object object {};
        return readObject(index, object) && (object.kind == kASCIIString || object.kind == kUnicodeString);
    }

    /// @param depth containers around the object.
    bool measure(uint64_t index, unsigned depth)
    {
        if (fMeasures[index].state == Measure::kOpen)
            return fail("A container of the binary property list holds itself.");
        if (fMeasures[index].state == Measure::kDone)
            return depth + fMeasures[index].depth <= kPropertyListDepthLimit
                || fail("The property list is nested too deeply.");
        Object object {};
        if (!readObject(index, object))
            return false;
        Measure result;
        fMeasures[index].state = Measure::kOpen;
        const bool isContainer = object.kind == kArray || object.kind == kDictionary;
        if (!(isContainer ? measureContainer(object, result, depth + 1) : measureLeaf(object, result)))
            return false;
        result.state = Measure::kDone;
        fMeasures[index] = result;
        return true;
    }

    std::string_view fBytes;
    std::vector<Measure> fMeasures;
    size_t fOffsetTable = 0;
    size_t fOffsetSize = 0;
    size_t fReferenceSize = 0;
    const char* fFault = kMalformed;
    bool fHasWideIntegers = false;
    bool fHasWideDates = false;
};

} // namespace

PropertyListCheck CheckBinaryPropertyList(std::string_view bytes) { return BinaryChecker(bytes).check(); }
