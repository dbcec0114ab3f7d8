#pragma once

#include <CoreFoundation/CFPropertyList.h>

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

#include <locale.h>

struct MallocFreer {
    void operator()(void* memory) const { std::free(memory); }
};
template <class T> using MallocOwned = std::unique_ptr<T, MallocFreer>;

struct PropertyListTreeFreer {
    void operator()(plist_t node) const { plist_free(node); }
};
/// A node of libplist with all that hangs on it.
using PropertyListTree = std::unique_ptr<void, PropertyListTreeFreer>;

/// While it lives, this thread reads and writes numbers with a point. libplist uses the C library's
/// conversions, and a toolkit may have set a locale with a comma.
class PointLocale {
public:
    PointLocale();
    ~PointLocale() { uselocale(fPrevious); }
    PointLocale(const PointLocale&) = delete;
    PointLocale& operator=(const PointLocale&) = delete;

private:
    locale_t fPrevious;
};

/// @param format receives the format found, also on failure.
/// @param fault receives on failure what is wrong, as static text. @return null on failure; else the caller
/// releases it.
CFPropertyListRef CreatePropertyList(
    CFDataRef data, CFOptionFlags options, CFPropertyListFormat& format, const char*& fault);

/// @param fault as above.
CFDataRef CreatePropertyListData(CFPropertyListRef plist, CFPropertyListFormat format, const char*& fault);

/// Does all of the above but the writing.
bool CanWritePropertyList(CFPropertyListRef plist, CFPropertyListFormat format);
