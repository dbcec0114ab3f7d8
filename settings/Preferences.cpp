#include "settings/Preferences.h"

#include "settings/NumVersion.h"
#include "settings/PropertyValue.h"
#include "util/Bundle.h"
#include "util/CFText.h"

#include <algorithm>
#include <array>
#include <optional>

namespace {

// Functions rather than constants, since CFSTR is not a constant expression on every system.
CFStringRef AgentVersionKey() { return CFSTR("Agent Version"); }
CFStringRef LaunchAtLoginKey() { return CFSTR("Launch At Login"); }
CFStringRef CollectUsageInfoKey() { return CFSTR("Collect Usage Info"); }
CFStringRef CheckForUpdatesKey() { return CFSTR("Check For Updates"); }
CFStringRef LastCheckKey() { return CFSTR("Last Check For Updates Timestamp"); }
CFStringRef LicenseVersionKey() { return CFSTR("Last Displayed Version Of End User License"); }
CFStringRef UpdateLaterKey() { return CFSTR("Update Later Timestamp"); }

/// The keys that go when the product goes. A postponed update is not one of them.
std::array<CFStringRef, 6> SettingKeys()
{
    return { AgentVersionKey(), LaunchAtLoginKey(), CollectUsageInfoKey(), CheckForUpdatesKey(),
        LastCheckKey(), LicenseVersionKey() };
}

std::unique_ptr<Preferences> gPreferencesPtr;

/// Brings what is known of the domain up to date with the disk. @return false when that cannot be read or
/// written.
bool Synchronize(CFStringRef domain)
{
    return CFPreferencesSynchronize(domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
}

CFRef<CFDictionaryRef> CopyDomain(CFStringRef domain)
{
    return CFRef(
        CFPreferencesCopyMultiple(nullptr, domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
}

/// The keys of `dictionary` that `kept` does not have.
CFRef<CFArrayRef> CopyKeysMissingIn(CFDictionaryRef kept, CFDictionaryRef dictionary)
{
    struct Search {
        CFDictionaryRef kept;
        CFMutableArrayRef missing;
    } search { kept, CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks) };
    CFDictionaryApplyFunction(
        dictionary,
        [](const void* key, const void*, void* context) {
            const auto* const in = static_cast<Search*>(context);
            if (!CFDictionaryContainsKey(in->kept, key))
                CFArrayAppendValue(in->missing, key);
        },
        &search);
    return CFRef<CFArrayRef>(search.missing);
}

/// Stores `settings` and removes the keys of `dropped`, which may be null.
void StoreInDomain(CFStringRef domain, CFDictionaryRef settings, CFArrayRef dropped)
{
    CFPreferencesSetMultiple(settings, dropped, domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    Synchronize(domain);
}

CFRef<CFDateRef> DateAt(CFAbsoluteTime time) { return CFRef(CFDateCreate(kCFAllocatorDefault, time)); }

}

Preferences* Preferences::preferencesPtr() { return gPreferencesPtr.get(); }

Preferences* Preferences::init()
{
    gPreferencesPtr.reset(new Preferences);
    return gPreferencesPtr.get();
}

Preferences::Preferences()
{
    setPreferencesToDefaults();
    readUserPreferences();
}

void Preferences::setPreferencesToDefaults()
{
    fPreferencesDictionaryPtr = CFRef(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    fAgentVersion.whole = 0;
    fLaunchAtLogin = true;
    fCollectUsageInfo = true;
    fCheckForUpdates = true;
    fLastDisplayedVersionOfEndUserLicense = 0;
    fLastUpdateCheckTimestampPtr = DateAt(0);
}

void Preferences::readUserPreferences()
{
    const CFStringRef domain = MainBundleIdentifier();
    if (domain == nullptr)
        return;
    fDomainRead = Synchronize(domain);
    const CFRef<CFDictionaryRef> stored = CopyDomain(domain);
    if (!stored || CFDictionaryGetCount(stored.get()) == 0)
        return;
    CFDictionaryApplyFunction(
        stored.get(),
        [](const void* key, const void* value, void* settings) {
            CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(settings), key, value);
        },
        fPreferencesDictionaryPtr.get());

    readAgentVersion();
    fLaunchAtLogin = storedBoolean(LaunchAtLoginKey());
    fCollectUsageInfo = storedBoolean(CollectUsageInfoKey());
    fCheckForUpdates = storedBoolean(CheckForUpdatesKey());
    fLastDisplayedVersionOfEndUserLicense
        = UnsignedValue(CFDictionaryGetValue(fPreferencesDictionaryPtr.get(), LicenseVersionKey()))
              .value_or(0);
    readTimestamps();
}

void Preferences::readAgentVersion()
{
    const CFTypeRef stored = CFDictionaryGetValue(fPreferencesDictionaryPtr.get(), AgentVersionKey());
    fAgentVersionStringPtr = CFRef<CFTypeRef>::Retained(stored);
    const auto text = CFDynamicCast<CFStringRef>(stored, CFStringGetTypeID());
    const std::optional<std::string> ascii = ASCIIString(text);
    // A text that is not even ASCII cannot be a version; one that cannot be read leaves what was known.
    if (!ascii)
        fAgentVersion.whole = 0;
    else
        ConvertStringToNumVersion(ascii->c_str(), &fAgentVersion.whole);
}

void Preferences::readTimestamps()
{
    const CFDictionaryRef settings = fPreferencesDictionaryPtr.get();
    if (const std::optional<double> time = DoubleValue(CFDictionaryGetValue(settings, LastCheckKey()))) {
        fLastCheckForUpdatesTimestamp = *time;
        fLastUpdateCheckTimestampPtr = DateAt(*time);
    }
    if (const std::optional<double> time = DoubleValue(CFDictionaryGetValue(settings, UpdateLaterKey())))
        fUpdateLaterTimestampPtr = DateAt(*time);
}

void Preferences::writeUserPreferences()
{
    if (fCacheWrites) {
        fPreferencesDictionaryNeedsWriting = true;
        return;
    }
    const CFStringRef domain = MainBundleIdentifier();
    if (domain == nullptr)
        return;
    // Keys that were never seen must not be dropped: a domain that could not be read is added to, not
    // replaced.
    const CFRef<CFDictionaryRef> stored = fDomainRead ? CopyDomain(domain) : CFRef<CFDictionaryRef>();
    const CFRef<CFArrayRef> dropped
        = stored ? CopyKeysMissingIn(fPreferencesDictionaryPtr.get(), stored.get()) : CFRef<CFArrayRef>();
    StoreInDomain(domain, fPreferencesDictionaryPtr.get(), dropped.get());
}

void Preferences::removeAllPreferences()
{
    for (const CFStringRef key : SettingKeys())
        removeKey(key);
    writeUserPreferences();
}

bool Preferences::synchronize()
{
    const CFStringRef domain = MainBundleIdentifier();
    return domain != nullptr && Synchronize(domain);
}

bool Preferences::anySettingStored()
{
    const CFStringRef domain = MainBundleIdentifier();
    const CFRef<CFDictionaryRef> stored = domain != nullptr ? CopyDomain(domain) : CFRef<CFDictionaryRef>();
    const auto keys = SettingKeys();
    return stored && std::any_of(keys.begin(), keys.end(), [&stored](CFStringRef key) {
        return CFDictionaryContainsKey(stored.get(), key);
    });
}

void Preferences::startCachingWrites() { fCacheWrites = true; }

void Preferences::checkForCachedWrites()
{
    fCacheWrites = false;
    if (!fPreferencesDictionaryNeedsWriting)
        return;
    writeUserPreferences();
    fPreferencesDictionaryNeedsWriting = false;
}

CFTypeRef Preferences::agentVersionAsString() const { return fAgentVersionStringPtr.get(); }

uint32_t Preferences::agentVersionAsNumVersionVariant() const { return fAgentVersion.whole; }

void Preferences::setAgentVersion(CFStringRef version)
{
    if (version == nullptr)
        return;
    CFDictionarySetValue(fPreferencesDictionaryPtr.get(), AgentVersionKey(), version);
    writeUserPreferences();
}

bool Preferences::launchAtLogin() const { return fLaunchAtLogin; }

void Preferences::setLaunchAtLogin(bool launch)
{
    if (launch == fLaunchAtLogin)
        return;
    fLaunchAtLogin = launch;
    setBoolean(launch, LaunchAtLoginKey());
}

bool Preferences::collectUsageInfo() const { return fCollectUsageInfo; }

void Preferences::setCollectUsageInfo(bool collect)
{
    if (collect == fCollectUsageInfo)
        return;
    fCollectUsageInfo = collect;
    setBoolean(collect, CollectUsageInfoKey());
}

bool Preferences::checkForUpdates() const { return fCheckForUpdates; }

void Preferences::setCheckForUpdates(bool check)
{
    if (check == fCheckForUpdates)
        return;
    fCheckForUpdates = check;
    setBoolean(check, CheckForUpdatesKey());
    CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(),
        CFSTR("Check For Updates Setting Changed"), this, nullptr, true);
}

bool Preferences::checkForUpdatesNow() const { return true; }

void Preferences::checkForUpdatesComplete()
{
    fLastCheckForUpdatesTimestamp = CFAbsoluteTimeGetCurrent();
    setTimestamp(fLastCheckForUpdatesTimestamp, LastCheckKey());
}

void Preferences::checkForUpdatesLater() { checkForUpdatesComplete(); }

uint32_t Preferences::lastDisplayedVersionOfEndUserLicense() const
{
    return fLastDisplayedVersionOfEndUserLicense;
}

void Preferences::setLastDisplayedVersionOfEndUserLicense(uint32_t version)
{
    if (version == fLastDisplayedVersionOfEndUserLicense)
        return;
    fLastDisplayedVersionOfEndUserLicense = version;
    const auto value = static_cast<int64_t>(version);
    const CFRef<CFNumberRef> number(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value));
    CFDictionarySetValue(fPreferencesDictionaryPtr.get(), LicenseVersionKey(), number.get());
    writeUserPreferences();
}

CFDateRef Preferences::lastCheckForUpdatesTimestamp() const { return fLastUpdateCheckTimestampPtr.get(); }

void Preferences::setLastCheckForUpdatesTimestamp()
{
    const CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
    fLastUpdateCheckTimestampPtr = DateAt(now);
    setTimestamp(now, LastCheckKey());
}

CFDateRef Preferences::updateLaterTimestamp() const { return fUpdateLaterTimestampPtr.get(); }

void Preferences::setUpdateLaterTimestamp()
{
    const CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
    fUpdateLaterTimestampPtr = DateAt(now);
    setTimestamp(now, UpdateLaterKey());
}

void Preferences::removeUpdateLaterTimestamp()
{
    fUpdateLaterTimestampPtr = CFRef<CFDateRef>();
    removeKey(UpdateLaterKey());
    writeUserPreferences();
}

/// A setting that is on unless it is stored otherwise.
bool Preferences::storedBoolean(CFStringRef key) const
{
    return BooleanValue(CFDictionaryGetValue(fPreferencesDictionaryPtr.get(), key)).value_or(true);
}

/// The removal is put down in the domain at once, because a domain that could not be read is not compared on
/// writing.
void Preferences::removeKey(CFStringRef key)
{
    CFDictionaryRemoveValue(fPreferencesDictionaryPtr.get(), key);
    if (const CFStringRef domain = MainBundleIdentifier())
        CFPreferencesSetValue(key, nullptr, domain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
}

/// Only the value that differs from the default is stored, so that a later default reaches users who never
/// chose.
void Preferences::setBoolean(bool value, CFStringRef key)
{
    if (value)
        removeKey(key);
    else
        CFDictionarySetValue(fPreferencesDictionaryPtr.get(), key, kCFBooleanFalse);
    writeUserPreferences();
}

void Preferences::setTimestamp(CFAbsoluteTime time, CFStringRef key)
{
    const CFRef<CFNumberRef> seconds(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &time));
    CFDictionarySetValue(fPreferencesDictionaryPtr.get(), key, seconds.get());
    writeUserPreferences();
}
