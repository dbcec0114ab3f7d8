#include <IOKit/HostMedia.h>

#include <IOKit/HostTable.h>
#include <IOKit/PartitionContents.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <vector>

namespace iokit {

namespace {

constexpr uint64_t kSectorSize = 512; // of the kernel's sizes and places, whatever the disk's own

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
    std::optional<uint64_t> start; ///< in the kernel's sectors
    TableEntry facts;
};

struct Medium {
    const BlockDevice& disk;
    const MediaTraits& traits;
    PartitionTable table;
    std::vector<Partition> partitions;

    bool hasTable() const { return !table.type.empty() || !partitions.empty(); }
    std::string name() const { return "disk" + std::to_string(traits.unit); }
};

/// What has to do with all the media of a disk.
struct Sink {
    Registry& registry;
    MediaByName& known;

    Entry& add(Entry& above, const char* className, const std::string& name, const std::string& location,
        const BlockDevice& device, const std::string& bsdName, Properties& properties)
    {
        Entry& entry = registry.add(above, className, name, location, properties.take());
        registry.setDeviceFile(bsdName, device.node());
        known[device.name()] = &entry;
        return entry;
    }
};

std::optional<uint64_t> Bytes(std::optional<uint64_t> sectors)
{
    return sectors ? std::optional(*sectors * kSectorSize) : std::nullopt;
}

/// Whether something is put together from it, as a volume group is.
bool HasHolders(const BlockDevice& device)
{
    return !device.host().names(device.folder() + "/holders").empty();
}

/// The properties of every medium.
Properties MediaProperties(const Medium& medium, const BlockDevice& device, const std::string& bsdName)
{
    const auto isReadOnly = device.number("ro");
    Properties properties;
    properties.text("BSD Name", bsdName)
        .number("BSD Unit", medium.traits.unit)
        .number("BSD Major", device.majorNumber())
        .number("BSD Minor", device.minorNumber())
        .number("Size", Bytes(device.sectors()))
        .number("Preferred Block Size", medium.traits.blockSize)
        .flag("Removable", medium.traits.isRemovable)
        .flag("Ejectable", medium.traits.isEjectable);
    if (isReadOnly)
        properties.flag("Writable", *isReadOnly == 0);
    return properties;
}

Entry& AddWhole(Sink& sink, Entry& above, const Medium& medium)
{
    const auto* const optical = std::find_if(kOpticalMedia.begin(), kOpticalMedia.end(),
        [&medium](const OpticalMedium& one) { return medium.disk.udev(one.property) == "1"; });
    const char* const className = optical != kOpticalMedia.end() ? optical->className : "IOMedia";
    Properties properties = MediaProperties(medium, medium.disk, medium.name());
    properties.flag("Whole", true)
        .flag("Leaf", !medium.hasTable() && !HasHolders(medium.disk))
        .plainText("Content", PartitionSchemeOfType(medium.table.type).content)
        .plainText("Content Hint", "");
    return sink.add(above, className, medium.traits.name, "", medium.disk, medium.name(), properties);
}

Entry& AddScheme(Registry& registry, Entry& whole, const Medium& medium)
{
    const PartitionScheme& kind = PartitionSchemeOfType(medium.table.type);
    Properties properties;
    properties.text("Content Mask", kind.content).text("UUID", UUIDText(medium.table.uuid));
    Entry& scheme = registry.add(whole, kind.className, kind.className, "", properties.take());
    // Nobody is to look for drivers for a table as such.
    scheme.service->registered = false;
    scheme.service->matched = false;
    return scheme;
}

void AddPartition(Sink& sink, Entry& scheme, const Medium& medium, const Partition& partition)
{
    const std::string number = std::to_string(partition.facts.number);
    const std::string bsdName = medium.name() + 's' + number;
    const std::string content = PartitionContent(partition.facts.type);
    const std::string name = partition.facts.name.empty() ? "Untitled " + number : partition.facts.name;
    Properties properties = MediaProperties(medium, partition.device, bsdName);
    properties.flag("Whole", false)
        .flag("Leaf", !HasHolders(partition.device))
        .number("Partition ID", partition.facts.number)
        .number("Base", Bytes(partition.start))
        .plainText("Content", content)
        .plainText("Content Hint", content)
        .text("UUID", UUIDText(partition.facts.uuid));
    sink.add(scheme, "IOMedia", name, number, partition.device, bsdName, properties);
}

/// What the table says, as udev or else the disk has it; of the name the kernel may know, too.
TableEntry FactsOf(const BlockDevice& partition, TableEntry facts)
{
    if (partition.isKnownToUdev()) {
        facts.type = partition.udev("ID_PART_ENTRY_TYPE");
        facts.name = partition.udev("ID_PART_ENTRY_NAME");
        facts.uuid = partition.udev("ID_PART_ENTRY_UUID");
    }
    if (facts.name.empty())
        facts.name = partition.uevent("PARTNAME");
    return facts;
}

std::vector<Partition> PartitionsOf(const BlockDevice& disk, const PartitionTable& table)
{
    std::vector<Partition> partitions;
    for (const std::string& name : disk.host().names(disk.folder())) {
        const auto number = name.starts_with(disk.name()) ? disk.number(name + "/partition") : std::nullopt;
        if (!number)
            continue;
        BlockDevice device(disk.host(), disk.folder() + '/' + name);
        const auto start = device.number("start");
        TableEntry facts = FactsOf(device, table.at(*number, start.value_or(0)));
        if (!IsPartitionFrame(facts.type))
            partitions.push_back({ std::move(device), start, std::move(facts) });
    }
    return partitions;
}

}

void AddMedia(
    Registry& registry, Entry& above, const BlockDevice& disk, const MediaTraits& traits, MediaByName& known)
{
    Medium medium { disk, traits, TableOf(disk), {} };
    medium.partitions = PartitionsOf(disk, medium.table);
    if (medium.table.type.empty() && !medium.partitions.empty())
        medium.table.type = medium.partitions.front().device.udev("ID_PART_ENTRY_SCHEME");
    Sink sink { registry, known };
    Entry& whole = AddWhole(sink, above, medium);
    if (!medium.hasTable())
        return;
    Entry& scheme = AddScheme(registry, whole, medium);
    for (const Partition& partition : medium.partitions)
        AddPartition(sink, scheme, medium, partition);
}

}
