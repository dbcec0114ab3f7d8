#include <CoreFoundation/CoreFoundation.h>

#include "CoreFoundation/Runtime.h"

#include <cstdint>
#include <cstdlib>

namespace {

/// @return what comes back when the value is written and read again; null when the format cannot hold it.
cf::Owned<CFPropertyListRef> WrittenAndReadBack(CFPropertyListRef plist, CFPropertyListFormat format)
{
    const cf::Owned<CFDataRef> data(CFPropertyListCreateData(nullptr, plist, format, 0, nullptr));
    if (!data)
        return nullptr;
    cf::Owned<CFPropertyListRef> back(CFPropertyListCreateWithData(nullptr, data.get(), 0, nullptr, nullptr));
    if (!back)
        std::abort(); // what was written must be readable
    return back;
}

} // namespace

/// Any bytes give either a property list or an error, never both. What was read can be written in the binary
/// format and comes back as it was; XML may refuse text, and drops fractions of seconds and the sign of zero,
/// but then gives the same again.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const cf::Owned<CFDataRef> data(CFDataCreate(nullptr, bytes, static_cast<CFIndex>(size)));
    CFErrorRef rawError = nullptr;
    const cf::Owned<CFPropertyListRef> plist(CFPropertyListCreateWithData(
        nullptr, data.get(), kCFPropertyListMutableContainersAndLeaves, nullptr, &rawError));
    const cf::Owned<CFErrorRef> error(rawError);
    if (!plist != (error != nullptr))
        std::abort();
    if (!plist)
        return 0;
    const cf::Owned<CFPropertyListRef> copy(CFPropertyListCreateDeepCopy(nullptr, plist.get(), 0));
    const cf::Owned<CFPropertyListRef> binary
        = WrittenAndReadBack(plist.get(), kCFPropertyListBinaryFormat_v1_0);
    if (!copy || !binary || !CFEqual(copy.get(), plist.get()) || !CFEqual(binary.get(), plist.get()))
        std::abort();
    const cf::Owned<CFPropertyListRef> xml = WrittenAndReadBack(plist.get(), kCFPropertyListXMLFormat_v1_0);
    if (!xml)
        return 0;
    const cf::Owned<CFPropertyListRef> again = WrittenAndReadBack(xml.get(), kCFPropertyListXMLFormat_v1_0);
    if (!again || !CFEqual(again.get(), xml.get()))
        std::abort();
    return 0;
}
