#include "util/Volumes.h"

#include "util/CFRef.h"
#include "util/ChildProcess.h"
#include "util/DeviceNames.h"
#include "util/Files.h"
#include "util/RegistryProperties.h"

#include <DiskArbitration/DiskArbitration.h>
#include <array>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Path = std::array<char, 1024>;

/// @return whether it fits with its zero byte; else the destination is left as it is.
bool CopyIfItFits(const Path& text, char* destination, size_t size)
{
    return destination != nullptr && std::strlen(text.data()) < size
        && CopyText(destination, text.data(), size);
}

bool CopyPath(CFTypeRef url, char* destination, size_t size)
{
    Path path {};
    const auto location = CFDynamicCast<CFURLRef>(url, CFURLGetTypeID());
    return location != nullptr
        && CFURLGetFileSystemRepresentation(
            location, true, reinterpret_cast<UInt8*>(path.data()), static_cast<CFIndex>(path.size()))
        && CopyIfItFits(path, destination, size);
}

bool CopyFileSystemText(CFTypeRef value, char* destination, size_t size)
{
    Path text {};
    const auto string = CFDynamicCast<CFStringRef>(value, CFStringGetTypeID());
    return string != nullptr
        && CFStringGetFileSystemRepresentation(string, text.data(), static_cast<CFIndex>(text.size()))
        && CopyIfItFits(text, destination, size);
}

/// @return a value of the description; null where there is none.
CFTypeRef Described(const CFRef<CFDictionaryRef>& description, CFStringRef key)
{
    return description ? CFDictionaryGetValue(description.get(), key) : nullptr;
}

CFRef<CFDictionaryRef> DescriptionOf(const CFRef<DADiskRef>& disk)
{
    return CFRef<CFDictionaryRef>(disk ? DADiskCopyDescription(disk.get()) : nullptr);
}

CFRef<CFDictionaryRef> DescriptionOfDisk(const char* bsdName)
{
    const CFRef<DASessionRef> session(DASessionCreate(kCFAllocatorDefault));
    const bool canAsk = session && bsdName != nullptr;
    return DescriptionOf(CFRef<DADiskRef>(
        canAsk ? DADiskCreateFromBSDName(kCFAllocatorDefault, session.get(), bsdName) : nullptr));
}

/// @return null where there is none, or where a medium before it has no description.
CFRef<CFDictionaryRef> DescriptionOfVolume(const char* path)
{
    const CFRef<DASessionRef> session(DASessionCreate(kCFAllocatorDefault));
    IORef all;
    if (path == nullptr || !session
        || IOServiceGetMatchingServices(kIOMasterPortDefault, IOServiceMatching("IOMedia"), all.receive())
            != kIOReturnSuccess)
        return {};
    while (const IORef media { IOIteratorNext(all.get()) }) {
        CFRef<CFDictionaryRef> description = DescriptionOf(
            CFRef<DADiskRef>(DADiskCreateFromIOMedia(kCFAllocatorDefault, session.get(), media.get())));
        if (!description)
            return {};
        Path own {};
        const CFTypeRef url = Described(description, kDADiskDescriptionVolumePathKey);
        if (CopyPath(url, own.data(), own.size()) && std::strcmp(own.data(), path) == 0)
            return description;
    }
    return {};
}

CFUUIDRef CopyUUID(const CFRef<CFDictionaryRef>& description)
{
    const auto uuid = CFDynamicCast<CFUUIDRef>(
        Described(description, kDADiskDescriptionVolumeUUIDKey), CFUUIDGetTypeID());
    return CFRef<CFUUIDRef>::Retained(uuid).release();
}

/// Older systems have the tool beside the file system's resources, newer ones within.
const char* HFSUtility()
{
    constexpr const char* older = "/System/Library/Filesystems/hfs.fs/hfs.util";
    return FileOrDirectoryExists(older, nullptr, nullptr)
        ? older
        : "/System/Library/Filesystems/hfs.fs/Contents/Resources/hfs.util";
}

}

bool VolumeExistsAtPathname(const char* path) { return static_cast<bool>(DescriptionOfVolume(path)); }

bool GetVolumeBSD_NameWithPathname(const char* path, char* destination, size_t size)
{
    const CFRef<CFDictionaryRef> description = DescriptionOfVolume(path);
    return CopyFileSystemText(Described(description, kDADiskDescriptionMediaBSDNameKey), destination, size);
}

bool ExtractVolumeNameFromPathname(const char* path, char* destination, size_t size)
{
    const CFRef<CFDictionaryRef> description = DescriptionOfVolume(path);
    return CopyFileSystemText(Described(description, kDADiskDescriptionVolumeNameKey), destination, size);
}

bool GetVolumePathnameWithBSDName(const char* bsdName, char* destination, size_t size)
{
    const CFRef<CFDictionaryRef> description = DescriptionOfDisk(bsdName);
    return CopyPath(Described(description, kDADiskDescriptionVolumePathKey), destination, size);
}

CFUUIDRef CreateVolumeCFUUID_WithBSD_Name(const char* bsdName)
{
    return CopyUUID(DescriptionOfDisk(bsdName));
}

CFUUIDRef CreateVolumeCFUUID(const char* volumePath)
{
    std::array<char, 16> bsdName {};
    return GetVolumeBSD_NameWithPathname(volumePath, bsdName.data(), bsdName.size())
        ? CreateVolumeCFUUID_WithBSD_Name(bsdName.data())
        : nullptr;
}

bool GetNewUUID_ForVolume(const char* bsdName)
{
    constexpr int changed = 253; // the tool's status for that
    if (!IsPlainBSDName(bsdName))
        return false;
    ToolCall call { HFSUtility(), { "hfs.util", "-s", bsdName } };
    call.prepare = [] { (void)!setuid(0); }; // the tool itself refuses whoever has no right
    const ChildEnd end = RunToolReading(call, ReadAndDiscard);
    return end.isKnown() && WIFEXITED(end.status) && WEXITSTATUS(end.status) == changed;
}
