#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <utility>

/// Owns one reference to a CoreFoundation object and releases it at the end of its scope. Made from the
/// result of a Create or Copy function; an object that is only borrowed is adopted with Retained().
template <class Ref> class CFRef {
public:
    CFRef() = default;
    explicit CFRef(Ref owned)
        : fRef(owned)
    {
    }
    CFRef(const CFRef& other)
        : fRef(other.fRef)
    {
        if (fRef != nullptr)
            CFRetain(fRef);
    }
    CFRef(CFRef&& other) noexcept
        : fRef(std::exchange(other.fRef, nullptr))
    {
    }
    CFRef& operator=(CFRef other) noexcept
    {
        std::swap(fRef, other.fRef);
        return *this;
    }
    ~CFRef()
    {
        if (fRef != nullptr)
            CFRelease(fRef);
    }

    /// A second owner of an object that somebody else owns; null stays null.
    static CFRef Retained(Ref borrowed)
    {
        if (borrowed != nullptr)
            CFRetain(borrowed);
        return CFRef(borrowed);
    }

    /// The object, borrowed; null when there is none.
    Ref get() const { return fRef; }
    explicit operator bool() const { return fRef != nullptr; }
    /// Hands the reference to the caller, who then has to release it.
    [[nodiscard]] Ref release() { return std::exchange(fRef, nullptr); }

private:
    Ref fRef = nullptr;
};

/// `object` as the type that the caller expects, or null when it is null or of another type. Borrowed.
/// @param typeID what the type's …GetTypeID function answers.
template <class Ref> Ref CFDynamicCast(CFTypeRef object, CFTypeID typeID)
{
    return object != nullptr && CFGetTypeID(object) == typeID ? static_cast<Ref>(object) : nullptr;
}
