#include <IOKit/HostTable.h>

#include <Host/Descriptor.h>

#include <algorithm>
#include <array>
#include <blkid/blkid.h>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace iokit {

namespace {

struct ProbeDeleter {
    void operator()(blkid_probe probe) const { blkid_free_probe(probe); }
};
using Probe = std::unique_ptr<std::remove_pointer_t<blkid_probe>, ProbeDeleter>;

std::string Text(const char* text) { return text != nullptr ? text : ""; }

/// Whether a file is the disk, and not one that is left of another or has been made by mistake.
bool IsOf(const BlockDevice& disk, int file)
{
    struct stat status { };
    if (fstat(file, &status) != 0)
        return false;
    if (S_ISBLK(status.st_mode))
        return disk.majorNumber() == major(status.st_rdev) && disk.minorNumber() == minor(status.st_rdev);
    const uint64_t sectors = disk.sectors().value_or(0);
    return S_ISREG(status.st_mode) && static_cast<uint64_t>(status.st_size) == sectors * 512;
}

/// Numbers of types are written as udev does.
std::string TypeOf(blkid_partition partition)
{
    if (const char* const text = blkid_partition_get_type_string(partition))
        return text;
    std::array<char, 16> number {};
    std::snprintf(
        number.data(), number.size(), "0x%x", static_cast<unsigned>(blkid_partition_get_type(partition)));
    return number.data();
}

PartitionTable TableIn(blkid_partlist list)
{
    const blkid_parttable table = blkid_partlist_get_table(list);
    if (table == nullptr)
        return {};
    PartitionTable found { Text(blkid_parttable_get_type(table)), Text(blkid_parttable_get_id(table)), {} };
    const int count = blkid_partlist_numof_partitions(list);
    for (int i = 0; i < count; ++i) {
        const blkid_partition partition = blkid_partlist_get_partition(list, i);
        found.entries.push_back({ static_cast<uint64_t>(blkid_partition_get_partno(partition)),
            static_cast<uint64_t>(blkid_partition_get_start(partition)), TypeOf(partition),
            CleanLine(Text(blkid_partition_get_name(partition))),
            Text(blkid_partition_get_uuid(partition)) });
    }
    return found;
}

PartitionTable ReadTable(const BlockDevice& disk)
{
    const std::string path = disk.host().path(disk.node().substr(1));
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file || !IsOf(disk, file.get()))
        return {};
    const Probe probe(blkid_new_probe());
    if (!probe || blkid_probe_set_device(probe.get(), file.get(), 0, 0) != 0)
        return {};
    blkid_probe_enable_superblocks(probe.get(), 0);
    blkid_probe_enable_partitions(probe.get(), 1);
    const blkid_partlist list = blkid_probe_get_partitions(probe.get());
    return list != nullptr ? TableIn(list) : PartitionTable {};
}

}

TableEntry PartitionTable::at(uint64_t number, uint64_t start) const
{
    const auto entry = std::find_if(entries.begin(), entries.end(),
        [&](const TableEntry& one) { return one.number == number && one.start == start; });
    return entry != entries.end() ? *entry : TableEntry { .number = number, .start = start };
}

PartitionTable TableOf(const BlockDevice& disk)
{
    if (!disk.isKnownToUdev())
        return ReadTable(disk);
    return { disk.udev("ID_PART_TABLE_TYPE"), disk.udev("ID_PART_TABLE_UUID"), {} };
}

}
