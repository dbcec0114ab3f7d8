#include <CoreFoundation/CFLocale.h>
#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>

#include <cstdlib>
#include <string_view>

struct __CFLocale : cf::Object {
    explicit __CFLocale(CFStringRef name)
        : Object(typeID())
        , identifier(CFStringCreateCopy(nullptr, name))
    {
    }
    static CFTypeID typeID()
    {
        static const CFTypeID id = cf::RegisterType("CFLocale");
        return id;
    }

    bool isEqual(const Object& other) const override
    {
        return CFEqual(identifier.get(), static_cast<const __CFLocale&>(other).identifier.get());
    }
    CFHashCode hash() const override { return CFHash(identifier.get()); }
    CFStringRef copyDescription() const override
    {
        return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<CFLocale %@>"), identifier.get());
    }

    cf::Owned<CFStringRef> identifier;
};

namespace {

/// @return null where the user has chosen none.
cf::Owned<CFStringRef> ChosenIdentifier()
{
    CFPropertyListRef const chosen = CFPreferencesCopyValue(
        CFSTR("AppleLocale"), kCFPreferencesAnyApplication, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    cf::Owned<CFTypeRef> holder(chosen);
    if (chosen == nullptr || CFGetTypeID(chosen) != CFStringGetTypeID())
        return nullptr;
    return cf::Owned<CFStringRef>(static_cast<CFStringRef>(holder.release()));
}

/// The host's name for the locale of dates, without its encoding.
cf::Owned<CFStringRef> HostIdentifier()
{
    for (const char* variable : { "LC_ALL", "LC_TIME", "LANG" }) {
        const char* const value = std::getenv(variable);
        if (value == nullptr || *value == 0)
            continue;
        const std::string_view name(value);
        const std::string_view plain = name.substr(0, name.find_first_of(".@"));
        if (plain == "C" || plain == "POSIX")
            break;
        if (cf::Owned<CFStringRef> text { cf::MakeString(plain) })
            return text;
    }
    return cf::Owned<CFStringRef>(CFSTR("en_US_POSIX"));
}

}

CFTypeID CFLocaleGetTypeID() { return __CFLocale::typeID(); }

CFLocaleRef CFLocaleCreate(CFAllocatorRef, CFLocaleIdentifier localeIdentifier)
{
    return localeIdentifier != nullptr ? new __CFLocale(localeIdentifier) : nullptr;
}

CFLocaleRef CFLocaleCopyCurrent()
{
    const cf::Owned<CFStringRef> chosen = ChosenIdentifier();
    return new __CFLocale(chosen ? chosen.get() : HostIdentifier().get());
}

CFLocaleIdentifier CFLocaleGetIdentifier(CFLocaleRef locale)
{
    return cf::Check(locale, __func__).identifier.get();
}
