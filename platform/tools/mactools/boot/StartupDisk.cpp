#include "boot/StartupDisk.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFString.h>
#include <DiskArbitration/HostVolumes.h>
#include <IOKit/CurrentRegistry.h>
#include <IOKit/Matching.h>
#include <IOKit/Properties.h>
#include <sys/mount.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string_view>
#include <sys/stat.h>

using iokit::Entry;
using iokit::Held;

namespace {

constexpr std::string_view kSystemPartition = "C12A7328-F81F-11D2-BA4B-00A0C93EC93B";

Held FirstMedia(const std::function<bool(const Entry&)>& fits)
{
    const auto registry = iokit::CurrentRegistry();
    for (const Entry& entry : registry->entries()) {
        if (!entry.bsdName().empty() && fits(entry))
            return { registry, &entry };
    }
    return {};
}

Held MediaOn(dev_t device)
{
    return FirstMedia([device](const Entry& media) { return da::DeviceOf(media) == device; });
}

std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

/// Without what an XML text cannot hold, and without backslashes, which separate folders there.
bool CanBeWritten(const std::string& path)
{
    const cf::Owned<CFStringRef> text(cf::MakeString(path));
    return text && CFPropertyListIsValid(text.get(), kCFPropertyListXMLFormat_v1_0)
        && path.find_first_of("\\\r\n\t") == std::string::npos;
}

std::string WhatIdentifies(const Entry& media)
{
    const std::string uuid = cf::TextOf(media.property("UUID"));
    if (!uuid.empty())
        return "<key>UUID</key><string>" + Escaped(uuid) + "</string>";
    return "<key>BSD Name</key><string>" + media.bsdName() + "</string><key>Size</key><integer>"
        + std::to_string(iokit::NumberOf(media.property("Size")).value_or(0)) + "</integer>";
}

std::string FolderElement(std::string folder)
{
    std::replace(folder.begin(), folder.end(), '/', '\\');
    return "<dict><key>IOEFIDevicePathType</key><string>MediaFilePath</string><key>Path</key><string>"
        + Escaped(folder) + "</string></dict>";
}

/// @return the dictionary that the text begins with; null where it is none.
cf::Owned<CFDictionaryRef> FirstElement(const std::string& text)
{
    // What firmware keeps has a null at the end. Macs leave out what goes around every property list.
    const std::string whole = "<plist version=\"1.0\">" + text.substr(0, text.find('\0')) + "</plist>";
    const cf::Owned<CFDataRef> data(CFDataCreate(
        nullptr, reinterpret_cast<const UInt8*>(whole.data()), static_cast<CFIndex>(whole.size())));
    const cf::Owned<CFTypeRef> list(
        CFPropertyListCreateWithData(nullptr, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
    if (!list || CFGetTypeID(list.get()) != CFArrayGetTypeID()
        || CFArrayGetCount(static_cast<CFArrayRef>(list.get())) == 0)
        return nullptr;
    const CFTypeRef first = CFArrayGetValueAtIndex(static_cast<CFArrayRef>(list.get()), 0);
    return CFGetTypeID(first) == CFDictionaryGetTypeID()
        ? cf::Owned<CFDictionaryRef>(static_cast<CFDictionaryRef>(CFRetain(first)))
        : nullptr;
}

/// The partition table that the medium lies in or, of a whole disk, has; null for none.
const Entry* TableOf(const Entry& media)
{
    for (const Entry* below : media.children()) {
        if (below->conformsTo("IOPartitionScheme"))
            return below;
    }
    const Entry* one = media.parent();
    while (one != nullptr && !one->conformsTo("IOPartitionScheme"))
        one = one->parent();
    return one;
}

}

Held MediaWith(const std::string& path)
{
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0)
        return {};
    Held media = MediaOn(info.st_dev);
    struct statfs mount = {};
    if (media || statfs(path.c_str(), &mount) != 0)
        return media;
    // Some file systems number their files' devices themselves; their mounts tell where they come from.
    struct stat source = {};
    const char* const device = static_cast<const char*>(mount.f_mntfromname);
    return stat(device, &source) == 0 && S_ISBLK(source.st_mode) ? MediaOn(source.st_rdev) : Held();
}

std::optional<std::string> StartupDiskText(const Entry& media, const std::string& folder)
{
    if (!CanBeWritten(folder))
        return {};
    return "<array><dict><key>IOMatch</key><dict><key>IOProviderClass</key><string>IOMedia</string>"
           "<key>IOPropertyMatch</key><dict>"
        + WhatIdentifies(media) + "</dict></dict><key>BLLastBSDName</key><string>" + media.bsdName()
        + "</string></dict>" + (folder.empty() ? "" : FolderElement(folder)) + "</array>";
}

std::optional<Held> StartupDiskIn(const std::string& text)
{
    const cf::Owned<CFDictionaryRef> told = FirstElement(text);
    const CFTypeRef matching = told ? CFDictionaryGetValue(told.get(), CFSTR("IOMatch")) : nullptr;
    if (matching == nullptr || CFGetTypeID(matching) != CFDictionaryGetTypeID())
        return {};
    const auto fits = [matching](const Entry& media) {
        return iokit::Matches(media, static_cast<CFDictionaryRef>(matching));
    };
    // Of copies of a disk, which have the same UUIDs, the one that was meant.
    const std::string last = cf::TextOf(CFDictionaryGetValue(told.get(), CFSTR("BLLastBSDName")));
    Held media = FirstMedia([&](const Entry& one) { return one.bsdName() == last && fits(one); });
    return media ? media : FirstMedia(fits);
}

std::vector<std::string> StartPartitions(const Entry& media)
{
    std::vector<std::string> partitions;
    const auto add = [&partitions](const Entry& one) {
        const std::string uuid = cf::TextOf(one.property("UUID"));
        if (!uuid.empty() && !one.bsdName().empty())
            partitions.push_back(uuid);
    };
    add(media);
    if (const Entry* const table = TableOf(media)) {
        for (const Entry* one : table->children()) {
            if (cf::TextOf(one->property("Content")) == kSystemPartition)
                add(*one);
        }
    }
    return partitions;
}
