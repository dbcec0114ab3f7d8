#include "util/BootDevice.h"

#include "util/CFUtilities.h"
#include "util/ChildProcess.h"
#include "util/DeviceNames.h"
#include "util/Disks.h"
#include "util/RegistryProperties.h"
#include "util/Volumes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

/// @return whether the tool ended by itself with status 0.
bool Succeeds(const ToolCall& call)
{
    const ChildEnd end = RunTool(call);
    return end.isKnown() && end.status == 0;
}

/// The device that bless tells, "/dev/disk0s2". @return null where it tells none.
CFRef<CFTypeRef> ChosenVolume()
{
    constexpr size_t longestAnswer = 2048;
    ToolCall call { "/usr/sbin/bless", { "bless", "-info", "-getBoot", "-plist" } };
    call.statusWithoutTool.reset();
    std::string answer;
    const ChildEnd end = RunToolReading(
        call, [&answer](int output) { answer = ReadPieceAndDiscardRest(output, longestAnswer); });
    if (end.isChild || !end.succeeded() || answer.empty())
        return {};
    const CFRef<CFPropertyListRef> list(
        CreatePropertyListFromBytes(answer.data(), static_cast<uint32_t>(answer.size())));
    const auto facts = CFDynamicCast<CFDictionaryRef>(list.get(), CFDictionaryGetTypeID());
    return CFRef<CFTypeRef>::Retained(
        facts != nullptr ? CFDictionaryGetValue(facts, CFSTR("Boot Volume")) : nullptr);
}

/// The path in the registry of the first device that the volume says it is started from.
bool GetBootDevicePath(io_registry_entry_t rootVolume, char* path, size_t size)
{
    const CFRef<CFTypeRef> property = OwnProperty(rootVolume, CFSTR("IOBootDevice"));
    const auto devices = CFDynamicCast<CFArrayRef>(property.get(), CFArrayGetTypeID());
    if (devices == nullptr || CFArrayGetCount(devices) == 0)
        return false;
    const auto device
        = CFDynamicCast<CFDictionaryRef>(CFArrayGetValueAtIndex(devices, 0), CFDictionaryGetTypeID());
    return device != nullptr
        && CopyASCII(CFDictionaryGetValue(device, CFSTR("IOBootDevicePath")), path, size);
}

}

bool GetBootPath(char* buffer, size_t size)
{
    constexpr size_t keptFree = 2;
    Clear(buffer, size);
    if (buffer == nullptr || size < keptFree)
        return false;
    const IORef options(IORegistryEntryFromPath(kIOMasterPortDefault, "IODeviceTree:/options"));
    const CFRef<CFTypeRef> path = OwnProperty(options.get(), CFSTR("boot-device"));
    return CopyASCII(path.get(), buffer, size - keptFree + 1);
}

bool SetBootPath(const char* path)
{
    constexpr std::string_view plane = "IODeviceTree:";
    if (path == nullptr)
        return false;
    std::string_view device = path;
    if (device.starts_with(plane))
        device.remove_prefix(plane.size());
    return Succeeds({ "/usr/sbin/nvram", { "nvram", "boot-device=" + std::string(device) + ",\\\\:tbxi" } });
}

bool SetBootDeviceWithBSD_Name(const char* bsdName)
{
    return IsPlainBSDName(bsdName)
        && Succeeds(
            { "/usr/sbin/bless", { "bless", "-device", std::string("/dev/") + bsdName, "-setBoot" } });
}

bool SetBootVolumeWithVolumePathname(const char* volumePath)
{
    if (volumePath == nullptr)
        return false;
    std::string folder = volumePath;
    if (folder != "/")
        folder += '/';
    return Succeeds(
        { "/usr/sbin/bless", { "bless", "-folder", folder + "System/Library/CoreServices", "-setBoot" } });
}

bool SetBootVolumeWithBSD_Name(const char* bsdName)
{
    std::array<char, 1024> path {};
    return GetVolumePathnameWithBSDName(bsdName, path.data(), path.size())
        && SetBootVolumeWithVolumePathname(path.data());
}

bool GetBootVolumeBSD_Name(char* buffer, size_t size)
{
    constexpr size_t folderLength = 5; // of "/dev/"
    Clear(buffer, size);
    const CFRef<CFTypeRef> volume = ChosenVolume();
    if (CFDynamicCast<CFStringRef>(volume.get(), CFStringGetTypeID()) == nullptr)
        return false;
    if (buffer == nullptr)
        return true;
    std::array<char, 32> device {};
    if (!CopyASCII(volume.get(), device.data(), device.size()))
        return false;
    CopyText(buffer, device.data() + std::min(folderLength, std::strlen(device.data())), size);
    return true;
}

bool GetBSDSliceNumberForAppleBootPartition(io_registry_entry_t partition, char* bsdName)
{
    const CFRef<CFTypeRef> scheme = SearchedProperty(partition, CFSTR("Content Mask"));
    const bool isGUIDDisk = IsString(scheme.get(), CFSTR("GUID_partition_scheme"));
    char* const lastS = bsdName != nullptr ? std::strrchr(bsdName, 's') : nullptr;
    if (lastS == nullptr)
        return false;
    const auto slice = static_cast<uint32_t>(std::strtoll(lastS + 1, nullptr, 10));
    const uint32_t beside = isGUIDDisk ? slice + 1 : slice - 1;
    const std::string number = std::to_string(static_cast<int32_t>(beside));
    std::memcpy(lastS + 1, number.c_str(), number.size() + 1);
    return IsDiskAppleBootPartition(bsdName);
}

void SetBootDeviceForBootRootVolume(const char* bsdName)
{
    const IORef rootVolume(CreateIOKitObjectWithBSDName(bsdName));
    std::array<char, 1024> path {};
    if (!GetBootDevicePath(rootVolume.get(), path.data(), path.size()))
        return;
    const IORef device(IORegistryEntryFromPath(kIOMasterPortDefault, path.data()));
    std::array<char, 32> name {};
    GetBSDNameAndSizes(device.get(), nullptr, name.data(), name.size(), nullptr, nullptr, nullptr);
    if (name[0] == 0)
        return;
    // Whatever lies beside it: the registry may not know yet what that is for.
    GetBSDSliceNumberForAppleBootPartition(device.get(), name.data());
    SetBootDeviceWithBSD_Name(name.data());
}
