#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Collections.h>

#include <algorithm>
#include <vector>

struct __CFArray : cf::Object {
    __CFArray(const CFArrayCallBacks* arrayCallBacks, bool canChange)
        : Object(cf::kArrayType)
        , callBacks(cf::Shared(arrayCallBacks, kCFTypeArrayCallBacks))
        , isMutable(canChange)
    {
    }
    ~__CFArray() override
    {
        for (const void* value : values)
            cf::Drop(callBacks, value);
    }
    static CFTypeID typeID() { return cf::kArrayType; }

    CFIndex count() const { return static_cast<CFIndex>(values.size()); }
    const void*& at(CFIndex index) { return values[static_cast<size_t>(index)]; }

    bool isEqual(const Object& other) const override
    {
        const auto& array = static_cast<const __CFArray&>(other);
        return callBacks.equal == array.callBacks.equal
            && std::ranges::equal(values, array.values,
                [&](const void* first, const void* second) { return cf::Same(callBacks, first, second); });
    }
    CFHashCode hash() const override { return values.size(); }
    CFStringRef copyDescription() const override
    {
        const cf::Owned<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
        CFStringAppend(text.get(), CFSTR("("));
        for (const void* value : values) {
            const cf::Owned<CFStringRef> shown(cf::Described(callBacks, value));
            CFStringAppendFormat(text.get(), nullptr, CFSTR("\n    %@,"), shown.get());
        }
        CFStringAppend(text.get(), CFSTR("\n)"));
        return CFStringCreateCopy(nullptr, text.get());
    }

    std::vector<const void*> values;
    const CFArrayCallBacks& callBacks;
    bool isMutable;
};

const CFArrayCallBacks kCFTypeArrayCallBacks
    = { 0, cf::RetainValue, cf::ReleaseValue, CFCopyDescription, CFEqual };

namespace {

__CFArray& CheckMutable(CFMutableArrayRef array, const char* function)
{
    if (!cf::Check(array, function).isMutable)
        cf::Fail(function, "cannot change an immutable array");
    return *array;
}

/// The values of the range, for searching and visiting.
std::span<const void* const> Values(CFArrayRef array, CFRange range, const char* function)
{
    const __CFArray& checked = cf::Check(array, function);
    cf::CheckRange(range, checked.count(), function);
    return std::span(checked.values)
        .subspan(static_cast<size_t>(range.location), static_cast<size_t>(range.length));
}

auto IsSameAs(CFArrayRef array, const void* value)
{
    return [array, value](const void* other) { return cf::Same(array->callBacks, value, other); };
}

__CFArray* Create(std::span<const void* const> values, const CFArrayCallBacks* callBacks, bool isMutable)
{
    auto* array = new __CFArray(callBacks, isMutable);
    array->values.reserve(values.size());
    for (const void* value : values)
        array->values.push_back(cf::Kept(array->callBacks, value));
    return array;
}

void CheckCapacity(CFIndex capacity, const char* function)
{
    if (capacity < 0)
        cf::Fail(function, "negative capacity");
}

}

CFTypeID CFArrayGetTypeID() { return cf::kArrayType; }

CFArrayRef CFArrayCreate(
    CFAllocatorRef, const void** values, CFIndex numValues, const CFArrayCallBacks* callBacks)
{
    if (numValues < 0 || (numValues > 0 && !values))
        return nullptr;
    return Create({ values, static_cast<size_t>(numValues) }, callBacks, false);
}

CFArrayRef CFArrayCreateCopy(CFAllocatorRef, CFArrayRef theArray)
{
    const __CFArray& array = cf::Check(theArray, __func__);
    return array.isMutable ? Create(array.values, &array.callBacks, false) : cf::Retained(theArray);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex capacity, const CFArrayCallBacks* callBacks)
{
    CheckCapacity(capacity, __func__);
    return Create({}, callBacks, true);
}

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef, CFIndex capacity, CFArrayRef theArray)
{
    CheckCapacity(capacity, __func__);
    const __CFArray& array = cf::Check(theArray, __func__);
    return Create(array.values, &array.callBacks, true);
}

CFIndex CFArrayGetCount(CFArrayRef theArray) { return cf::Check(theArray, __func__).count(); }

const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx)
{
    const __CFArray& array = cf::Check(theArray, __func__);
    cf::CheckIndex(idx, array.count(), __func__);
    return array.values[static_cast<size_t>(idx)];
}

