#include "settings/PropertyValue.h"

#include "util/CFText.h"

#include <cmath>
#include <string_view>

namespace {

std::optional<int64_t> WholePart(double value)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(value > -limit && value < limit))
        return std::nullopt;
    return static_cast<int64_t>(value);
}

std::optional<int64_t> WholeNumber(CFTypeRef object)
{
    const auto number = CFDynamicCast<CFNumberRef>(object, CFNumberGetTypeID());
    if (number == nullptr || CFNumberIsFloatType(number)) {
        const std::optional<double> value = DoubleValue(object);
        return value ? WholePart(*value) : std::nullopt;
    }
    int64_t value = 0;
    CFNumberGetValue(number, kCFNumberSInt64Type, &value);
    return value;
}

}

std::optional<bool> BooleanValue(CFTypeRef object)
{
    const std::string text = StdString(CFDynamicCast<CFStringRef>(object, CFStringGetTypeID()));
    const size_t first = text.find_first_not_of(" \t\n");
    if (first != std::string::npos && std::string_view("YyTt").find(text[first]) != std::string_view::npos)
        return true;
    const std::optional<double> value = DoubleValue(object);
    return value ? std::optional(*value != 0) : std::nullopt;
}

std::optional<uint32_t> UnsignedValue(CFTypeRef object)
{
    const std::optional<int64_t> value = WholeNumber(object);
    return value ? std::optional(static_cast<uint32_t>(*value)) : std::nullopt;
}

std::optional<double> DoubleValue(CFTypeRef object)
{
    if (const auto boolean = CFDynamicCast<CFBooleanRef>(object, CFBooleanGetTypeID()))
        return CFBooleanGetValue(boolean) ? 1 : 0;
    if (const auto text = CFDynamicCast<CFStringRef>(object, CFStringGetTypeID()))
        return CFStringGetDoubleValue(text);
    const auto number = CFDynamicCast<CFNumberRef>(object, CFNumberGetTypeID());
    if (number == nullptr)
        return std::nullopt;
    double value = 0;
    CFNumberGetValue(number, kCFNumberDoubleType, &value);
    return value;
}
