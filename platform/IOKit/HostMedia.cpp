#include <IOKit/HostMedia.h>

#include <IOKit/PartitionContents.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <vector>

namespace iokit {

namespace {

constexpr uint64_t kSectorSize = 512; // of the kernel's sizes and places, whatever the disk's own
constexpr uint64_t kNanosecondsPerTick = 1000000;

/// One of the counters that the kernel keeps of each disk, by its place in the line.
struct Counter {
    const char* key;
    size_t place;
    uint64_t unit;
};

constexpr std::array kCounters {
    Counter { "Operations (Read)", 0, 1 },
    Counter { "Bytes (Read)", 2, kSectorSize },
    Counter { "Total Time (Read)", 3, kNanosecondsPerTick },
    Counter { "Operations (Write)", 4, 1 },
    Counter { "Bytes (Write)", 6, kSectorSize },
    Counter { "Total Time (Write)", 7, kNanosecondsPerTick },
};

struct OpticalMedium {
    const char* property; ///< of udev's
    const char* className;
};

constexpr std::array kOpticalMedia {
    OpticalMedium { "ID_CDROM_MEDIA_BD", "IOBDMedia" },
    OpticalMedium { "ID_CDROM_MEDIA_DVD", "IODVDMedia" },
    OpticalMedium { "ID_CDROM_MEDIA", "IOCDMedia" },
};

struct Partition {
    BlockDevice device;
    uint64_t number;
};

struct Medium {
    const BlockDevice& disk;
    const MediaTraits& traits;
    std::vector<Partition> partitions;
    std::string tableType; ///< as udev names it; "" where it does not
    bool hasTable() const { return !tableType.empty() || !partitions.empty(); }
};

std::optional<uint64_t> DeviceNumber(const BlockDevice& device, bool isMinor)
{
    const TextPairs numbers = PairsOf(device.text("dev"), ':');
    if (numbers.empty())
        return {};
    const auto& [major, minor] = *numbers.begin();
    const std::optional<int64_t> number = NumberIn(isMinor ? minor : major);
    return number ? std::optional<uint64_t>(*number) : std::nullopt;
}

std::optional<uint64_t> Bytes(const BlockDevice& device, const char* attribute)
{
    const auto sectors = device.number(attribute);
    return sectors ? std::optional(*sectors * kSectorSize) : std::nullopt;
}

/// The properties of every medium.
Properties MediaProperties(const Medium& medium, const BlockDevice& device, const std::string& name)
{
    const auto isReadOnly = device.number("ro");
    Properties properties;
    properties.text("BSD Name", name)
        .number("BSD Unit", medium.traits.unit)
        .number("BSD Major", DeviceNumber(device, false))
        .number("BSD Minor", DeviceNumber(device, true))
        .number("Size", Bytes(device, "size"))
        .number("Preferred Block Size", medium.disk.number("queue/logical_block_size"))
        .flag("Removable", medium.traits.isRemovable)
        .flag("Ejectable", medium.traits.isEjectable);
    if (isReadOnly)
        properties.flag("Writable", *isReadOnly == 0);
    return properties;
}

std::string WholeName(const Medium& medium) { return "disk" + std::to_string(medium.traits.unit); }

Entry& AddWhole(Registry& registry, Entry& driver, const Medium& medium)
{
    const auto* const optical = std::find_if(kOpticalMedia.begin(), kOpticalMedia.end(),
        [&medium](const OpticalMedium& one) { return medium.disk.udev(one.property) == "1"; });
    const std::string className = optical != kOpticalMedia.end() ? optical->className : "IOMedia";
    Properties properties = MediaProperties(medium, medium.disk, WholeName(medium));
    properties.flag("Whole", true)
        .flag("Leaf", !medium.hasTable())
        .plainText("Content", PartitionSchemeOfType(medium.tableType).content)
        .plainText("Content Hint", "");
    return registry.add(driver, className, medium.traits.name, "", properties.take());
}

/// @return the name in the table, as udev or else the kernel has it; "" where there is none.
std::string NameInTable(const BlockDevice& partition)
{
    const std::string name = partition.udev("ID_PART_ENTRY_NAME");
    return name.empty() ? ValueOf(PairsOf(partition.bytes("uevent"), '='), "PARTNAME") : name;
}

void AddPartition(Registry& registry, Entry& scheme, const Medium& medium, const Partition& partition)
{
    const std::string number = std::to_string(partition.number);
    const std::string content = PartitionContent(partition.device.udev("ID_PART_ENTRY_TYPE"));
    const std::string name = NameInTable(partition.device);
    Properties properties = MediaProperties(medium, partition.device, WholeName(medium) + 's' + number);
    properties.flag("Whole", false)
        .flag("Leaf", true)
        .number("Partition ID", partition.number)
        .number("Base", Bytes(partition.device, "start"))
        .plainText("Content", content)
        .plainText("Content Hint", content)
        .text("UUID", UUIDText(partition.device.udev("ID_PART_ENTRY_UUID")));
    registry.add(scheme, "IOMedia", name.empty() ? "Untitled " + number : name, number, properties.take());
}

std::vector<Partition> PartitionsOf(const BlockDevice& disk)
{
    std::vector<Partition> partitions;
    for (const std::string& name : disk.host().names(disk.folder())) {
        const auto number = disk.number(name + "/partition");
        if (!number)
            continue;
        BlockDevice device(disk.host(), disk.folder() + '/' + name);
        if (!IsPartitionFrame(device.udev("ID_PART_ENTRY_TYPE")))
            partitions.push_back({ std::move(device), *number });
    }
    return partitions;
}

}

cf::Owned<CFDictionaryRef> DriverProperties(const BlockDevice& disk)
{
    std::istringstream line(disk.text("stat"));
    std::vector<uint64_t> counts;
    for (uint64_t count = 0; line >> count;)
        counts.push_back(count);
    Properties statistics;
    for (const Counter& counter : kCounters) {
        if (counter.place < counts.size())
            statistics.number(counter.key, counts[counter.place] * counter.unit);
    }
    return Properties().dictionary("Statistics", statistics).take();
}

void AddMedia(Registry& registry, Entry& driver, const BlockDevice& disk, const MediaTraits& traits)
{
    Medium medium { disk, traits, PartitionsOf(disk), disk.udev("ID_PART_TABLE_TYPE") };
    if (medium.tableType.empty() && !medium.partitions.empty())
        medium.tableType = medium.partitions.front().device.udev("ID_PART_ENTRY_SCHEME");
    Entry& whole = AddWhole(registry, driver, medium);
    if (!medium.hasTable())
        return;
    const PartitionScheme& kind = PartitionSchemeOfType(medium.tableType);
    Properties properties;
    properties.text("Content Mask", kind.content);
    Entry& scheme = registry.add(whole, kind.className, kind.className, "", properties.take());
    // Nobody is to look for drivers for a table as such.
    scheme.service->registered = false;
    scheme.service->matched = false;
    for (const Partition& partition : medium.partitions)
        AddPartition(registry, scheme, medium, partition);
}

}
