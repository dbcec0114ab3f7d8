#include "registry/DiskList.h"

#include <CoreFoundation/CFString.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace {

using iokit::Entry;

struct ContentName {
    std::string_view content;
    const char* name;
};

/// Types of partitions that lists have words for.
constexpr std::array kContentNames {
    ContentName { "C12A7328-F81F-11D2-BA4B-00A0C93EC93B", "EFI" },
    ContentName { "7C3457EF-0000-11AA-AA11-00306543ECAC", "Apple_APFS" },
    ContentName { "69646961-6700-11AA-AA11-00306543ECAC", "Apple_APFS_ISC" },
    ContentName { "52637672-7900-11AA-AA11-00306543ECAC", "Apple_APFS_Recovery" },
    ContentName { "48465300-0000-11AA-AA11-00306543ECAC", "Apple_HFS" },
    ContentName { "53746F72-6167-11AA-AA11-00306543ECAC", "Apple_CoreStorage" },
    ContentName { "426F6F74-0000-11AA-AA11-00306543ECAC", "Apple_Boot" },
    ContentName { "52414944-0000-11AA-AA11-00306543ECAC", "Apple_RAID" },
    ContentName { "EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", "Microsoft Basic Data" },
    ContentName { "E3C9E316-0B5C-4DB8-817D-F92DF00215AE", "Microsoft Reserved" },
    ContentName { "DE94BBA4-06D1-4D40-A16A-BFD50179D6AC", "Windows Recovery" },
    ContentName { "0FC63DAF-8483-4772-8E79-3D69D8477DE4", "Linux Filesystem" },
    ContentName { "0657FD6D-A4AB-43C4-84E5-0933C84B4F4F", "Linux Swap" },
};

std::string WordsFor(const std::string& content)
{
    const auto* const known = std::find_if(kContentNames.begin(), kContentNames.end(),
        [&content](const ContentName& one) { return one.content == content; });
    return known != kContentNames.end() ? known->name : content;
}

TextPairs UdevPropertiesOf(const Entry& media, const HostTree& host)
{
    const auto major = iokit::NumberOf(media.property("BSD Major"));
    const auto minor = iokit::NumberOf(media.property("BSD Minor"));
    if (!major || !minor)
        return {};
    return host.udev('b' + std::to_string(*major) + ':' + std::to_string(*minor));
}

ListedMedia Listed(const Entry& media, const HostTree& host)
{
    const TextPairs udev = UdevPropertiesOf(media, host);
    const std::string content = WordsFor(cf::TextOf(media.property("Content")));
    return { cf::TextOf(media.property("BSD Name")), content.empty() ? ValueOf(udev, "ID_FS_TYPE") : content,
        ValueOf(udev, "ID_FS_LABEL_ENC"), cf::TextOf(media.property("UUID")),
        iokit::NumberOf(media.property("Size")).value_or(0) };
}

/// What the nearest entry above, or this one, tells of the connection. @param key in its characteristics.
std::string Protocol(const Entry& media, const char* key)
{
    for (const Entry* one = &media; one != nullptr; one = one->parent()) {
        const CFTypeRef all = one->property("Protocol Characteristics");
        if (all != nullptr && CFGetTypeID(all) == CFDictionaryGetTypeID())
            return cf::TextOf(
                CFDictionaryGetValue(static_cast<CFDictionaryRef>(all), __CFStringMakeConstantString(key)));
    }
    return "";
}

ListedDisk ListedWhole(const Entry& media, const HostTree& host)
{
    const std::string location = Protocol(media, "Physical Interconnect Location");
    if (location == "File")
        return { Listed(media, host), '+', "disk image", {} };
    const char* kind = "physical";
    if (location == "Internal")
        kind = "internal, physical";
    if (location == "External")
        kind = "external, physical";
    return { Listed(media, host), '*', kind, {} };
}

/// Whether it is "disk0s1" of "disk0".
bool IsPartOf(const ListedMedia& partition, const ListedDisk& disk)
{
    return partition.identifier.starts_with(disk.whole.identifier + 's');
}

std::string WithoutFolder(const std::string& identifier)
{
    for (const std::string_view prefix : { "/dev/rdisk", "/dev/disk" }) {
        if (identifier.starts_with(prefix))
            return "disk" + identifier.substr(prefix.size());
    }
    return identifier;
}

}

std::vector<ListedDisk> DisksOf(const iokit::Registry& registry, const HostTree& host)
{
    std::vector<ListedDisk> disks;
    for (const Entry& entry : registry.entries()) {
        if (!entry.conformsTo("IOMedia"))
            continue;
        if (iokit::IsTrue(entry.property("Whole"))) {
            disks.push_back(ListedWhole(entry, host));
            continue;
        }
        ListedMedia partition = Listed(entry, host);
        const auto disk = std::find_if(disks.begin(), disks.end(),
            [&partition](const ListedDisk& one) { return IsPartOf(partition, one); });
        if (disk != disks.end())
            disk->partitions.push_back(std::move(partition));
    }
    std::sort(disks.begin(), disks.end(), [](const ListedDisk& first, const ListedDisk& second) {
        return ComesBefore(first.whole.identifier, second.whole.identifier);
    });
    return disks;
}

std::vector<ListedDisk> DisksNamed(const std::vector<ListedDisk>& disks, const std::string& identifier)
{
    const std::string name = WithoutFolder(identifier);
    for (const ListedDisk& disk : disks) {
        if (disk.whole.identifier == name)
            return { disk };
        for (const ListedMedia& partition : disk.partitions) {
            if (partition.identifier == name)
                return { { partition, ' ', disk.kind, {} } };
        }
    }
    return {};
}
