#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Collections.h>
#include <CoreFoundation/HashIndex.h>

#include <algorithm>
#include <vector>

namespace {

struct Entry {
    const void* key;
    const void* value;
    CFHashCode hash;
};

/// Up to here looking through the entries is as quick as an index, and costs nothing to make.
constexpr size_t kUnindexedCount = 8;

/// What the first entry makes room for: growing to this many one by one would take three allocations.
constexpr size_t kUsualCount = 4;

/// What becomes of the value of a key that is there already.
enum class Existing { Stays, Goes };

}

struct __CFDictionary : cf::Object {
    __CFDictionary(
        const CFDictionaryKeyCallBacks* forKeys, const CFDictionaryValueCallBacks* forValues, bool canChange)
        : Object(cf::kDictionaryType)
        , keyCallBacks(cf::Shared(forKeys, kCFTypeDictionaryKeyCallBacks))
        , valueCallBacks(cf::Shared(forValues, kCFTypeDictionaryValueCallBacks))
        , isMutable(canChange)
    {
    }
    ~__CFDictionary() override { drop(entries); }
    static CFTypeID typeID() { return cf::kDictionaryType; }

    CFHashCode hashOf(const void* key) const
    {
        return keyCallBacks.hash ? keyCallBacks.hash(key) : reinterpret_cast<CFHashCode>(key) >> 4;
    }

    /// @return the entry's place, or HashIndex::kNone.
    uint32_t find(const void* key, CFHashCode hash) const
    {
        const auto isKey = [&](uint32_t place) {
            return entries[place].hash == hash && cf::Same(keyCallBacks, entries[place].key, key);
        };
        if (entries.size() > kUnindexedCount)
            return index.find(hash, isKey);
        for (uint32_t place = 0; place < entries.size(); place++) {
            if (isKey(place))
                return place;
        }
        return cf::HashIndex::kNone;
    }
    const Entry* find(const void* key) const
    {
        const uint32_t place = find(key, hashOf(key));
        return place == cf::HashIndex::kNone ? nullptr : &entries[place];
    }
    Entry* find(const void* key) { return const_cast<Entry*>(std::as_const(*this).find(key)); }

    void append(const void* key, const void* value, CFHashCode hash);
    void set(const void* key, const void* value, Existing existing);
    void replace(Entry& entry, const void* value) const;
    void remove(const void* key);
    void drop(const std::vector<Entry>& dropped) const;

    bool isEqual(const Object& other) const override;
    CFHashCode hash() const override { return entries.size(); }
    CFStringRef copyDescription() const override;

    std::vector<Entry> entries;
    cf::HashIndex index; ///< made when there are more than kUnindexedCount
    const CFDictionaryKeyCallBacks& keyCallBacks;
    const CFDictionaryValueCallBacks& valueCallBacks;
    bool isMutable;
};

/// @param key absent so far. @param hash the key's.
void __CFDictionary::append(const void* key, const void* value, CFHashCode hash)
{
    if (entries.empty())
        entries.reserve(kUsualCount);
    entries.push_back({ cf::Kept(keyCallBacks, key), cf::Kept(valueCallBacks, value), hash });
    const auto count = static_cast<uint32_t>(entries.size());
    if (count <= kUnindexedCount)
        return;
    if (index.hasRoomFor(count))
        index.insert(hash, count - 1);
    else
        index.rebuild(count, [&](uint32_t place) { return entries[place].hash; });
}

void __CFDictionary::set(const void* key, const void* value, Existing existing)
{
    const CFHashCode hash = hashOf(key);
    const uint32_t place = find(key, hash);
    if (place == cf::HashIndex::kNone)
        append(key, value, hash);
    else if (existing == Existing::Goes)
        replace(entries[place], value);
}

/// The old value goes last: it may be the new one's only owner.
void __CFDictionary::replace(Entry& entry, const void* value) const
{
    const void* old = std::exchange(entry.value, cf::Kept(valueCallBacks, value));
    cf::Drop(valueCallBacks, old);
}

void __CFDictionary::remove(const void* key)
{
    const uint32_t place = find(key, hashOf(key));
    if (place == cf::HashIndex::kNone)
        return;
    const Entry removed = entries[place];
    const auto last = static_cast<uint32_t>(entries.size() - 1);
    if (entries.size() > kUnindexedCount) {
        index.erase(place, [&](uint32_t other) { return entries[other].hash; });
        if (place != last)
            index.move(entries[last].hash, last, place);
    }
    entries[place] = entries[last];
    entries.pop_back();
    if (entries.size() <= kUnindexedCount)
        index.clear();
    drop({ removed });
}

void __CFDictionary::drop(const std::vector<Entry>& dropped) const
{
    for (const Entry& entry : dropped) {
        cf::Drop(keyCallBacks, entry.key);
        cf::Drop(valueCallBacks, entry.value);
    }
}

bool __CFDictionary::isEqual(const Object& other) const
{
    const auto& dictionary = static_cast<const __CFDictionary&>(other);
    if (entries.size() != dictionary.entries.size() || keyCallBacks.equal != dictionary.keyCallBacks.equal
        || keyCallBacks.hash != dictionary.keyCallBacks.hash
        || valueCallBacks.equal != dictionary.valueCallBacks.equal)
        return false;
    return std::ranges::all_of(entries, [&](const Entry& entry) {
        const uint32_t place = dictionary.find(entry.key, entry.hash);
        return place != cf::HashIndex::kNone
            && cf::Same(valueCallBacks, entry.value, dictionary.entries[place].value);
    });
}

