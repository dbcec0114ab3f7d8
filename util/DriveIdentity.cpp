#include "util/DriveIdentity.h"

#include "util/Disks.h"
#include "util/MediaTypes.h"
#include "util/RegistryProperties.h"
#include "util/StringConversions.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

void FillInText(CFTypeRef value, char* buffer, size_t size)
{
    std::array<char, 255> text {};
    if (CopyASCII(value, text.data(), text.size()))
        CopyText(buffer, StripSpaces(text.data()), size);
}

void FillInWorldWideName(const UInt8* name, char* buffer, size_t size)
{
    std::array<char, 24> text {};
    ConvertWWN_DataToHexString(name, text.data());
    CopyText(buffer, text.data(), size);
}

/// @return the bytes of a world wide name, which the value keeps; null for another length or type.
const UInt8* WorldWideName(CFTypeRef value)
{
    constexpr CFIndex length = 8;
    const auto data = CFDynamicCast<CFDataRef>(value, CFDataGetTypeID());
    return data != nullptr && CFDataGetLength(data) == length ? CFDataGetBytePtr(data) : nullptr;
}

/// What the drive answers when it is asked for its identification; null where it has not been.
CFRef<CFTypeRef> InquiryIdentifier(io_registry_entry_t media)
{
    const CFRef<CFTypeRef> found = SearchedProperty(media, CFSTR("INQUIRY Device Identification"));
    const auto pages = CFDynamicCast<CFArrayRef>(found.get(), CFArrayGetTypeID());
    const bool hasPages = pages != nullptr && CFArrayGetCount(pages) > 0;
    const auto page = CFDynamicCast<CFDictionaryRef>(
        hasPages ? CFArrayGetValueAtIndex(pages, 0) : nullptr, CFDictionaryGetTypeID());
    return CFRef<CFTypeRef>::Retained(
        page != nullptr ? CFDictionaryGetValue(page, CFSTR("Identifier")) : nullptr);
}

void FillInATASerialNumber(io_registry_entry_t media, char* buffer, size_t size)
{
    const CFRef<CFTypeRef> device = SearchedProperty(media, CFSTR("device serial"));
    FillInText(device ? device.get() : SearchedProperty(media, CFSTR("Serial Number")).get(), buffer, size);
}

void FillInFireWireGUID(io_registry_entry_t media, char* buffer, size_t size)
{
    std::array<char, 24> text {};
    const auto guid = NumberFrom(SearchedProperty(media, CFSTR("GUID")).get());
    if (!guid)
        return;
    ConvertUInt64ToHexString(&*guid, text.data(), true);
    CopyText(buffer, text.data(), size);
}

void FillInSCSIName(io_registry_entry_t media, char* buffer, size_t size)
{
    const CFRef<CFTypeRef> node
        = SearchedMember(media, CFSTR("Protocol Characteristics"), CFSTR("Node World Wide Name"));
    const CFRef<CFTypeRef> inquiry = WorldWideName(node.get()) != nullptr ? node : InquiryIdentifier(media);
    if (const UInt8* const name = WorldWideName(inquiry.get()))
        FillInWorldWideName(name, buffer, size);
}

int32_t NumberOr0(const CFRef<CFTypeRef>& value)
{
    return static_cast<int32_t>(NumberFrom(value.get()).value_or(0));
}

/// @param key of a property; where there is none, what `otherwise` finds counts.
template <class Otherwise>
int32_t FoundNumber(io_registry_entry_t media, CFStringRef key, Otherwise otherwise)
{
    const CFRef<CFTypeRef> value = SearchedProperty(media, key);
    return NumberOr0(value ? value : otherwise());
}

}

void FillInSerialNumber(io_registry_entry_t media, uint32_t bus, char* buffer, size_t size)
{
    Clear(buffer, size);
    switch (bus) {
    case kBusPCI:
    case kBusSATA:
    case kBusATA:
    case kBusSAS:
        return FillInATASerialNumber(media, buffer, size);
    case kBusFireWire:
        return FillInFireWireGUID(media, buffer, size);
    case kBusSCSI:
    case kBusFibreChannel:
        return FillInSCSIName(media, buffer, size);
    case kBusUSB:
    case kBusFastUSB:
        return FillInText(SearchedProperty(media, CFSTR("USB Serial Number")).get(), buffer, size);
    default:
        return;
    }
}

void GetTargetID_And_LUN(io_registry_entry_t media, uint32_t bus, int32_t* target, int32_t* logicalUnit)
{
    int32_t number = 0;
    int32_t unit = 0;
    if (bus == kBusUSB || bus == kBusFastUSB)
        number = NumberOr0(SearchedProperty(media, CFSTR("USB Address")));
    if (bus == kBusATA)
        number = NumberOr0(SearchedProperty(media, CFSTR("unit number")));
    if (bus == kBusSCSI) {
        number = FoundNumber(media, CFSTR("SCSI Target"), [media] {
            return SearchedMember(media, CFSTR("Protocol Characteristics"), CFSTR("SCSI Target Identifier"));
        });
        unit = FoundNumber(media, CFSTR("SCSI Lun"),
            [media] { return SearchedProperty(media, CFSTR("SCSI Logical Unit Number")); });
    }
    if (target != nullptr)
        *target = number;
    if (logicalUnit != nullptr)
        *logicalUnit = unit;
}

void GPT_UUID_ForDisk(io_registry_entry_t disk, char* buffer, size_t size)
{
    Clear(buffer, size);
    if (!IsString(OwnProperty(disk, CFSTR("Content")).get(), CFSTR("GUID_partition_scheme")))
        return;
    const CFRef<CFTypeRef> uuid(IORegistryEntrySearchCFProperty(
        disk, kIOServicePlane, CFSTR("UUID"), kCFAllocatorDefault, kIORegistryIterateRecursively));
    std::array<char, 64> text {};
    CopyASCII(uuid.get(), text.data(), text.size());
    CopyText(buffer, text.data(), size);
}

void FillInDeviceLocationWithIOServiceObject(io_registry_entry_t object, char* buffer, size_t size)
{
    Clear(buffer, size);
    if (buffer == nullptr || size == 0)
        return;
    const CFRef<CFTypeRef> found = SearchedProperty(object, CFSTR("io-device-location"));
    if (const auto location = CFDynamicCast<CFDataRef>(found.get(), CFDataGetTypeID())) {
        std::copy_n(CFDataGetBytePtr(location),
            std::min(size, static_cast<size_t>(CFDataGetLength(location))), buffer);
        buffer[size - 1] = 0;
    } else if (SearchedProperty(object, CFSTR("Thunderbolt Path"))) {
        CopyText(buffer, "Thunderbolt", size);
    }
}

void FillInDeviceLocationWithBSDName(const char* bsdName, char* buffer, size_t size)
{
    FillInDeviceLocationWithIOServiceObject(IORef(CreateIOKitObjectWithBSDName(bsdName)).get(), buffer, size);
}
