#include "CoreFoundation/PreferencesDomain.h"

#include <CoreFoundation/CFPropertyList.h>

#include "CoreFoundation/FileBytes.h"
#include "Host/AtomicFile.h"
#include "Host/Descriptor.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::chrono::seconds kLockPatience { 5 };
constexpr std::chrono::milliseconds kLockInterval { 10 };

bool MakeFolder(const std::string& path) { return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST; }

/// Locks out the other processes that replace files in the folder. The folder itself is what is locked: a
/// file made for that would stay behind.
/// @return none when the folder cannot be opened or stays locked.
Descriptor LockFolder(const std::string& folder)
{
    Descriptor lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto deadline = std::chrono::steady_clock::now() + kLockPatience;
    while (lock && flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        // Some network file systems lock no folders. There, files still are replaced whole; two processes
        // that write at the same moment may lose one's change, which is better than never saving anything.
        if (errno != EWOULDBLOCK && errno != EINTR)
            break;
        if (std::chrono::steady_clock::now() >= deadline)
            return Descriptor();
        std::this_thread::sleep_for(kLockInterval);
    }
    return lock;
}

void ApplyChange(const void* key, const void* value, void* values)
{
    auto* const dictionary = static_cast<CFMutableDictionaryRef>(values);
    if (value == kCFNull)
        CFDictionaryRemoveValue(dictionary, key);
    else
        CFDictionarySetValue(dictionary, key, value);
}

cf::Owned<CFMutableDictionaryRef> CreateDictionary()
{
    return cf::Owned<CFMutableDictionaryRef>(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

} // namespace

PreferencesDomain::PreferencesDomain(std::string home, const std::string& name)
    : fHome(std::move(home))
    , fFolder(fHome + "/Library/Preferences")
    , fPath(fFolder + '/' + name + ".plist")
    , fStored(CreateDictionary())
    , fChanges(CreateDictionary())
{
}

CFTypeRef PreferencesDomain::value(CFStringRef key)
{
    if (const CFTypeRef change = CFDictionaryGetValue(fChanges.get(), key))
        return change == kCFNull ? nullptr : change;
    if (!fIsLoaded)
        load();
    return CFDictionaryGetValue(fStored.get(), key);
}

CFMutableDictionaryRef PreferencesDomain::copyValues()
{
    if (!fIsLoaded)
        load();
    return createMerged();
}

void PreferencesDomain::set(CFStringRef key, CFTypeRef value)
{
    if (!value) {
        CFDictionarySetValue(fChanges.get(), key, kCFNull);
        return;
    }
    // As a part of the whole, because that is one level deeper: one bad value must not keep all others from
    // being saved.
    const cf::Owned<CFMutableDictionaryRef> whole = CreateDictionary();
    CFDictionarySetValue(whole.get(), key, value);
    if (CFPropertyListIsValid(whole.get(), kCFPropertyListBinaryFormat_v1_0))
        CFDictionarySetValue(fChanges.get(), key, value);
}

bool PreferencesDomain::synchronize()
{
    return CFDictionaryGetCount(fChanges.get()) > 0 ? writeChanges() : load() == 0;
}

int PreferencesDomain::load()
{
    cf::Owned<CFDictionaryRef> values;
    const int error = ReadDictionaryFile(fPath, values);
    fIsLoaded = error == 0 || error == ENOENT;
    fIsDamaged = error == 0 && !values;
    fStored = values ? std::move(values) : cf::Owned<CFDictionaryRef>(CreateDictionary());
    return fIsLoaded ? 0 : error;
}

bool PreferencesDomain::writeChanges()
{
    if (!MakeFolder(fHome + "/Library") || !MakeFolder(fFolder))
        return false;
    const Descriptor lock = LockFolder(fFolder);
    if (!lock || load() != 0)
        return false;
    cf::Owned<CFDictionaryRef> merged(createMerged());
    const bool isEmpty = CFDictionaryGetCount(merged.get()) == 0;
    if (!CFEqual(merged.get(), fStored.get())
        && !(isEmpty ? removeFile(lock.get()) : replaceFile(merged.get())))
        return false;
    fStored = std::move(merged);
    CFDictionaryRemoveAllValues(fChanges.get());
    return true;
}

bool PreferencesDomain::removeFile(int folder) const
{
    const bool isGone = unlink(fPath.c_str()) == 0 || errno == ENOENT;
    return isGone && FlushFolder(folder) == 0;
}

bool PreferencesDomain::replaceFile(CFDictionaryRef values)
{
    const cf::Owned<CFDataRef> data(
        CFPropertyListCreateData(kCFAllocatorDefault, values, kCFPropertyListBinaryFormat_v1_0, 0, nullptr));
    // What is too large to be read again is not written.
    if (!data || CFDataGetLength(data.get()) > kFileSizeLimit)
        return false;
    if (fIsDamaged && !moveDamagedFileAside())
        return false;
    fIsDamaged = false;
    return WriteFileAtomically(
               fPath, CFDataGetBytePtr(data.get()), static_cast<size_t>(CFDataGetLength(data.get())))
        == 0;
}

bool PreferencesDomain::moveDamagedFileAside() const
{
    constexpr int tries = 1000;
    for (int i = 1; i <= tries; ++i) {
        const std::string aside = fPath + ".damaged" + (i == 1 ? "" : '-' + std::to_string(i));
        if (renameat2(AT_FDCWD, fPath.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) == 0)
            return true;
        if (errno != EEXIST)
            return false;
    }
    return false;
}

CFMutableDictionaryRef PreferencesDomain::createMerged() const
{
    CFMutableDictionaryRef merged = CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, fStored.get());
    CFDictionaryApplyFunction(fChanges.get(), ApplyChange, merged);
    return merged;
}
