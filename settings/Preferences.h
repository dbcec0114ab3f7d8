#pragma once

#include "util/CFRef.h"
#include <cstdint>
#include <memory>

/// The product's settings, held in memory and stored as the preferences domain named by the main bundle's
/// identifier, which installer and agent share. The domain is written whole; keys that this class does not
/// know are kept, and so are those of a domain that could not be read. A write that fails is not reported by
/// the setters: synchronize() tells. Main thread only. Times are seconds since 2001-01-01 00:00:00 UTC.
class Preferences {
public:
    /// The last store made, or null before the first.
    static Preferences* preferencesPtr();

    /// Makes a store with the defaults, reads the stored settings over them and makes it the shared one,
    /// which replaces the store before it.
    static Preferences* init();

    /// Resets the settings in memory and forgets every stored key; writes nothing. Leaves the agent version's
    /// text, the time of the last check in seconds and the update-later date as they are.
    void setPreferencesToDefaults();
    /// Merges the stored domain into the settings in memory. Without a stored domain nothing changes.
    void readUserPreferences();
    /// Stores every key, or, between startCachingWrites() and checkForCachedWrites(), only remembers to do
    /// so.
    void writeUserPreferences();
    /// Removes the product's keys, except the time of a postponed update, and writes. Unknown keys stay, and
    /// so do the values in memory.
    void removeAllPreferences();

    /// Brings the domain and what was set in it together, writing what an earlier attempt could not.
    /// @return whether the disk has all of it.
    static bool synchronize();
    /// Whether the domain, as of the last synchronize(), holds any of the keys that removeAllPreferences()
    /// removes.
    static bool anySettingStored();

    void startCachingWrites();
    void checkForCachedWrites(); ///< ends caching; writes once if a write was held back

    /// The installed agent's version as stored: a text, unless something else wrote the domain. Null when
    /// there is none. Borrowed.
    CFTypeRef agentVersionAsString() const;
    uint32_t agentVersionAsNumVersionVariant() const; ///< 0 when there is none, or it is not a version
    /// Stores the version; null is ignored. The two getters above answer it only after the next read.
    void setAgentVersion(CFStringRef version);

    bool launchAtLogin() const;
    void setLaunchAtLogin(bool launch);
    bool collectUsageInfo() const;
    void setCollectUsageInfo(bool collect);
    bool checkForUpdates() const;
    /// A change posts the notification "Check For Updates Setting Changed", with this store as its object, to
    /// the local center after the write.
    void setCheckForUpdates(bool check);

    bool checkForUpdatesNow() const; ///< always
    void checkForUpdatesComplete(); ///< stores now as the time of the last check; its date object stays
    void checkForUpdatesLater(); ///< the same

    /// The version of the license agreement that the user accepted last; 0 when none.
    uint32_t lastDisplayedVersionOfEndUserLicense() const;
    void setLastDisplayedVersionOfEndUserLicense(uint32_t version);

    /// When updates were last looked for; the reference date when never. Borrowed.
    CFDateRef lastCheckForUpdatesTimestamp() const;
    void setLastCheckForUpdatesTimestamp(); ///< now
    /// When the user put an update off; null when there is none. Borrowed.
    CFDateRef updateLaterTimestamp() const;
    void setUpdateLaterTimestamp(); ///< now
    void removeUpdateLaterTimestamp();

private:
    Preferences();
    void readAgentVersion();
    void readTimestamps();
    bool storedBoolean(CFStringRef key) const;
    void removeKey(CFStringRef key);
    void setBoolean(bool value, CFStringRef key);
    void setTimestamp(CFAbsoluteTime time, CFStringRef key);

    CFRef<CFMutableDictionaryRef> fPreferencesDictionaryPtr;
    bool fDomainRead = false; ///< every stored key was seen, so one that memory lacks was removed
    bool fCacheWrites = false;
    bool fPreferencesDictionaryNeedsWriting = false;
    NumVersionVariant fAgentVersion {};
    CFRef<CFTypeRef> fAgentVersionStringPtr;
    bool fLaunchAtLogin = true;
    bool fCollectUsageInfo = true;
    bool fCheckForUpdates = true;
    double fLastCheckForUpdatesTimestamp = 0;
    uint32_t fLastDisplayedVersionOfEndUserLicense = 0;
    CFRef<CFDateRef> fLastUpdateCheckTimestampPtr;
    CFRef<CFDateRef> fUpdateLaterTimestampPtr;
};
