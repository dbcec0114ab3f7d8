#include "CoreFoundation/PropertyListParts.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include "CoreFoundation/PropertyListCheck.h"
#include "CoreFoundation/PropertyListMaker.h"
#include "CoreFoundation/Runtime.h"

#include <plist/plist.h>

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

constexpr std::string_view kBinaryMagic = "bplist";
constexpr std::string_view kBinaryVersion = "bplist00";

/// A leaf in the binary format, from its type byte on: there alone a leaf shows what the accessors hide.
class BinaryLeaf {
public:
    explicit BinaryLeaf(plist_t leaf)
    {
        char* bytes = nullptr;
        uint32_t size = 0;
        plist_to_bin(leaf, &bytes, &size);
        fBytes.reset(bytes);
        fSize = bytes ? size : 0;
    }

    /// 0 when there is none.
    uint8_t type() const { return fSize > kBinaryVersion.size() ? byte(0) : 0; }
    /// The eight bytes after the type.
    uint64_t payload() const
    {
        uint64_t value = 0;
        for (size_t i = 1; i <= 8 && kBinaryVersion.size() + i < fSize; ++i)
            value = value << 8 | byte(i);
        return value;
    }

private:
    uint8_t byte(size_t i) const { return static_cast<uint8_t>(fBytes.get()[kBinaryVersion.size() + i]); }

    MallocOwned<char> fBytes;
    size_t fSize = 0;
};

/// The keys met so far. Records of the same shape repeat theirs, so each text becomes one object only, and
/// the key that followed another the last time is the first guess the next time: that spares copying and
/// hashing nearly every text.
class Keys {
public:
    struct Key {
        const char* text = "";
        cf::Owned<CFStringRef> string;
        Key* next = nullptr;
    };

    /// Where every dictionary begins.
    Key* start() { return &fStart; }

    /// @param node a key. @param previous the one before it in its dictionary.
    /// @return null for text that is not UTF-8.
    Key* find(plist_t node, Key* previous)
    {
        if (previous->next && plist_key_val_compare(node, previous->next->text) == 0)
            return previous->next;
        char* text = nullptr;
        plist_get_key_val(node, &text);
        const MallocOwned<char> owned(text);
        Key* key = text ? find(text) : nullptr;
        previous->next = key;
        return key;
    }

private:
    Key* find(const char* text)
    {
        const auto [entry, isNew] = fKeys.try_emplace(text);
        Key& key = entry->second;
        if (isNew) {
            key.text = entry->first.c_str();
            key.string.reset(cf::MakeString(text));
        }
        return key.string ? &key : nullptr;
    }

    Key fStart;
    std::unordered_map<std::string, Key> fKeys;
};

/// Turns libplist's nodes into objects, in one pass. The first fault stops it.
class Reader {
public:
    Reader(CFOptionFlags options, const PropertyListCheck& check)
        : fMaker(options)
        , fHasWideIntegers(check.hasWideIntegers)
        , fHasWideDates(check.hasWideDates)
    {
    }

    /// @return null for text that is not UTF-8 and nodes that have no counterpart.
    CFPropertyListRef read(plist_t root) { return add(root) ? fMaker.take() : nullptr; }

private:
    bool add(plist_t node)
    {
        switch (plist_get_node_type(node)) {
        case PLIST_STRING:
            return addString(node);
        case PLIST_DICT:
            return addDictionary(node);
        case PLIST_ARRAY:
            return addArray(node);
        case PLIST_UINT:
            return addInteger(node);
        case PLIST_BOOLEAN:
            return addBoolean(node);
        case PLIST_REAL:
            return addReal(node);
        case PLIST_DATA:
            return addData(node);
        case PLIST_DATE:
            return addDate(node);
        case PLIST_UID:
            return addUID(node);
        default:
            return false;
        }
    }

    bool addString(plist_t node)
    {
        uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        return text && fMaker.addString(cf::MakeString({ text, length }));
    }

    bool addArray(plist_t node)
    {
        const PropertyListMaker::Start start = fMaker.start();
        plist_array_iter rawIterator = nullptr;
        plist_array_new_iter(node, &rawIterator);
        const MallocOwned<void> iterator(rawIterator);
        for (uint32_t left = plist_array_get_size(node); left > 0; --left) {
            plist_t item = nullptr;
            plist_array_next_item(node, iterator.get(), &item);
            if (!item || !add(item))
                return false;
        }
        return fMaker.finishArray(start);
    }

