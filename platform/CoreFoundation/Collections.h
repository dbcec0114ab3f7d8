#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>

#include <cstring>
#include <deque>
#include <mutex>
#include <span>
#include <type_traits>
#include <utility>

// What collections do with their values through the callbacks given, null members included. CallBacks is any
// of the public structures of callbacks.

namespace cf {

/// @return what the collection keeps of `value`.
template <class CallBacks> const void* Kept(const CallBacks& callBacks, const void* value)
{
    return callBacks.retain ? callBacks.retain(nullptr, value) : value;
}

template <class CallBacks> void Drop(const CallBacks& callBacks, const void* value)
{
    if (callBacks.release)
        callBacks.release(nullptr, value);
}

template <class CallBacks> bool Same(const CallBacks& callBacks, const void* first, const void* second)
{
    return first == second || (callBacks.equal && callBacks.equal(first, second));
}

/// The caller releases the answer.
template <class CallBacks> CFStringRef Described(const CallBacks& callBacks, const void* value)
{
    CFStringRef text = callBacks.copyDescription ? callBacks.copyDescription(value) : nullptr;
    return text ? text : CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<%p>"), value);
}

/// A copy of the callbacks that lasts for ever. All collections with the same ones share it, which keeps them
/// small.
/// @param given null for none. @param usual what nearly all collections have, which needs no copy.
template <class CallBacks> const CallBacks& Shared(const CallBacks* given, const CallBacks& usual)
{
    static_assert(std::has_unique_object_representations_v<CallBacks>, "compared by bytes");
    static constexpr CallBacks none {};
    static auto& mutex = *new std::mutex;
    static auto& others = *new std::deque<CallBacks>; // a program has few
    if (!given || given == &usual)
        return given ? usual : none;
    const std::lock_guard lock(mutex);
    for (const CallBacks& known : others) {
        if (std::memcmp(&known, given, sizeof known) == 0)
            return known;
    }
    return others.emplace_back(*given);
}

inline const void* RetainValue(CFAllocatorRef, const void* value) { return CFRetain(value); }
inline void ReleaseValue(CFAllocatorRef, const void* value) { CFRelease(value); }

}
