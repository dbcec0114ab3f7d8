#include "util/PartitionTypes.h"

#include "util/RegistryProperties.h"

#include <DiskArbitration/DiskArbitration.h>
#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr std::array kSchemes { "IOGUIDPartitionScheme", "IOFDiskPartitionScheme", "IOApplePartitionScheme" };

struct TypedContent {
    const char* content;
    PartitionType type;
};

constexpr std::array kContents {
    TypedContent { "48465300-0000-11AA-AA11-00306543ECAC", kPartitionHFS },
    TypedContent { "Apple_HFS", kPartitionHFS },
    TypedContent { "FA709C7E-65B1-4593-BFD5-E71D61DE9B02", kPartitionKelvaneRAID },
    TypedContent { "Apple_Boot_Kelvane_Volume", kPartitionKelvaneRAID },
    TypedContent { "52414944-0000-11AA-AA11-00306543ECAC", kPartitionAppleRAID },
    TypedContent { "Apple_Boot_RAID", kPartitionAppleRAID },
    TypedContent { "Apple_RAID", kPartitionAppleRAID },
    TypedContent { "53746F72-6167-11AA-AA11-00306543ECAC", kPartitionCoreStorage },
    TypedContent { "7C3457EF-0000-11AA-AA11-00306543ECAC", kPartitionAPFS },
    TypedContent { "EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", kPartitionMicrosoftBasicData },
    TypedContent { "Windows_NTFS", kPartitionWindowsNTFS },
};

bool IsOwnString(io_registry_entry_t media, CFStringRef key, CFStringRef text)
{
    return IsString(OwnProperty(media, key).get(), text);
}

IORef Iterator(io_registry_entry_t entry, IOOptionBits options)
{
    IORef iterator;
    IORegistryEntryCreateIterator(entry, kIOServicePlane, options, iterator.receive());
    return iterator;
}

bool IsScheme(io_registry_entry_t entry)
{
    return std::any_of(kSchemes.begin(), kSchemes.end(),
        [entry](const char* name) { return IOObjectConformsTo(entry, name) != 0; });
}

/// @return 0 for none.
IORef SchemeOf(io_registry_entry_t disk)
{
    const IORef children = Iterator(disk, 0);
    IORef child(IOIteratorNext(children.get()));
    while (child && !IsScheme(child.get()))
        child = IORef(IOIteratorNext(children.get()));
    return child;
}

PartitionType TypeOf(io_registry_entry_t partition)
{
    if (IOObjectConformsTo(partition, "IOMedia") == 0)
        return kPartitionUnknown;
    std::array<char, 64> content {};
    CopyASCII(OwnProperty(partition, CFSTR("Content")).get(), content.data(), content.size());
    const auto* const known = std::find_if(kContents.begin(), kContents.end(),
        [&content](const TypedContent& one) { return std::strcmp(one.content, content.data()) == 0; });
    return known != kContents.end() ? known->type : kPartitionUnknown;
}

/// The medium of a BSD name.
IORef MediaNamed(DASessionRef session, const char* bsdName)
{
    const CFRef<DADiskRef> disk(DADiskCreateFromBSDName(kCFAllocatorDefault, session, bsdName));
    return IORef(disk ? DADiskCopyIOMedia(disk.get()) : 0);
}

}

uint32_t VolumePartitionTypeOnDisk(io_registry_entry_t disk)
{
    const IORef scheme = SchemeOf(disk);
    const IORef partitions = Iterator(scheme.get(), 0);
    PartitionType type = kPartitionUnknown;
    while (type == kPartitionUnknown) {
        const IORef partition(IOIteratorNext(partitions.get()));
        if (!partition)
            break;
        type = TypeOf(partition.get());
    }
    return type;
}

bool IsKelvane_Volume(io_registry_entry_t media)
{
    return static_cast<bool>(SearchedProperty(media, CFSTR("Kelvane Volume ID")));
}

bool IsAppleRAID_Volume(io_registry_entry_t media)
{
    const CFRef<CFTypeRef> className = SearchedProperty(media, CFSTR("IOClass"));
    return IsString(className.get(), CFSTR("AppleRAID"))
        || IsString(className.get(), CFSTR("AppleRAIDMember"));
}

bool IsCoreStorageVolume(io_registry_entry_t media)
{
    return IsTrue(SearchedProperty(media, CFSTR("CoreStorage")).get());
}

bool IsAPFS_Container(io_registry_entry_t media)
{
    return IsOwnString(media, CFSTR("Content"), CFSTR("EF57347C-0000-11AA-AA11-00306543ECAC"));
}

bool IsIOMediaContainingAPFS_Container(io_registry_entry_t media)
{
    return IsOwnString(media, CFSTR("Content"), CFSTR("7C3457EF-0000-11AA-AA11-00306543ECAC"));
}

bool IsAPFS_Volume(io_registry_entry_t media)
{
    return IsOwnString(media, CFSTR("Content"), CFSTR("41504653-0000-11AA-AA11-00306543ECAC"));
}

uint32_t APFS_VolumeRole(io_registry_entry_t media)
{
    const CFRef<CFTypeRef> property = OwnProperty(media, CFSTR("Role"));
    const auto roles = CFDynamicCast<CFArrayRef>(property.get(), CFArrayGetTypeID());
    const bool hasRoles = roles != nullptr && CFArrayGetCount(roles) > 0;
    const auto role = CFDynamicCast<CFStringRef>(
        hasRoles ? CFArrayGetValueAtIndex(roles, 0) : nullptr, CFStringGetTypeID());
    if (role == nullptr)
        return kAPFSRoleNone;
    if (IsString(role, CFSTR("PreBoot")))
        return kAPFSRolePreBoot;
    if (IsString(role, CFSTR("Recovery")))
        return kAPFSRoleRecovery;
    return IsString(role, CFSTR("VM")) ? kAPFSRoleVM : kAPFSRoleOther;
}

bool CreateAPFS_ContainerFromIOMediaObject(io_registry_entry_t partition, io_registry_entry_t* container)
{
    IORef found;
    if (IsIOMediaContainingAPFS_Container(partition)) {
        const IORef descendants = Iterator(partition, kIORegistryIterateRecursively);
        found = IORef(IOIteratorNext(descendants.get()));
        while (found && !IsAPFS_Container(found.get()))
            found = IORef(IOIteratorNext(descendants.get()));
    }
    const bool isFound = static_cast<bool>(found);
    if (container != nullptr)
        *container = found.release();
    return isFound;
}

bool CreateAPFS_ContainerFromIOMediaObjectWithBSD_Names(const char* partition, char* destination, size_t size)
{
    const CFRef<DASessionRef> session(DASessionCreate(kCFAllocatorDefault));
    if (!session || partition == nullptr)
        return false;
    const IORef media = MediaNamed(session.get(), partition);
    IORef container;
    if (!CreateAPFS_ContainerFromIOMediaObject(media.get(), container.receive()))
        return false;
    const CFRef<DADiskRef> disk(DADiskCreateFromIOMedia(kCFAllocatorDefault, session.get(), container.get()));
    const char* const name = disk ? DADiskGetBSDName(disk.get()) : nullptr;
    if (name != nullptr && std::strlen(name) < size)
        CopyText(destination, name, size);
    return name != nullptr;
}
