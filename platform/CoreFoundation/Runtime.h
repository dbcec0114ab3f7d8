#pragma once

#include <CoreFoundation/CFBase.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

// The object model behind the public references. Each opaque struct is a class derived from cf::Object alone,
// so that a reference and the pointer to its Object are the same address:
//
//     struct __CFThing : cf::Object {
//         __CFThing() : Object(typeID()) {}
//         static CFTypeID typeID() { static const CFTypeID id = cf::RegisterType("CFThing"); return id; }
//     };

namespace cf {

/// The classes of the value layer. Their numbers are fixed, so that constants need no code to run before
/// main.
enum : CFTypeID {
    kNullType = 1,
    kAllocatorType,
    kBooleanType,
    kNumberType,
    kStringType,
    kDataType,
    kDateType,
    kUUIDType,
    kArrayType,
    kDictionaryType,
    kURLType,
    kErrorType,
    kFirstRegisteredType
};

/// Gives a further class its number. Call it once per class. @param name a literal, such as "CFBundle".
CFTypeID RegisterType(const char* name);

enum class Lifetime { Counted, Forever };

class Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    CFTypeID type() const { return fType; }

    void retain() const
    {
        if (fCount.load(std::memory_order_relaxed) < kImmortal)
            fCount.fetch_add(1, std::memory_order_relaxed);
    }
    void release() const;
    CFIndex retainCount() const { return fCount.load(std::memory_order_relaxed); }

    /// From here on the object is neither counted nor destroyed. Only while no other thread knows it.
    void makeForever() { fCount.store(kImmortal, std::memory_order_relaxed); }

    /// @param other another object of the same type.
    virtual bool isEqual(const Object& other) const { return this == &other; }
    virtual CFHashCode hash() const { return reinterpret_cast<CFHashCode>(this) >> 4; }
    /// For debugging; the caller releases it. Says class and address unless overridden.
    virtual CFStringRef copyDescription() const;
    /// What %@ shows; the caller releases it. The description unless overridden.
    virtual CFStringRef copyFormattedText() const { return copyDescription(); }

protected:
    constexpr explicit Object(CFTypeID type, Lifetime lifetime = Lifetime::Counted)
        : fCount(lifetime == Lifetime::Forever ? kImmortal : 1)
        , fType(static_cast<uint32_t>(type))
    {
    }
    virtual ~Object() = default;

private:
    void destroy() const;

    static constexpr int32_t kImmortal = INT32_MAX / 2;

    mutable std::atomic<int32_t> fCount;
    uint32_t fType;
};

/// Room for a constant object that exists before code runs and is never destroyed. T's constructor is
/// constexpr and makes it Lifetime::Forever.
template <class T> union Constant {
    template <class... Args>
    constexpr explicit Constant(Args... args)
        : object(args...)
    {
    }
    Constant(const Constant&) = delete;
    Constant& operator=(const Constant&) = delete;
    ~Constant() { } // NOLINT(modernize-use-equals-default): a defaulted one would be deleted

    T object;
};

/// Ends the program for a fault of its own: writes "function: problem" to standard error and aborts.
[[noreturn]] void Fail(const char* function, const char* problem);

/// @param ref may be null. @return null when ref is null or of another class than T.
template <class T> const T* As(CFTypeRef ref)
{
    const auto* object = static_cast<const Object*>(ref);
    return object && object->type() == T::typeID() ? static_cast<const T*>(object) : nullptr;
}

/// The object itself; a fault when it is null or of another class. @param function the public function, for
/// the message.
template <class T> T& Check(T* ref, const char* function)
{
    if (!As<std::remove_const_t<T>>(ref))
        Fail(function, "needs an object of its own type");
    return *ref;
}

/// A fault unless the range lies within `length`.
void CheckRange(CFRange range, CFIndex length, const char* function);
inline void CheckIndex(CFIndex index, CFIndex count, const char* function)
{
    if (index < 0 || index >= count)
        Fail(function, "index out of bounds");
}

struct Releaser {
    void operator()(CFTypeRef ref) const { CFRelease(ref); }
};
/// Holds what a Create or Copy function answered: Owned<CFStringRef> text(CFStringCreate…).
template <class Ref> using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Releaser>;

/// @param ref may be null. @return ref, retained.
template <class Ref> Ref Retained(Ref ref)
{
    if (ref)
        CFRetain(ref);
    return ref;
}

/// What `build` answers, or null when memory is too short for it. For sizes that come from outside.
template <class Build> auto NullWithoutMemory(Build build) noexcept -> decltype(build())
{
    try {
        return build();
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const std::length_error&) {
        return nullptr;
    }
}

/// A new string, which the caller releases; null when the bytes are not UTF-8.
CFStringRef MakeString(std::string_view utf8) CF_RETURNS_RETAINED;
/// The string in UTF-8, without regard to what C makes of null characters. @param ok receives false when
/// there is no UTF-8 form (a surrogate stands alone); the answer is then "". May be null.
std::string Utf8(CFStringRef string, bool* ok = nullptr);
/// @param value may be null or of another class. @return the string in UTF-8; "" where it is none.
std::string TextOf(CFTypeRef value);

}
