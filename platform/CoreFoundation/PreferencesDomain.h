#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

#include "CoreFoundation/Runtime.h"

#include <string>

/// One file of preferences, and the changes to it that are not written yet. Its users lock.
class PreferencesDomain {
public:
    /// @param home absolute host path of the home folder. @param name of the file, without its extension.
    PreferencesDomain(std::string home, const std::string& name);

    /// @return the value with the changes held, null where there is none; valid until the next call.
    CFTypeRef value(CFStringRef key);
    /// @return all values with the changes held; the caller releases it.
    CFMutableDictionaryRef copyValues();

    /// Holds a change. @param value null to remove the key; else kept as it is. Refused, with nothing
    /// changed, where it could not be written.
    void set(CFStringRef key, CFTypeRef value);

    /// Reads the file again before the next value is answered.
    void forget() { fIsLoaded = false; }
    /// The contract is that of CFPreferencesSynchronize.
    bool synchronize();

private:
    /// @return 0, also where there is no file, or why it could not be read.
    int load();
    bool writeChanges();
    bool replaceFile(CFDictionaryRef values);
    /// What holds nothing is no file. @param folder its folder, open.
    bool removeFile(int folder) const;
    bool moveDamagedFileAside() const;
    CFMutableDictionaryRef createMerged() const;

    std::string fHome;
    std::string fFolder;
    std::string fPath;
    cf::Owned<CFDictionaryRef> fStored; ///< what the file had when it was read
    cf::Owned<CFMutableDictionaryRef> fChanges; ///< by key; kCFNull removes
    bool fIsLoaded = false;
    bool fIsDamaged = false; ///< the file is there, and can be read, but is no dictionary
};
