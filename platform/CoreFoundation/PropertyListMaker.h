#pragma once

#include <CoreFoundation/CFPropertyList.h>

#include <cstddef>
#include <vector>

/// Builds a property list from its leaves upward, with the mutability that was asked for. What has been added
/// and not been taken is released at the end, so that a caller that meets a fault half-way just leaves.
class PropertyListMaker {
public:
    /// @param options one of CFPropertyListMutabilityOptions.
    explicit PropertyListMaker(CFOptionFlags options)
        : fOptions(options)
    {
    }
    ~PropertyListMaker();
    PropertyListMaker(const PropertyListMaker&) = delete;
    PropertyListMaker& operator=(const PropertyListMaker&) = delete;

    bool mutableLeaves() const { return fOptions == kCFPropertyListMutableContainersAndLeaves; }

    /// Takes over the caller's reference. @return false when it is null.
    bool add(CFTypeRef value);
    /// The same for a string and for data, which become mutable where that was asked for.
    bool addString(CFStringRef string);
    bool addData(CFDataRef data);
    /// The key of the value that is added next. Takes over the caller's reference, which is not null.
    void addKey(CFStringRef key) { fKeys.push_back(key); }

    /// Where the container that begins now has its first key and value.
    struct Start {
        size_t key;
        size_t value;
    };
    Start start() const { return { fKeys.size(), fValues.size() }; }
    /// Replaces all values added since `start` by one array of them.
    bool finishArray(Start start);
    /// Replaces all keys and values added since `start`, as many of each, by one dictionary; of equal keys
    /// the last counts.
    bool finishDictionary(Start start);

    /// The one value left; the caller releases it.
    CFTypeRef take();

private:
    bool replace(Start start, CFTypeRef container);

    CFOptionFlags fOptions;
    std::vector<const void*> fKeys;
    std::vector<const void*> fValues;
};
