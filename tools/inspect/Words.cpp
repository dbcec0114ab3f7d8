#include "tools/inspect/Words.h"

#include "util/CFText.h"
#include "util/PartitionTypes.h"
#include "util/RegistryProperties.h"

namespace {

constexpr std::array kPartitionTypes {
    Word { kPartitionHFS, "HFS" },
    Word { kPartitionAppleRAID, "Apple RAID" },
    Word { kPartitionKelvaneRAID, "Kelvane RAID" },
    Word { kPartitionCoreStorage, "CoreStorage" },
    Word { kPartitionAPFS, "APFS" },
    Word { kPartitionMicrosoftBasicData, "Microsoft" },
    Word { kPartitionWindowsNTFS, "NTFS" },
};

constexpr std::array kRoles {
    Word { kAPFSRoleOther, "other" },
    Word { kAPFSRolePreBoot, "preboot" },
    Word { kAPFSRoleRecovery, "recovery" },
    Word { kAPFSRoleVM, "VM" },
};

/// A partition with a GUID in the place of a name.
struct Content {
    const char* guid;
    const char* word;
    bool isForVolume;
};

constexpr std::array kContents {
    Content { "C12A7328-F81F-11D2-BA4B-00A0C93EC93B", "EFI", true },
    Content { "426F6F74-0000-11AA-AA11-00306543ECAC", "Apple boot", true },
    Content { "48465300-0000-11AA-AA11-00306543ECAC", "HFS", true },
    Content { "52414944-0000-11AA-AA11-00306543ECAC", "Apple RAID", false },
    Content { "53746F72-6167-11AA-AA11-00306543ECAC", "CoreStorage", false },
    Content { "7C3457EF-0000-11AA-AA11-00306543ECAC", "APFS container", false },
    Content { "41504653-0000-11AA-AA11-00306543ECAC", "APFS volume", true },
    Content { "69646961-6700-11AA-AA11-00306543ECAC", "APFS container", false },
    Content { "52637672-7900-11AA-AA11-00306543ECAC", "APFS container", false },
    Content { "FA709C7E-65B1-4593-BFD5-E71D61DE9B02", "Kelvane RAID", false },
    Content { "EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", "Microsoft", true },
    Content { "0FC63DAF-8483-4772-8E79-3D69D8477DE4", "Linux", true },
    Content { "0657FD6D-A4AB-43C4-84E5-0933C84B4F4F", "Linux swap", false },
};

constexpr std::array<std::string_view, 6> kNamesForVolumes { "Apple_HFS", "Apple_HFSX", "Apple_Boot",
    "DOS_FAT_16", "DOS_FAT_32", "Windows_NTFS" };

std::string ContentOf(io_registry_entry_t media)
{
    return StdString(
        CFDynamicCast<CFStringRef>(OwnProperty(media, CFSTR("Content")).get(), CFStringGetTypeID()));
}

const Content* KnownContent(const std::string& content)
{
    const auto* const known = std::find_if(
        kContents.begin(), kContents.end(), [&content](const Content& one) { return content == one.guid; });
    return known != kContents.end() ? known : nullptr;
}

}

Value DiskPartitionWord(io_registry_entry_t disk)
{
    return Worded(kPartitionTypes, VolumePartitionTypeOnDisk(disk));
}

Value PartitionWord(io_registry_entry_t partition)
{
    const std::string content = ContentOf(partition);
    if (const Content* const known = KnownContent(content))
        return known->word;
    const CFRef<CFStringRef> text = CFText(content);
    const CFRef<CFUUIDRef> guid(text ? CFUUIDCreateFromString(kCFAllocatorDefault, text.get()) : nullptr);
    return guid ? Value() : TextOrNone(content);
}

bool IsMeantForVolume(io_registry_entry_t media)
{
    const std::string content = ContentOf(media);
    const Content* const known = KnownContent(content);
    return known != nullptr
        ? known->isForVolume
        : std::find(kNamesForVolumes.begin(), kNamesForVolumes.end(), content) != kNamesForVolumes.end();
}

Value APFSRoleWord(io_registry_entry_t media)
{
    return IsAPFS_Volume(media) ? Worded(kRoles, APFS_VolumeRole(media)) : Value();
}
