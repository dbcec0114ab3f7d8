#include <DiskArbitration/Refusal.h>

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>
#include <Host/TextReading.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace da {

namespace {

struct Reason {
    std::string_view name; ///< what the error's name begins with
    DAReturn status;
};

constexpr std::array kReasons {
    Reason { "org.freedesktop.UDisks2.Error.NotAuthorized", kDAReturnNotPrivileged }, // three of them
    Reason { "org.freedesktop.UDisks2.Error.DeviceBusy", kDAReturnBusy },
    Reason { "org.freedesktop.UDisks2.Error.AlreadyMounted", kDAReturnBusy },
    Reason { "org.freedesktop.UDisks2.Error.AlreadyUnmounting", kDAReturnBusy },
    Reason { "org.freedesktop.UDisks2.Error.NotMounted", kDAReturnNotMounted },
    Reason { "org.freedesktop.UDisks2.Error.MountedByOther", kDAReturnNotPermitted },
    Reason { "org.freedesktop.UDisks2.Error.OptionNotPermitted", kDAReturnNotPermitted },
    Reason { "org.freedesktop.UDisks2.Error.NotSupported", kDAReturnUnsupported },
    Reason { "org.freedesktop.DBus.Error.AccessDenied", kDAReturnNotPrivileged },
    Reason { "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired", kDAReturnNotPrivileged },
    Reason { "org.freedesktop.DBus.Error.InvalidArgs", kDAReturnBadArgument },
    Reason { "org.freedesktop.DBus.Error.UnknownObject", kDAReturnNotFound },
    Reason { "org.freedesktop.DBus.Error.UnknownInterface", kDAReturnUnsupported },
    Reason { "org.freedesktop.DBus.Error.UnknownMethod", kDAReturnUnsupported },
    Reason { "org.freedesktop.DBus.Error.NoMemory", kDAReturnNoResources },
    Reason { "org.freedesktop.DBus.Error.LimitsExceeded", kDAReturnNoResources },
    // Nobody is there, or nobody any more.
    Reason { "org.freedesktop.DBus.Error.ServiceUnknown", kDAReturnNotReady },
    Reason { "org.freedesktop.DBus.Error.NameHasNoOwner", kDAReturnNotReady },
    Reason { "org.freedesktop.DBus.Error.Spawn.", kDAReturnNotReady },
    Reason { "org.freedesktop.DBus.Error.Time", kDAReturnNotReady }, // Timeout, TimedOut
    Reason { "org.freedesktop.DBus.Error.NoReply", kDAReturnNotReady },
    Reason { "org.freedesktop.DBus.Error.Disconnected", kDAReturnNotReady },
};

CFStringRef const kStatus = CFSTR("DAStatus");
CFStringRef const kStatusString = CFSTR("DAStatusString");
CFStringRef const kProcessID = CFSTR("DAProcessID");

cf::Owned<CFMutableDictionaryRef> Dissenter(DAReturn status, CFStringRef sentence)
{
    cf::Owned<CFMutableDictionaryRef> values(CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const cf::Owned<CFNumberRef> number(CFNumberCreate(nullptr, kCFNumberSInt32Type, &status));
    CFDictionarySetValue(values.get(), kStatus, number.get());
    if (sentence != nullptr)
        CFDictionarySetValue(values.get(), kStatusString, sentence);
    return values;
}

DADissenterRef Answered(cf::Owned<CFMutableDictionaryRef> values)
{
    return reinterpret_cast<DADissenterRef>(values.release());
}

/// @return null for none of that type.
CFTypeRef ValueOf(DADissenterRef dissenter, CFStringRef key, CFTypeID type)
{
    if (dissenter == nullptr || CFGetTypeID(dissenter) != CFDictionaryGetTypeID())
        return nullptr;
    CFTypeRef const value = CFDictionaryGetValue(reinterpret_cast<CFDictionaryRef>(dissenter), key);
    return value != nullptr && CFGetTypeID(value) == type ? value : nullptr;
}

}

Refusal RefusalFrom(const sd_bus_error& error)
{
    const std::string_view name = error.name != nullptr ? error.name : "";
    const auto* const known = std::find_if(kReasons.begin(), kReasons.end(),
        [name](const Reason& reason) { return name.starts_with(reason.name); });
    return { known != kReasons.end() ? known->status : kDAReturnError,
        CleanLine(error.message != nullptr ? error.message : "") };
}

cf::Owned<DADissenterRef> MakeDissenter(const Refusal& refusal)
{
    const cf::Owned<CFStringRef> sentence(
        refusal.sentence.empty() ? nullptr : cf::MakeString(refusal.sentence));
    cf::Owned<CFMutableDictionaryRef> values = Dissenter(refusal.status, sentence.get());
    if (refusal.process > 0) {
        const cf::Owned<CFNumberRef> process(CFNumberCreate(nullptr, kCFNumberSInt32Type, &refusal.process));
        CFDictionarySetValue(values.get(), kProcessID, process.get());
    }
    return cf::Owned<DADissenterRef>(Answered(std::move(values)));
}

}

DADissenterRef DADissenterCreate(CFAllocatorRef /*allocator*/, DAReturn status, CFStringRef string)
{
    return da::Answered(da::Dissenter(status, string));
}

DAReturn DADissenterGetStatus(DADissenterRef dissenter)
{
    CFTypeRef const number = da::ValueOf(dissenter, da::kStatus, CFNumberGetTypeID());
    DAReturn status = kDAReturnSuccess;
    if (number != nullptr)
        CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberSInt32Type, &status);
    return status;
}

CFStringRef DADissenterGetStatusString(DADissenterRef dissenter)
{
    return static_cast<CFStringRef>(da::ValueOf(dissenter, da::kStatusString, CFStringGetTypeID()));
}
