#include "registry/DiskList.h"

#include <CoreFoundation/CFString.h>
#include <DiskArbitration/DiskArbitration.h>
#include <Host/TextReading.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/Properties.h>
#include <IOKit/References.h>

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <unordered_map>

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
    ContentName { "41504653-0000-11AA-AA11-00306543ECAC", "APFS Volume" },
    ContentName { "EF57347C-0000-11AA-AA11-00306543ECAC", "APFS Container Scheme" },
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

std::string ContentOf(const Entry& media)
{
    return media.conformsTo("AppleAPFSSnapshot") ? "APFS Snapshot"
                                                 : WordsFor(cf::TextOf(media.property("Content")));
}

bool IsWhole(const Entry& media) { return iokit::IsTrue(media.property("Whole")); }

/// What a partition is called, or a volume that several partitions make; "" where that only numbers it, or names the drive.
std::string OwnName(const Entry& media)
{
    const bool isNamed = !IsWhole(media) || media.conformsTo("CoreStorageLogical");
    return isNamed && !media.name.starts_with("Untitled ") ? media.name : "";
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

/// The nearest media above, by all ways.
std::vector<std::string> StoresOf(const Entry& media)
{
    std::vector<std::string> stores;
    std::vector<const Entry*> waiting { &media };
    std::set<const Entry*> known;
    while (!waiting.empty()) {
        const Entry& one = *waiting.back();
        waiting.pop_back();
        for (const Entry* parent : one.in(iokit::Plane::Service).parents) {
            if (!known.insert(parent).second)
                continue;
            if (const std::string name = parent->bsdName(); !name.empty())
                stores.push_back(name);
            else
                waiting.push_back(parent);
        }
    }
    std::sort(stores.begin(), stores.end(), ComesBefore);
    return stores;
}

std::string KindOf(const Entry& media, const ListedDisk& disk)
{
    const std::string location = Protocol(media, "Physical Interconnect Location");
    if (disk.isContainer())
        return "synthesized";
    if (location == "File")
        return "disk image";
    const char* const nature = disk.stores.empty() ? "physical" : "virtual";
    if (location == "Internal")
        return std::string("internal, ") + nature;
    return location == "External" ? std::string("external, ") + nature : nature;
}

/// "disk0" of "disk0s1".
std::string WholeName(const std::string& name)
{
    constexpr size_t prefix = std::string_view("disk").size();
    return name.substr(0, name.find('s', std::min(prefix, name.size())));
}

class Lister {
public:
    explicit Lister(std::shared_ptr<const iokit::Registry> registry)
        : fRegistry(std::move(registry))
    {
    }

    std::vector<ListedDisk> list()
    {
        for (const Entry* media : allMedia())
            add(*media);
        for (const ListedDisk& disk : fDisks)
            nameStores(disk);
        return std::move(fDisks);
    }

private:
    /// Those with names, in the order of people.
    std::vector<const Entry*> allMedia() const
    {
        std::vector<const Entry*> media;
        for (const Entry& entry : fRegistry->entries()) {
            if (!entry.bsdName().empty())
                media.push_back(&entry);
        }
        std::stable_sort(media.begin(), media.end(), [](const Entry* first, const Entry* second) {
            return ComesBefore(first->bsdName(), second->bsdName());
        });
        return media;
    }

    void add(const Entry& media)
    {
        const auto known = fPlaces.find(WholeName(media.bsdName()));
        if (!IsWhole(media)) {
            if (known != fPlaces.end())
                fDisks[known->second].partitions.push_back(listed(media));
            return;
        }
        if (known != fPlaces.end())
            return;
        ListedDisk disk { listed(media), '*', "", StoresOf(media), {} };
        disk.kind = KindOf(media, disk);
        if (disk.isContainer() || disk.kind == "disk image" || !disk.stores.empty())
            disk.mark = '+';
        if (disk.isContainer())
            disk.whole.volumeName = "-"; // as there is none, only volumes in it
        fPlaces.emplace(disk.whole.identifier, fDisks.size());
        fDisks.push_back(std::move(disk));
    }

    ListedMedia listed(const Entry& media) const
    {
        const io_object_t object = iokit::References::shared().hold({ fRegistry, &media });
        const cf::Owned<DADiskRef> disk(DADiskCreateFromIOMedia(nullptr, fSession.get(), object));
        IOObjectRelease(object);
        const cf::Owned<CFDictionaryRef> facts(disk ? DADiskCopyDescription(disk.get()) : nullptr);
        const auto fact = [&facts](CFStringRef key) {
            return facts ? cf::TextOf(CFDictionaryGetValue(facts.get(), key)) : "";
        };
        const std::string content = ContentOf(media);
        const std::string name = fact(kDADiskDescriptionVolumeNameKey);
        return { media.bsdName(), content.empty() ? fact(kDADiskDescriptionVolumeKindKey) : content,
            name.empty() ? OwnName(media) : name, cf::TextOf(media.property("UUID")),
            iokit::NumberOf(media.property("Size")).value_or(0) };
    }

    /// Partitions are called after what they are a part of.
    void nameStores(const ListedDisk& disk)
    {
        for (const std::string& store : disk.stores) {
            const auto place = fPlaces.find(WholeName(store));
            if (place == fPlaces.end())
                continue;
            for (ListedMedia& partition : fDisks[place->second].partitions) {
                if (partition.identifier == store)
                    partition.volumeName
                        = disk.isContainer() ? "Container " + disk.whole.identifier : disk.whole.volumeName;
            }
        }
    }

    std::shared_ptr<const iokit::Registry> fRegistry;
    cf::Owned<DASessionRef> fSession { DASessionCreate(nullptr) };
    std::vector<ListedDisk> fDisks {};
    std::unordered_map<std::string, size_t> fPlaces {}; ///< of the disks, by identifiers
};

std::string WithoutFolder(const std::string& identifier)
{
    for (const std::string_view prefix : { "/dev/rdisk", "/dev/disk" }) {
        if (identifier.starts_with(prefix))
            return "disk" + identifier.substr(prefix.size());
    }
    return identifier;
}

}

std::vector<ListedDisk> DisksOf(const std::shared_ptr<const iokit::Registry>& registry)
{
    return Lister(registry).list();
}

std::vector<ListedDisk> DisksNamed(const std::vector<ListedDisk>& disks, const std::string& identifier)
{
    const std::string name = WithoutFolder(identifier);
    for (const ListedDisk& disk : disks) {
        if (disk.whole.identifier == name)
            return { disk };
        for (const ListedMedia& partition : disk.partitions) {
            if (partition.identifier == name)
                return { { partition, ' ', disk.kind, {}, {} } };
        }
    }
    return {};
}