CFStringRef __CFDictionary::copyDescription() const
{
    const cf::Owned<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
    CFStringAppend(text.get(), CFSTR("{"));
    for (const Entry& entry : entries) {
        const cf::Owned<CFStringRef> key(cf::Described(keyCallBacks, entry.key));
        const cf::Owned<CFStringRef> value(cf::Described(valueCallBacks, entry.value));
        CFStringAppendFormat(text.get(), nullptr, CFSTR("\n    %@ = %@;"), key.get(), value.get());
    }
    CFStringAppend(text.get(), CFSTR("\n}"));
    return CFStringCreateCopy(nullptr, text.get());
}

namespace {

const void* CopyString(CFAllocatorRef allocator, const void* string)
{
    return CFStringCreateCopy(allocator, static_cast<CFStringRef>(string));
}

__CFDictionary& CheckMutable(CFMutableDictionaryRef dictionary, const char* function)
{
    if (!cf::Check(dictionary, function).isMutable)
        cf::Fail(function, "cannot change an immutable dictionary");
    return *dictionary;
}

CFMutableDictionaryRef Copy(CFDictionaryRef original, bool isMutable, const char* function)
{
    const __CFDictionary& source = cf::Check(original, function);
    auto* copy = new __CFDictionary(&source.keyCallBacks, &source.valueCallBacks, isMutable);
    copy->entries.reserve(source.entries.size());
    for (const Entry& entry : source.entries)
        copy->entries.push_back({ cf::Kept(source.keyCallBacks, entry.key),
            cf::Kept(source.valueCallBacks, entry.value), entry.hash });
    copy->index = source.index;
    return copy;
}

}

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks
    = { 0, cf::RetainValue, cf::ReleaseValue, CFCopyDescription, CFEqual, CFHash };
const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks
    = { 0, CopyString, cf::ReleaseValue, CFCopyDescription, CFEqual, CFHash };
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks
    = { 0, cf::RetainValue, cf::ReleaseValue, CFCopyDescription, CFEqual };

CFTypeID CFDictionaryGetTypeID() { return cf::kDictionaryType; }

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex numValues,
    const CFDictionaryKeyCallBacks* keyCallBacks, const CFDictionaryValueCallBacks* valueCallBacks)
{
    if (numValues < 0 || (numValues > 0 && (!keys || !values)))
        return nullptr;
    auto* dictionary = new __CFDictionary(keyCallBacks, valueCallBacks, false);
    dictionary->entries.reserve(static_cast<size_t>(numValues));
    for (CFIndex i = 0; i < numValues; i++)
        dictionary->set(keys[i], values[i], Existing::Stays);
    return dictionary;
}

CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef, CFDictionaryRef theDict)
{
    return cf::Check(theDict, __func__).isMutable ? Copy(theDict, false, __func__) : cf::Retained(theDict);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex capacity,
    const CFDictionaryKeyCallBacks* keyCallBacks, const CFDictionaryValueCallBacks* valueCallBacks)
{
    if (capacity < 0)
        cf::Fail(__func__, "negative capacity");
    return new __CFDictionary(keyCallBacks, valueCallBacks, true);
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(
    CFAllocatorRef, CFIndex capacity, CFDictionaryRef theDict)
{
    if (capacity < 0)
        cf::Fail(__func__, "negative capacity");
    return Copy(theDict, true, __func__);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict)
{
    return static_cast<CFIndex>(cf::Check(theDict, __func__).entries.size());
}

Boolean CFDictionaryContainsKey(CFDictionaryRef theDict, const void* key)
{
    return cf::Check(theDict, __func__).find(key) != nullptr;
}

Boolean CFDictionaryContainsValue(CFDictionaryRef theDict, const void* value)
{
    const __CFDictionary& dictionary = cf::Check(theDict, __func__);
    return std::ranges::any_of(dictionary.entries,
        [&](const Entry& entry) { return cf::Same(dictionary.valueCallBacks, entry.value, value); });
}

const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key)
{
    const Entry* entry = cf::Check(theDict, __func__).find(key);
    return entry ? entry->value : nullptr;
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef theDict, const void* key, const void** value)
{
    const Entry* entry = cf::Check(theDict, __func__).find(key);
    if (entry && value)
        *value = entry->value;
    return entry != nullptr;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values)
{
    const auto& entries = cf::Check(theDict, __func__).entries;
    if (keys)
        std::ranges::transform(entries, keys, &Entry::key);
    if (values)
        std::ranges::transform(entries, values, &Entry::value);
}

void CFDictionaryApplyFunction(CFDictionaryRef theDict, CFDictionaryApplierFunction applier, void* context)
{
    for (const Entry& entry : cf::Check(theDict, __func__).entries)
        applier(entry.key, entry.value, context);
}

void CFDictionaryAddValue(CFMutableDictionaryRef theDict, const void* key, const void* value)
{
    CheckMutable(theDict, __func__).set(key, value, Existing::Stays);
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value)
{
    CheckMutable(theDict, __func__).set(key, value, Existing::Goes);
}

void CFDictionaryReplaceValue(CFMutableDictionaryRef theDict, const void* key, const void* value)
{
    __CFDictionary& dictionary = CheckMutable(theDict, __func__);
    if (Entry* entry = dictionary.find(key))
        dictionary.replace(*entry, value);
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef theDict, const void* key)
{
    CheckMutable(theDict, __func__).remove(key);
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef theDict)
{
    __CFDictionary& dictionary = CheckMutable(theDict, __func__);
    // Emptied first, since letting a value go may run code that looks at the dictionary.
    dictionary.index.clear();
    dictionary.drop(std::exchange(dictionary.entries, {}));
}
