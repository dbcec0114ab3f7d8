#include <CoreFoundation/CFDateFormatter.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>

#include <array>
#include <string>
#include <unicode/ucal.h>
#include <unicode/udat.h>

struct __CFDateFormatter : cf::Object {
    explicit __CFDateFormatter(UDateFormat* opened)
        : Object(typeID())
        , format(opened)
    {
    }
    ~__CFDateFormatter() override { udat_close(format); }
    static CFTypeID typeID()
    {
        static const CFTypeID id = cf::RegisterType("CFDateFormatter");
        return id;
    }

    UDateFormat* const format;
};

namespace {

/// By the Mac's numbers.
constexpr std::array<UDateFormatStyle, 5> kStyles { UDAT_NONE, UDAT_SHORT, UDAT_MEDIUM, UDAT_LONG,
    UDAT_FULL };

bool IsStyle(CFDateFormatterStyle style) { return style >= 0 && static_cast<size_t>(style) < kStyles.size(); }

std::u16string Characters(CFStringRef string)
{
    const CFIndex length = CFStringGetLength(string);
    std::u16string text(static_cast<size_t>(length), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, length), reinterpret_cast<UniChar*>(text.data()));
    return text;
}

/// The time zone of the process as it is now; ICU's own default stays what it was at first. @return "" when unknown, which
/// means that default.
std::u16string TimeZone()
{
    std::u16string name(128, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = ucal_getHostTimeZone(name.data(), static_cast<int32_t>(name.size()), &status);
    name.resize(U_SUCCESS(status) ? static_cast<size_t>(length) : 0);
    return name;
}

}

CFTypeID CFDateFormatterGetTypeID() { return __CFDateFormatter::typeID(); }

CFDateFormatterRef CFDateFormatterCreate(
    CFAllocatorRef, CFLocaleRef locale, CFDateFormatterStyle dateStyle, CFDateFormatterStyle timeStyle)
{
    if (!IsStyle(dateStyle) || !IsStyle(timeStyle))
        return nullptr;
    const cf::Owned<CFLocaleRef> used(locale != nullptr ? cf::Retained(locale) : CFLocaleCopyCurrent());
    const std::string identifier = cf::Utf8(CFLocaleGetIdentifier(used.get()));
    const std::u16string zone = TimeZone();
    UErrorCode status = U_ZERO_ERROR;
    UDateFormat* const format = udat_open(kStyles[static_cast<size_t>(timeStyle)],
        kStyles[static_cast<size_t>(dateStyle)], identifier.c_str(), zone.empty() ? nullptr : zone.data(),
        static_cast<int32_t>(zone.size()), nullptr, 0, &status);
    return U_SUCCESS(status) ? new __CFDateFormatter(format) : nullptr;
}

void CFDateFormatterSetFormat(CFDateFormatterRef formatter, CFStringRef formatString)
{
    UDateFormat* const format = cf::Check(formatter, __func__).format;
    if (formatString == nullptr)
        return;
    const std::u16string pattern = Characters(formatString);
    udat_applyPattern(format, false, pattern.data(), static_cast<int32_t>(pattern.size()));
}

CFStringRef CFDateFormatterCreateStringWithDate(
    CFAllocatorRef allocator, CFDateFormatterRef formatter, CFDateRef date)
{
    return date != nullptr
        ? CFDateFormatterCreateStringWithAbsoluteTime(allocator, formatter, CFDateGetAbsoluteTime(date))
        : nullptr;
}

CFStringRef CFDateFormatterCreateStringWithAbsoluteTime(
    CFAllocatorRef, CFDateFormatterRef formatter, CFAbsoluteTime at)
{
    UDateFormat* const format = cf::Check(formatter, __func__).format;
    const UDate milliseconds = (at + kCFAbsoluteTimeIntervalSince1970) * 1000;
    std::u16string text(64, u'\0');
    for (;;) {
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length = udat_format(
            format, milliseconds, text.data(), static_cast<int32_t>(text.size()), nullptr, &status);
        const bool fits = status != U_BUFFER_OVERFLOW_ERROR;
        if (fits && U_FAILURE(status))
            return nullptr;
        text.resize(static_cast<size_t>(length));
        if (fits)
            return CFStringCreateWithCharacters(
                nullptr, reinterpret_cast<const UniChar*>(text.data()), static_cast<CFIndex>(text.size()));
    }
}
