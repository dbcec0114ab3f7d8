#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>
#include <CoreFoundation/Text.h>

#include <vector>

struct __CFString : cf::Object {
    static constexpr CFIndex kImmutable = -1;

    /// @param lengthLimit kImmutable, or for a mutable string the most units it may hold, 0 for no limit.
    explicit __CFString(cf::Text content, CFIndex lengthLimit = kImmutable)
        : Object(cf::kStringType)
        , text(std::move(content))
        , limit(lengthLimit)
    {
    }

    static CFTypeID typeID() { return cf::kStringType; }
    bool isMutable() const { return limit != kImmutable; }
    CFIndex length() const { return static_cast<CFIndex>(text.length()); }

    bool isEqual(const Object& other) const override
    {
        return text == static_cast<const __CFString&>(other).text;
    }
    CFHashCode hash() const override { return text.hash(); }
    CFStringRef copyDescription() const override;
    CFStringRef copyFormattedText() const override;

    cf::Text text;
    CFIndex limit;
};

namespace cf {

inline CFStringRef CF_RETURNS_RETAINED MakeString(Text text) { return new __CFString(std::move(text)); }

/// The string, for a change; a fault when it is immutable.
__CFString& CheckMutable(CFMutableStringRef string, const char* function);
/// The places of `wanted` in the range, which lies within the text: in ascending order, none overlapping
/// another. An empty text is nowhere.
std::vector<size_t> FindAll(
    const Text& text, CFRange range, const Text& wanted, CFStringCompareFlags options);
/// Puts `replacement` in the place of units start … start+count; a fault when that grows past the limit.
void Replace(__CFString& string, size_t start, size_t count, const Text& replacement, const char* function);

}
