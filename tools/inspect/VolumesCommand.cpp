#include "tools/inspect/Columns.h"
#include "tools/inspect/Commands.h"
#include "tools/inspect/Media.h"
#include "tools/inspect/VolumeFields.h"
#include "tools/inspect/Words.h"
#include "util/CFText.h"
#include "util/Disks.h"
#include "util/Files.h"
#include "util/VolumeOperations.h"

#include <DiskArbitration/DiskArbitration.h>
#include <array>
#include <set>

namespace {

constexpr std::array kColumns {
    Column { "name", "Name", 0 },
    Column { "volumeName", "Volume", 3 },
    Column { "kind", "Kind", 2 },
    Column { "volumePath", "Path", 1 },
    Column { "size", "Medium", 6 },
    Column { "volumeSize", "Size", 4 },
    Column { "volumeFree", "Free", 9 },
    Column { "volumeAvailable", "Available", 5 },
    Column { "partitionType", "Partition", 8 },
    Column { "role", "Role", 7 },
    Column { "isWritable", "Writable", 10 },
    Column { "isRemovable", "Removable", 12 },
    Column { "label", "Label", 11 },
};

/// A medium, and what DiskArbitration tells of it and of the volume on it.
struct Volume {
    const Medium& medium;
    CFRef<CFDictionaryRef> description;
    std::string path; ///< "" where it is not mounted

    CFTypeRef told(CFStringRef key) const
    {
        return description ? CFDictionaryGetValue(description.get(), key) : nullptr;
    }
    Value flag(CFStringRef key) const
    {
        const auto boolean = CFDynamicCast<CFBooleanRef>(told(key), CFBooleanGetTypeID());
        return boolean != nullptr ? Value(CFBooleanGetValue(boolean) != 0) : Value();
    }
    Value text(CFStringRef key) const { return StringOrNone(told(key)); }
};

Volume VolumeOn(const Medium& medium, DASessionRef session)
{
    const CFRef<DADiskRef> disk(DADiskCreateFromIOMedia(kCFAllocatorDefault, session, medium.object.get()));
    Volume volume { medium, CFRef<CFDictionaryRef>(disk ? DADiskCopyDescription(disk.get()) : nullptr), "" };
    volume.path = FileSystemPath(
        CFDynamicCast<CFURLRef>(volume.told(kDADiskDescriptionVolumePathKey), CFURLGetTypeID()));
    return volume;
}

/// Whether it is mounted or could be. Of a recorded medium nobody tells that: then what it is for decides.
bool IsThere(const Volume& volume)
{
    const Value isMountable = volume.flag(kDADiskDescriptionVolumeMountableKey);
    if (const bool* const isIt = std::get_if<bool>(&isMountable))
        return *isIt || !volume.path.empty();
    return !volume.path.empty() || IsMeantForVolume(volume.medium.object.get());
}

Value UUIDOf(const Volume& volume)
{
    const auto uuid
        = CFDynamicCast<CFUUIDRef>(volume.told(kDADiskDescriptionVolumeUUIDKey), CFUUIDGetTypeID());
    const CFRef<CFStringRef> text(uuid != nullptr ? CFUUIDCreateString(kCFAllocatorDefault, uuid) : nullptr);
    return StringOrNone(text.get());
}

/// A tool tells it, one volume at a time.
Value IsIndexed(const Volume& volume)
{
    const bool canAsk = !volume.path.empty() && FileOrDirectoryExists("/usr/bin/mdutil", nullptr, nullptr);
    return canAsk ? Value(ReturnIndexingState(volume.path.c_str())) : Value();
}

Record Describe(const Volume& volume, bool inDetail)
{
    const Medium& medium = volume.medium;
    const io_registry_entry_t media = medium.object.get();
    io_name_t label {};
    IORegistryEntryGetName(media, label);
    uint64_t size = 0;
    GetBSDNameAndSizes(media, nullptr, nullptr, 0, &size, nullptr, nullptr);
    Record record {
        { "name", "Name", medium.name },
        { "disk", "Part of", medium.isPartition ? Value(DiskNameOf(medium)) : Value() },
        { "volumeName", "Volume name", volume.text(kDADiskDescriptionVolumeNameKey) },
        { "kind", "Kind", volume.text(kDADiskDescriptionVolumeKindKey) },
        { "volumePath", "Volume", TextOrNone(volume.path) },
        { "uuid", "UUID", UUIDOf(volume) },
        SizeField("size", "Medium size", Number(size)),
    };
    AddSpace(volume.path.c_str(), !volume.path.empty(), record);
    record.push_back({ "isMountable", "Mountable", volume.flag(kDADiskDescriptionVolumeMountableKey) });
    record.push_back({ "isWritable", "Writable", volume.flag(kDADiskDescriptionMediaWritableKey) });
    record.push_back({ "isRemovable", "Removable", volume.flag(kDADiskDescriptionMediaRemovableKey) });
    record.push_back({ "isEjectable", "Ejectable", volume.flag(kDADiskDescriptionMediaEjectableKey) });
    record.push_back({ "isIndexed", "Indexed", inDetail ? IsIndexed(volume) : Value() });
    record.push_back(
        { "partitionType", "Partition type", medium.isPartition ? PartitionWord(media) : Value() });
    record.push_back({ "role", "Role", APFSRoleWord(media) });
    record.push_back({ "label", "Label", TextOrNone(label) });
    return record;
}

/// Without labels that only repeat the volume's name or the drive's model.
Record RowOf(const Record& facts)
{
    Record row = Row(facts, kColumns);
    Field& label = row.back();
    if (IsLabelOfModel(label.value) || Shown(label) == Shown(row[1]))
        label = { label.key, label.title, std::string() };
    return row;
}

/// What may be written for the volume: its BSD name, its device's path or its own.
std::vector<std::string> NamesOf(const Volume& volume)
{
    const std::string& name = volume.medium.name;
    std::vector<std::string> names { name, "/dev/" + name, "/dev/r" + name };
    if (!volume.path.empty())
        names.insert(names.end(), { volume.path, volume.path + '/' });
    return names;
}

}

Findings FindVolumes(const Request& request)
{
    Findings findings;
    const std::set<std::string> wanted(request.operands.begin(), request.operands.end());
    findings.isTable = wanted.empty() && !request.asJSON;
    std::set<std::string> missing = wanted;
    const CFRef<DASessionRef> session(DASessionCreate(kCFAllocatorDefault));
    for (const Medium& medium : AllMedia()) {
        const Volume volume = VolumeOn(medium, session.get());
        const std::vector<std::string> names = NamesOf(volume);
        const bool isWanted = wanted.empty()
            || std::any_of(names.begin(), names.end(),
                [&wanted](const std::string& name) { return wanted.contains(name); });
        if (!isWanted || !IsThere(volume))
            continue;
        for (const std::string& name : names)
            missing.erase(name);
        const Record record = Describe(volume, !wanted.empty());
        findings.records.push_back(findings.isTable ? RowOf(record) : record);
    }
    if (findings.isTable)
        FitTerminal(findings.records, kColumns);
    for (const std::string& name : missing)
        findings.problems.push_back("no volume has the name or the path " + name);
    return findings;
}
