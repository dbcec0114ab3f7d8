#include "registry/DiskList.h"

#include <CoreFoundation/CFArray.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

using Array = cf::Owned<CFMutableArrayRef>;

constexpr const char* kHeading
    = "   #:                       TYPE NAME                    SIZE       IDENTIFIER\n";

/// @return spaces that fill the text up to a width in characters.
std::string Padding(const std::string& text, size_t width)
{
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80; };
    const auto count = static_cast<size_t>(std::count_if(text.begin(), text.end(), isFirstByte));
    return std::string(width - std::min(width, count), ' ');
}

void PrintLine(std::ostream& out, size_t number, char mark, const ListedMedia& media)
{
    const std::string index = std::to_string(number);
    const std::string size = SizeText(media.size);
    out << Padding(index, 4) << index << ": " << Padding(media.content, 26) << media.content << ' '
        << media.volumeName << Padding(media.volumeName, 23) << mark << size << Padding(size, 10) << ' '
        << media.identifier << '\n';
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
        Append(volumes, disk.whole.volumeName);
        for (const ListedMedia& partition : disk.partitions) {
            Append(all, partition.identifier);
            Append(volumes, partition.volumeName);
        }
        const Array partitions = DescribedPartitions(disk);
        CFArrayAppendValue(
            described.get(), Described(disk.whole).array("Partitions", partitions.get()).take().get());
    }
    iokit::Properties list;
    list.array("AllDisks", all.get())
        .array("AllDisksAndPartitions", described.get())
        .array("VolumesFromDisks", volumes.get())
        .array("WholeDisks", wholes.get());
    return list.take();
}
