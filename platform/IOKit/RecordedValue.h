#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/PropertyListMaker.h>
#include <CoreFoundation/Runtime.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace iokit {

/// The bytes with U+FFFD for what is not UTF-8, and for characters that are not fit.
/// @param isFit asked about each character of the UTF-8.
std::string Repaired(std::string_view bytes, bool (*isFit)(int32_t character));

/// A text of a recording; never null.
cf::Owned<CFStringRef> RecordedString(std::string_view bytes);
/// A number in the form that all of a registry's have.
cf::Owned<CFTypeRef> RecordedNumber(uint64_t bits);
cf::Owned<CFTypeRef> RecordedData(std::string_view bytes);

/// The keys of a registry, few and each there many times: one object stands for all that are equal.
class Keys {
public:
    /// @return good as long as this object.
    CFStringRef key(std::string_view bytes);

private:
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    std::unordered_map<std::string, cf::Owned<CFStringRef>, Hash, std::equal_to<>> fKeys;
};

/// Puts a property's value together from what a reader meets in its order. Values may be nested to any depth; those nested
/// deeper than what a property list holds are left out.
class ValueMaker {
public:
    enum class Kind { Array, Dictionary };

    explicit ValueMaker(Keys& keys)
        : fKeys(keys)
    {
    }

    size_t depth() const { return fLevels.size(); }
    Kind kind() const { return fLevels.back().kind; } ///< of the innermost container, which has to be there

    /// The key of what comes next in the innermost dictionary.
    void setKey(std::string_view bytes) { fLevels.back().key = fKeys.key(bytes); }
    /// Adds a value to the innermost container. @param value null for one that cannot be read: its key is dropped.
    /// @return false where something is lost by this.
    bool add(cf::Owned<CFTypeRef> value);
    /// Begins a container in the innermost one. @return as above.
    bool begin(Kind kind);
    void end();
    /// Ends all containers. @return the value; null where there was none.
    cf::Owned<CFTypeRef> take();

private:
    struct Level {
        Kind kind;
        bool isKept;
        CFStringRef key; ///< in a dictionary, null until it is set
        PropertyListMaker::Start start;
    };

    bool isKept() const { return fLevels.empty() || fLevels.back().isKept; }
    bool hasPlace() const;
    void addKey();

    Keys& fKeys;
    PropertyListMaker fMaker { kCFPropertyListImmutable };
    std::vector<Level> fLevels;
};

}
