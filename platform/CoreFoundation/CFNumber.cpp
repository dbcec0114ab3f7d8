#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/Runtime.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

struct __CFBoolean : cf::Object {
    constexpr explicit __CFBoolean(bool isTrue)
        : Object(cf::kBooleanType, cf::Lifetime::Forever)
        , value(isTrue)
    {
    }
    static CFTypeID typeID() { return cf::kBooleanType; }

    CFHashCode hash() const override { return value ? 1 : 0; }
    CFStringRef copyDescription() const override { return cf::MakeString(value ? "true" : "false"); }
    CFStringRef copyFormattedText() const override { return cf::MakeString(value ? "1" : "0"); }

    bool value;
};

struct __CFNumber : cf::Object {
    __CFNumber(CFNumberType numberType, int64_t value)
        : Object(cf::kNumberType)
        , type(numberType)
        , integer(value)
    {
    }
    constexpr __CFNumber(CFNumberType numberType, double value, cf::Lifetime lifetime = cf::Lifetime::Counted)
        : Object(cf::kNumberType, lifetime)
        , type(numberType)
        , real(value)
    {
    }
    static CFTypeID typeID() { return cf::kNumberType; }

    bool isReal() const { return type == kCFNumberFloat32Type || type == kCFNumberFloat64Type; }

    bool isEqual(const Object& other) const override
    {
        return CFNumberCompare(this, static_cast<const __CFNumber*>(&other), nullptr) == kCFCompareEqualTo;
    }
    CFHashCode hash() const override;
    CFStringRef copyDescription() const override;

    CFNumberType type; ///< one of the first six
    union {
        int64_t integer;
        double real;
    };
};

