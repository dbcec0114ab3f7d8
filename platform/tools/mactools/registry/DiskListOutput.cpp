#include "registry/DiskList.h"

#include <CoreFoundation/CFArray.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace {

using Array = cf::Owned<CFMutableArrayRef>;

constexpr const char* kHeading
    = "   #:                       TYPE NAME                    SIZE       IDENTIFIER\n";

bool IsFirstByte(char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80; }

/// @return spaces that fill the text up to a width in characters.
std::string Padding(const std::string& text, size_t width)
{
    const auto count = static_cast<size_t>(std::count_if(text.begin(), text.end(), IsFirstByte));
    return std::string(width - std::min(width, count), ' ');
}

/// The text, or as much of it as leaves room for what says that there is more.
std::string Cut(const std::string& text, size_t width)
{
    constexpr std::string_view more = "...";
    if (std::count_if(text.begin(), text.end(), IsFirstByte) <= static_cast<std::ptrdiff_t>(width))
        return text;
    size_t left = width - more.size();
    const auto isPast = [&left](char c) { return IsFirstByte(c) && left-- == 0; };
    return std::string(text.begin(), std::find_if(text.begin(), text.end(), isPast)).append(more);
}

void PrintLine(std::ostream& out, size_t number, char mark, const ListedMedia& media)
{
    const std::string index = std::to_string(number);
    constexpr size_t nameWidth = 23;
    const std::string size = SizeText(media.size);
    const std::string name = Cut(media.volumeName, nameWidth);
    out << Padding(index, 4) << index << ": " << Padding(media.content, 26) << media.content << ' ' << name
        << Padding(name, nameWidth) << mark << size << Padding(size, 10) << ' ' << media.identifier << '\n';
}

void PrintStores(std::ostream& out, const ListedDisk& disk)
{
    constexpr size_t column = 33;
    if (disk.stores.empty())
        return;
    out << std::string(column, ' ') << (disk.isContainer() ? "Physical Store" : "Logical Volume on");
    for (const std::string& store : disk.stores)
        out << (&store == &disk.stores.front() ? " " : ", ") << store;
    out << '\n';
}

Array NewArray() { return Array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks)); }

void Append(const Array& array, const std::string& text)
{
    const cf::Owned<CFStringRef> string(cf::MakeString(text));
    if (string && !text.empty())
        CFArrayAppendValue(array.get(), string.get());
}

iokit::Properties Described(const ListedMedia& media)
{
    iokit::Properties properties;
    properties.text("DeviceIdentifier", media.identifier)
        .number("Size", media.size)
        .plainText("Content", media.content)
        .text("VolumeName", media.volumeName)
        .text("DiskUUID", media.uuid);
    return properties;
}

Array DescribedPartitions(const ListedDisk& disk)
{
    Array partitions = NewArray();
    for (const ListedMedia& partition : disk.partitions)
        CFArrayAppendValue(partitions.get(), Described(partition).take().get());
    return partitions;
}

Array DescribedStores(const ListedDisk& disk)
{
    Array stores = NewArray();
    for (const std::string& store : disk.stores)
        CFArrayAppendValue(stores.get(), iokit::Properties().text("DeviceIdentifier", store).take().get());
    return stores;
}

/// What is in a container are volumes, and of itself it has no name.
cf::Owned<CFDictionaryRef> Described(const ListedDisk& disk)
{
    ListedMedia whole = disk.whole;
    if (disk.isContainer())
        whole.volumeName.clear();
    iokit::Properties properties = Described(whole);
    if (disk.isContainer())
        properties.array("APFSPhysicalStores", DescribedStores(disk).get());
    return properties
        .array(disk.isContainer() ? "APFSVolumes" : "Partitions", DescribedPartitions(disk).get())
        .take();
}

}

std::string SizeText(uint64_t bytes)
{
    constexpr std::array units { "KB", "MB", "GB", "TB", "PB", "EB" };
    if (bytes < 1000)
        return std::to_string(bytes) + " B";
    auto size = static_cast<double>(bytes) / 1000;
    size_t unit = 0;
    for (; size >= 999.95 && unit + 1 < units.size(); ++unit) // what would be shown as 1000.0
        size /= 1000;
    std::array<char, 32> text {};
    std::snprintf(text.data(), text.size(), "%.1f %s", size, units[unit]);
    return text.data();
}

void PrintDisks(std::ostream& out, const std::vector<ListedDisk>& disks)
{
    for (const ListedDisk& disk : disks) {
        out << "/dev/" << disk.whole.identifier << " (" << disk.kind << "):\n" << kHeading;
        PrintLine(out, 0, disk.mark, disk.whole);
        PrintStores(out, disk);
        for (size_t i = 0; i < disk.partitions.size(); ++i)
            PrintLine(out, i + 1, ' ', disk.partitions[i]);
        out << '\n';
    }
}

cf::Owned<CFDictionaryRef> DisksAsPropertyList(const std::vector<ListedDisk>& disks)
{
    const Array all = NewArray();
    const Array described = NewArray();
    const Array volumes = NewArray();
    const Array wholes = NewArray();
    for (const ListedDisk& disk : disks) {
        Append(all, disk.whole.identifier);
        if (disk.mark != ' ')
            Append(wholes, disk.whole.identifier);
        Append(volumes, disk.isContainer() ? "" : disk.whole.volumeName);
        for (const ListedMedia& partition : disk.partitions) {
            Append(all, partition.identifier);
            Append(volumes, partition.volumeName);
        }
        CFArrayAppendValue(described.get(), Described(disk).get());
    }
    iokit::Properties list;
    list.array("AllDisks", all.get())
        .array("AllDisksAndPartitions", described.get())
        .array("VolumesFromDisks", volumes.get())
        .array("WholeDisks", wholes.get());
    return list.take();
}