void CFArrayGetValues(CFArrayRef theArray, CFRange range, const void** values)
{
    std::ranges::copy(Values(theArray, range, __func__), values);
}

CFIndex CFArrayGetCountOfValue(CFArrayRef theArray, CFRange range, const void* value)
{
    return std::ranges::count_if(Values(theArray, range, __func__), IsSameAs(theArray, value));
}

Boolean CFArrayContainsValue(CFArrayRef theArray, CFRange range, const void* value)
{
    return CFArrayGetFirstIndexOfValue(theArray, range, value) != kCFNotFound;
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef theArray, CFRange range, const void* value)
{
    const auto values = Values(theArray, range, __func__);
    const auto found = std::ranges::find_if(values, IsSameAs(theArray, value));
    return found == values.end() ? CFIndex { kCFNotFound } : range.location + (found - values.begin());
}

CFIndex CFArrayGetLastIndexOfValue(CFArrayRef theArray, CFRange range, const void* value)
{
    const auto values = Values(theArray, range, __func__);
    const auto found = std::find_if(values.rbegin(), values.rend(), IsSameAs(theArray, value));
    return found == values.rend() ? CFIndex { kCFNotFound } : range.location + (values.rend() - found) - 1;
}

void CFArrayApplyFunction(CFArrayRef theArray, CFRange range, CFArrayApplierFunction applier, void* context)
{
    for (const void* value : Values(theArray, range, __func__))
        applier(value, context);
}

void CFArrayAppendValue(CFMutableArrayRef theArray, const void* value)
{
    __CFArray& array = CheckMutable(theArray, __func__);
    array.values.push_back(cf::Kept(array.callBacks, value));
}

void CFArrayInsertValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void* value)
{
    __CFArray& array = CheckMutable(theArray, __func__);
    cf::CheckIndex(idx, array.count() + 1, __func__);
    array.values.insert(array.values.begin() + idx, cf::Kept(array.callBacks, value));
}

void CFArraySetValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void* value)
{
    __CFArray& array = CheckMutable(theArray, __func__);
    cf::CheckIndex(idx, array.count() + 1, __func__);
    if (idx == array.count())
        return CFArrayAppendValue(theArray, value);
    // The old value goes last: it may be the new one's only owner.
    const void* old = std::exchange(array.at(idx), cf::Kept(array.callBacks, value));
    cf::Drop(array.callBacks, old);
}

void CFArrayRemoveValueAtIndex(CFMutableArrayRef theArray, CFIndex idx)
{
    __CFArray& array = CheckMutable(theArray, __func__);
    cf::CheckIndex(idx, array.count(), __func__);
    const void* old = array.at(idx);
    array.values.erase(array.values.begin() + idx);
    cf::Drop(array.callBacks, old);
}

void CFArrayRemoveAllValues(CFMutableArrayRef theArray)
{
    __CFArray& array = CheckMutable(theArray, __func__);
    // Emptied first, since letting a value go may run code that looks at the array.
    for (const void* value : std::exchange(array.values, {}))
        cf::Drop(array.callBacks, value);
}

void CFArrayExchangeValuesAtIndices(CFMutableArrayRef theArray, CFIndex idx1, CFIndex idx2)
{
    __CFArray& array = CheckMutable(theArray, __func__);
    cf::CheckIndex(idx1, array.count(), __func__);
    cf::CheckIndex(idx2, array.count(), __func__);
    std::swap(array.at(idx1), array.at(idx2));
}

void CFArrayAppendArray(CFMutableArrayRef theArray, CFArrayRef otherArray, CFRange otherRange)
{
    const auto others = Values(otherArray, otherRange, __func__);
    // A copy of the pointers, for an array that is appended to itself.
    for (const void* value : std::vector(others.begin(), others.end()))
        CFArrayAppendValue(theArray, value);
}

void CFArraySortValues(
    CFMutableArrayRef theArray, CFRange range, CFComparatorFunction comparator, void* context)
{
    __CFArray& array = CheckMutable(theArray, __func__);
    cf::CheckRange(range, array.count(), __func__);
    const auto start = array.values.begin() + range.location;
    std::stable_sort(start, start + range.length, [&](const void* first, const void* second) {
        return comparator(first, second, context) == kCFCompareLessThan;
    });
}