namespace {

/// The smallest and, exclusively, the largest double that an int64_t can hold.
constexpr double kInt64Start = -0x1p63;
constexpr double kInt64End = 0x1p63;

bool IsInInt64(double value) { return value >= kInt64Start && value < kInt64End; }

/// Each type's plain form: the one of the first six with the same C type; 0 for what is no type.
CFNumberType Plain(CFNumberType type)
{
    constexpr std::array<CFNumberType, kCFNumberMaxType + 1> plain = { CFNumberType {}, kCFNumberSInt8Type,
        kCFNumberSInt16Type, kCFNumberSInt32Type, kCFNumberSInt64Type, kCFNumberFloat32Type,
        kCFNumberFloat64Type, kCFNumberSInt8Type, kCFNumberSInt16Type, kCFNumberSInt32Type,
        kCFNumberSInt64Type, kCFNumberSInt64Type, kCFNumberFloat32Type, kCFNumberFloat64Type,
        kCFNumberSInt64Type, kCFNumberSInt64Type, kCFNumberFloat64Type };
    return type > 0 && type <= kCFNumberMaxType ? plain.at(static_cast<size_t>(type)) : CFNumberType {};
}

template <class Value> Value Load(const void* from)
{
    Value value {};
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// Stores the nearest value that Target can hold. @return whether it is the value itself.
template <class Target> bool StoreInteger(const __CFNumber& number, void* to)
{
    Target stored = 0;
    bool exact = false;
    if (number.isReal()) {
        using Limits = std::numeric_limits<Target>;
        const double whole = std::trunc(number.real);
        if (std::isnan(whole))
            stored = 0;
        else if (whole < static_cast<double>(Limits::min()))
            stored = Limits::min();
        else if (whole
            >= -static_cast<double>(Limits::min())) // one past the largest value, as a double knows it
            stored = Limits::max();
        else {
            stored = static_cast<Target>(whole);
            exact = whole == number.real;
        }
    } else {
        stored = static_cast<Target>(number.integer);
        exact = stored == number.integer;
    }
    std::memcpy(to, &stored, sizeof stored);
    return exact;
}

template <class Target> bool StoreReal(const __CFNumber& number, void* to)
{
    bool exact = true;
    Target stored = 0;
    if (number.isReal()) {
        stored = static_cast<Target>(number.real);
        exact = std::isnan(number.real) || static_cast<double>(stored) == number.real;
    } else {
        stored = static_cast<Target>(number.integer);
        const auto back = static_cast<double>(stored);
        exact = IsInInt64(back) && static_cast<int64_t>(back) == number.integer;
    }
    std::memcpy(to, &stored, sizeof stored);
    return exact;
}

int Order(auto first, auto second) { return first < second ? -1 : first > second ? 1 : 0; }

/// Compares without rounding the integer to a double.
int Order(int64_t integer, double real)
{
    if (std::isnan(real))
        return 1;
    if (!IsInInt64(real))
        return real < 0 ? 1 : -1;
    const double whole = std::floor(real);
    const int order = Order(integer, static_cast<int64_t>(whole));
    return order == 0 && whole < real ? -1 : order;
}

int OrderReals(double first, double second)
{
    if (std::isnan(first) || std::isnan(second))
        return Order(!std::isnan(first), !std::isnan(second));
    return Order(first, second);
}

int Order(const __CFNumber& first, const __CFNumber& second)
{
    if (first.isReal() && second.isReal())
        return OrderReals(first.real, second.real);
    if (first.isReal())
        return -Order(second.integer, first.real);
    return second.isReal() ? Order(first.integer, second.real) : Order(first.integer, second.integer);
}

/// The fewest digits that read back as the value, with an exponent only where zeros would be many.
template <class Real> CFStringRef CreateShortest(Real value)
{
    const Real size = std::abs(value);
    const bool isPlain = size == 0 || (size >= Real(1e-4) && size < Real(1e17));
    std::array<char, 64> text {};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
        isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    return cf::MakeString(std::string_view(text.data(), end.ptr));
}

constinit cf::Constant<__CFBoolean> theTrue(true);
constinit cf::Constant<__CFBoolean> theFalse(false);
constinit cf::Constant<__CFNumber> theInfinity(
    kCFNumberFloat64Type, std::numeric_limits<double>::infinity(), cf::Lifetime::Forever);
constinit cf::Constant<__CFNumber> theNegativeInfinity(
    kCFNumberFloat64Type, -std::numeric_limits<double>::infinity(), cf::Lifetime::Forever);
constinit cf::Constant<__CFNumber> theNaN(
    kCFNumberFloat64Type, std::numeric_limits<double>::quiet_NaN(), cf::Lifetime::Forever);

}

CFHashCode __CFNumber::hash() const
{
    // Equal numbers hash alike whatever their types, so whole ones hash as integers.
    if (!isReal())
        return std::hash<int64_t>()(integer);
    if (std::isnan(real))
        return 0;
    return IsInInt64(real) && std::trunc(real) == real ? std::hash<int64_t>()(static_cast<int64_t>(real))
                                                       : std::hash<double>()(real);
}

CFStringRef __CFNumber::copyDescription() const
{
    if (!isReal())
        return cf::MakeString(std::to_string(integer));
    return type == kCFNumberFloat32Type ? CreateShortest(static_cast<float>(real)) : CreateShortest(real);
}

const CFBooleanRef kCFBooleanTrue = &theTrue.object;
const CFBooleanRef kCFBooleanFalse = &theFalse.object;
const CFNumberRef kCFNumberPositiveInfinity = &theInfinity.object;
const CFNumberRef kCFNumberNegativeInfinity = &theNegativeInfinity.object;
const CFNumberRef kCFNumberNaN = &theNaN.object;

CFTypeID CFBooleanGetTypeID() { return cf::kBooleanType; }

Boolean CFBooleanGetValue(CFBooleanRef boolean) { return cf::Check(boolean, __func__).value; }

CFTypeID CFNumberGetTypeID() { return cf::kNumberType; }

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void* valuePtr)
{
    if (!valuePtr)
        return nullptr;
    const CFNumberType type = Plain(theType);
    switch (type) {
    case kCFNumberSInt8Type:
        return new __CFNumber(type, int64_t { Load<int8_t>(valuePtr) });
    case kCFNumberSInt16Type:
        return new __CFNumber(type, int64_t { Load<int16_t>(valuePtr) });
    case kCFNumberSInt32Type:
        return new __CFNumber(type, int64_t { Load<int32_t>(valuePtr) });
    case kCFNumberSInt64Type:
        return new __CFNumber(type, Load<int64_t>(valuePtr));
    case kCFNumberFloat32Type:
        return new __CFNumber(type, double { Load<float>(valuePtr) });
    case kCFNumberFloat64Type:
        return new __CFNumber(type, Load<double>(valuePtr));
    default:
        return nullptr;
    }
}

CFNumberType CFNumberGetType(CFNumberRef number) { return cf::Check(number, __func__).type; }

CFIndex CFNumberGetByteSize(CFNumberRef number)
{
    constexpr std::array<CFIndex, 7> sizes = { 0, 1, 2, 4, 8, 4, 8 };
    return sizes.at(static_cast<size_t>(cf::Check(number, __func__).type));
}

Boolean CFNumberIsFloatType(CFNumberRef number) { return cf::Check(number, __func__).isReal(); }

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr)
{
    const __CFNumber& value = cf::Check(number, __func__);
    if (!valuePtr)
        cf::Fail(__func__, "called with null");
    switch (Plain(theType)) {
    case kCFNumberSInt8Type:
        return StoreInteger<int8_t>(value, valuePtr);
    case kCFNumberSInt16Type:
        return StoreInteger<int16_t>(value, valuePtr);
    case kCFNumberSInt32Type:
        return StoreInteger<int32_t>(value, valuePtr);
    case kCFNumberSInt64Type:
        return StoreInteger<int64_t>(value, valuePtr);
    case kCFNumberFloat32Type:
        return StoreReal<float>(value, valuePtr);
    case kCFNumberFloat64Type:
        return StoreReal<double>(value, valuePtr);
    default:
        return false;
    }
}

CFComparisonResult CFNumberCompare(CFNumberRef number, CFNumberRef otherNumber, void*)
{
    const int order = Order(cf::Check(number, __func__), cf::Check(otherNumber, __func__));
    return static_cast<CFComparisonResult>(order);
}
