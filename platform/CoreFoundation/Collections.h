#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>

#include <span>
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

inline const void* RetainValue(CFAllocatorRef, const void* value) { return CFRetain(value); }
inline void ReleaseValue(CFAllocatorRef, const void* value) { CFRelease(value); }

}
