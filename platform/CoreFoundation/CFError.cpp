#include <CoreFoundation/CFError.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>

#include <cstring>

struct __CFError : cf::Object {
    __CFError(CFErrorDomain errorDomain, CFIndex errorCode, CFDictionaryRef errorInfo)
        : Object(cf::kErrorType)
        , domain(CFStringCreateCopy(nullptr, errorDomain))
        , code(errorCode)
        , userInfo(errorInfo ? CFDictionaryCreateCopy(nullptr, errorInfo)
                             : CFDictionaryCreate(nullptr, nullptr, nullptr, 0,
                                 &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks))
    {
    }
    static CFTypeID typeID() { return cf::kErrorType; }

    bool isEqual(const Object& other) const override
    {
        const auto& error = static_cast<const __CFError&>(other);
        return code == error.code && CFEqual(domain.get(), error.domain.get())
            && CFEqual(userInfo.get(), error.userInfo.get());
    }
    CFHashCode hash() const override { return CFHash(domain.get()) + static_cast<CFHashCode>(code); }
    CFStringRef copyDescription() const override
    {
        return CFStringCreateWithFormat(
            nullptr, nullptr, CFSTR("<CFError %@ %ld>"), domain.get(), static_cast<long>(code));
    }

    cf::Owned<CFStringRef> domain;
    CFIndex code;
    cf::Owned<CFDictionaryRef> userInfo;
};

const CFErrorDomain kCFErrorDomainPOSIX = CFSTR("NSPOSIXErrorDomain");
const CFErrorDomain kCFErrorDomainOSStatus = CFSTR("NSOSStatusErrorDomain");
const CFErrorDomain kCFErrorDomainCocoa = CFSTR("NSCocoaErrorDomain");
const CFStringRef kCFErrorLocalizedDescriptionKey = CFSTR("NSLocalizedDescription");

CFTypeID CFErrorGetTypeID() { return cf::kErrorType; }

CFErrorRef CFErrorCreate(CFAllocatorRef, CFErrorDomain domain, CFIndex code, CFDictionaryRef userInfo)
{
    return new __CFError(domain, code, userInfo);
}

CFErrorDomain CFErrorGetDomain(CFErrorRef err) { return cf::Check(err, __func__).domain.get(); }

CFIndex CFErrorGetCode(CFErrorRef err) { return cf::Check(err, __func__).code; }

CFDictionaryRef CFErrorCopyUserInfo(CFErrorRef err)
{
    return cf::Retained(cf::Check(err, __func__).userInfo.get());
}

CFStringRef CFErrorCopyDescription(CFErrorRef err)
{
    const __CFError& error = cf::Check(err, __func__);
    const void* given = CFDictionaryGetValue(error.userInfo.get(), kCFErrorLocalizedDescriptionKey);
    if (given && CFGetTypeID(given) == CFStringGetTypeID())
        return cf::Retained(static_cast<CFStringRef>(given));
    if (CFEqual(error.domain.get(), kCFErrorDomainPOSIX)) {
        const cf::Owned<CFStringRef> reason(cf::MakeString(strerrordesc_np(static_cast<int>(error.code))
                ? strerrordesc_np(static_cast<int>(error.code))
                : "Unknown error"));
        return CFStringCreateWithFormat(
            nullptr, nullptr, CFSTR("The operation couldn't be completed. %@"), reason.get());
    }
    return CFStringCreateWithFormat(nullptr, nullptr,
        CFSTR("The operation couldn't be completed. (%@ error %ld.)"), error.domain.get(),
        static_cast<long>(error.code));
}
