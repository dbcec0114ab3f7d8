#include "util/Disks.h"

#include "util/DeviceNames.h"
#include "util/RegistryProperties.h"
#include "util/Volumes.h"

#include <IOKit/IOBSD.h>
#include <algorithm>
#include <array>

namespace {

constexpr uint32_t kUsualTransfer = 0x20000;

int64_t OwnNumber(io_registry_entry_t media, CFStringRef key)
{
    return NumberFrom(OwnProperty(media, key).get()).value_or(0);
}

template <class Number> void Store(Number* destination, Number value)
{
    if (destination != nullptr)
        *destination = value;
}

}

io_service_t CreateIOKitObjectWithBSDName(const char* name)
{
    if (name == nullptr || *name == 0)
        return 0;
    return IOServiceGetMatchingService(
        kIOMasterPortDefault, IOBSDNameMatching(kIOMasterPortDefault, 0, name));
}

bool DiskExists(const char* name) { return static_cast<bool>(IORef(CreateIOKitObjectWithBSDName(name))); }

bool IsDiskRemovable(const char* name)
{
    const IORef media(CreateIOKitObjectWithBSDName(name));
    return IsTrue(SearchedProperty(media.get(), CFSTR("Removable")).get());
}

bool IsDiskAppleBootPartition(const char* name)
{
    const IORef media(CreateIOKitObjectWithBSDName(name));
    const CFRef<CFTypeRef> hint = OwnProperty(media.get(), CFSTR("Content Hint"));
    return IsString(hint.get(), CFSTR("Apple_Boot"))
        || IsString(hint.get(), CFSTR("426F6F74-0000-11AA-AA11-00306543ECAC"));
}

int64_t NumberBytesOnDisk(const char* name)
{
    return OwnNumber(IORef(CreateIOKitObjectWithBSDName(name)).get(), CFSTR("Size"));
}

uint32_t SectorSizeForDisk(const char* name)
{
    return static_cast<uint32_t>(
        OwnNumber(IORef(CreateIOKitObjectWithBSDName(name)).get(), CFSTR("Preferred Block Size")));
}

uint64_t NumberBytesInVolumeIOMedia(const char* volumePath)
{
    std::array<char, 1024> name {};
    return GetVolumeBSD_NameWithPathname(volumePath, name.data(), name.size())
        ? static_cast<uint64_t>(NumberBytesOnDisk(name.data()))
        : 0;
}

void GetBSDNameAndSizes(io_registry_entry_t media, bool* isPartition, char* name, size_t nameSize,
    uint64_t* size, uint32_t* blockSize, uint32_t* maximumTransfer)
{
    std::array<char, 16> ownName {};
    const bool isNamed
        = CopyASCII(OwnProperty(media, CFSTR(kIOBSDNameKey)).get(), ownName.data(), ownName.size());
    Clear(name, nameSize);
    CopyText(name, ownName.data(), nameSize);
    Store(isPartition, isNamed && IsDiskAPartition(ownName.data()));
    Store(size, isNamed ? static_cast<uint64_t>(OwnNumber(media, CFSTR("Size"))) : uint64_t { 0 });
    Store(blockSize,
        isNamed ? static_cast<uint32_t>(OwnNumber(media, CFSTR("Preferred Block Size"))) : uint32_t { 0 });
    Store(maximumTransfer, uint32_t { 0 });
    if (isNamed && maximumTransfer != nullptr)
        *maximumTransfer = std::max(kUsualTransfer,
            std::min(MaxTransferSizeForObject(media, true), MaxTransferSizeForObject(media, false)));
}

uint32_t MaxTransferSizeForObject(io_registry_entry_t media, bool read)
{
    const CFStringRef byteKey = read ? CFSTR("IOMaximumByteCountRead") : CFSTR("IOMaximumByteCountWrite");
    if (const auto bytes = NumberFrom(SearchedProperty(media, byteKey).get()))
        return static_cast<uint32_t>(*bytes);
    const auto blockSize = NumberFrom(OwnProperty(media, CFSTR("Preferred Block Size")).get());
    const CFStringRef blockKey = read ? CFSTR("IOMaximumBlockCountRead") : CFSTR("IOMaximumBlockCountWrite");
    const auto blocks = blockSize ? NumberFrom(SearchedProperty(media, blockKey).get()) : std::nullopt;
    return blocks ? static_cast<uint32_t>(*blocks) * static_cast<uint32_t>(*blockSize) : kUsualTransfer;
}