    bool addDictionary(plist_t node)
    {
        const PropertyListMaker::Start start = fMaker.start();
        plist_dict_iter rawIterator = nullptr;
        plist_dict_new_iter(node, &rawIterator);
        const MallocOwned<void> iterator(rawIterator);
        Keys::Key* key = fKeys.start();
        for (uint32_t left = plist_dict_get_size(node); left > 0; --left) {
            plist_t item = nullptr;
            plist_dict_next_item(node, iterator.get(), nullptr, &item);
            key = item ? fKeys.find(plist_dict_item_get_key(item), key) : nullptr;
            if (!key)
                return false;
            fMaker.addKey(cf::Retained(CFStringRef { key->string.get() }));
            if (!add(item))
                return false;
        }
        return fMaker.finishDictionary(start);
    }

    bool addInteger(plist_t node)
    {
        uint64_t bits = 0;
        plist_get_uint_val(node, &bits);
        // Negative integers come as their two's complement; only the written form tells them from large ones,
        // which take 16 bytes.
        constexpr uint8_t wideIntegerType = 0x14;
        if (fHasWideIntegers && static_cast<int64_t>(bits) < 0
            && BinaryLeaf(node).type() == wideIntegerType) {
            const auto nearest = static_cast<double>(bits);
            return fMaker.add(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &nearest));
        }
        return fMaker.add(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &bits));
    }

    bool addReal(plist_t node)
    {
        double value = 0;
        plist_get_real_val(node, &value);
        return fMaker.add(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &value));
    }

    bool addBoolean(plist_t node)
    {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return fMaker.add(CFRetain(value ? kCFBooleanTrue : kCFBooleanFalse));
    }

    bool addData(plist_t node)
    {
        uint64_t length = 0;
        const char* bytes = plist_get_data_ptr(node, &length);
        return fMaker.addData(CFDataCreate(
            kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes), static_cast<CFIndex>(length)));
    }

    bool addDate(plist_t node)
    {
        if (fHasWideDates)
            return addWideDate(node);
        int32_t seconds = 0;
        int32_t microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        return fMaker.add(CFDateCreate(kCFAllocatorDefault, seconds));
    }

    /// The accessor cuts a date to 32-bit seconds and microseconds.
    bool addWideDate(plist_t node)
    {
        const BinaryLeaf leaf(node);
        constexpr uint8_t dateType = 0x33;
        return leaf.type() == dateType
            && fMaker.add(CFDateCreate(kCFAllocatorDefault, std::bit_cast<double>(leaf.payload())));
    }

    /// A reference inside a keyed archive, in the form that the XML format has for it.
    bool addUID(plist_t node)
    {
        uint64_t value = 0;
        plist_get_uid_val(node, &value);
        const PropertyListMaker::Start start = fMaker.start();
        fMaker.addKey(CFSTR("CF$UID"));
        return fMaker.add(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value))
            && fMaker.finishDictionary(start);
    }

    PropertyListMaker fMaker;
    Keys fKeys;
    bool fHasWideIntegers;
    bool fHasWideDates;
};

PropertyListTree Parse(std::string_view document, CFPropertyListFormat format)
{
    const PointLocale locale;
    plist_t root = nullptr;
    const auto parse = format == kCFPropertyListBinaryFormat_v1_0 ? plist_from_bin : plist_from_xml;
    parse(document.data(), static_cast<uint32_t>(document.size()), &root);
    return PropertyListTree(root);
}

} // namespace

CFPropertyListRef CreatePropertyList(
    CFDataRef data, CFOptionFlags options, CFPropertyListFormat& format, const char*& fault)
{
    const std::string_view bytes(
        reinterpret_cast<const char*>(CFDataGetBytePtr(data)), static_cast<size_t>(CFDataGetLength(data)));
    const bool isBinary = bytes.starts_with(kBinaryMagic);
    format = isBinary ? kCFPropertyListBinaryFormat_v1_0 : kCFPropertyListXMLFormat_v1_0;
    fault = "The property list is too large.";
    if (bytes.size() > UINT32_MAX)
        return nullptr;
    const PropertyListCheck check = isBinary ? CheckBinaryPropertyList(bytes) : CheckXMLPropertyList(bytes);
    fault = check.fault;
    if (fault)
        return nullptr;
    const PropertyListTree tree = Parse(check.document, format);
    fault = "The property list is malformed.";
    return tree ? Reader(options, check).read(tree.get()) : nullptr;
}
