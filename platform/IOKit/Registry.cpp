#include <IOKit/Registry.h>

#include <CoreFoundation/CFString.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>

namespace iokit {

namespace {

/// Classes of the entries that stand for what the firmware knows of, as opposed to the drivers of it.
constexpr std::array kDescriptions { "IOPlatformExpertDevice", "IOPlatformDevice", "IOPCIDevice",
    "IODTNVRAM" };

/// Whether the firmware knows of it: it is of such a class, or bears the number that the firmware has for it.
bool IsInDeviceTree(const Entry& entry)
{
    return entry.property("AAPL,phandle") != nullptr
        || std::any_of(kDescriptions.begin(), kDescriptions.end(),
            [&entry](const char* name) { return entry.conformsTo(name); });
}

}

const Entry* Entry::parent(Plane plane) const
{
    const std::vector<const Entry*>& parents = in(plane).parents;
    return parents.empty() ? nullptr : parents.front();
}

std::string Entry::bsdName() const { return conformsTo("IOMedia") ? cf::TextOf(property("BSD Name")) : ""; }

CFTypeRef Entry::property(const char* key) const
{
    return CFDictionaryGetValue(properties.get(), __CFStringMakeConstantString(key));
}

cf::Owned<CFDictionaryRef> Entry::currentProperties() const
{
    const cf::Owned<CFTypeRef> value = live ? live->read() : nullptr;
    if (!value)
        return cf::Owned<CFDictionaryRef>(cf::Retained(properties.get()));
    cf::Owned<CFMutableDictionaryRef> all(CFDictionaryCreateMutableCopy(nullptr, 0, properties.get()));
    CFDictionarySetValue(all.get(), __CFStringMakeConstantString(live->key), value.get());
    return cf::Owned<CFDictionaryRef>(all.release());
}

cf::Owned<CFTypeRef> Entry::currentProperty(CFStringRef key) const
{
    const bool isLive = live && CFEqual(key, __CFStringMakeConstantString(live->key));
    cf::Owned<CFTypeRef> value = isLive ? live->read() : nullptr;
    return value ? std::move(value)
                 : cf::Owned<CFTypeRef>(cf::Retained(CFDictionaryGetValue(properties.get(), key)));
}

Registry::Registry(uint64_t firstID)
    : fFirstID(firstID)
{
    Properties planes;
    planes.text("IOService", "IOService").text("IODeviceTree", "IODeviceTree");
    append("IORegistryEntry", "Root", "", Properties().dictionary("IORegistryPlanes", planes).take());
}

Entry& Registry::add(Entry& parent, const std::string& className, std::string name, std::string location,
    cf::Owned<CFDictionaryRef> properties)
{
    Entry& entry = append(className, std::move(name), std::move(location), std::move(properties));
    link(parent, entry);
    return entry;
}

void Registry::link(Entry& parent, Entry& child)
{
    child.services.parents.push_back(&parent);
    parent.services.children.push_back(&child);
    ++parent.retainCount;
    ++child.retainCount;
}

void Registry::completeDeviceTree()
{
    std::vector<uint32_t> nearest(
        fEntries.size()); // the entry of the device tree at or above each: its index
    for (Entry& entry : fEntries) { // parents come before their children
        if (entry.index == 0)
            continue;
        nearest[entry.index] = nearest[entry.parent()->index];
        if (!IsInDeviceTree(entry))
            continue;
        Entry& parent = fEntries[nearest[entry.index]];
        entry.deviceTree.parents.push_back(&parent);
        parent.deviceTree.children.push_back(&entry);
        nearest[entry.index] = entry.index;
    }
}

std::string Registry::deviceFile(const std::string& bsdName) const
{
    const auto known = fDeviceFiles.find(bsdName);
    return known != fDeviceFiles.end() ? known->second : "";
}

void Registry::setDeviceFile(const std::string& bsdName, const std::string& path)
{
    fDeviceFiles[bsdName] = path;
}

Entry& Registry::append(const std::string& className, std::string name, std::string location,
    cf::Owned<CFDictionaryRef> properties)
{
    Entry& entry = fEntries.emplace_back();
    entry.name = std::move(name);
    entry.location = std::move(location);
    entry.objectClass = &fClasses.named(className);
    entry.properties = properties ? std::move(properties) : Properties().take();
    if (entry.conformsTo("IOService"))
        entry.service.emplace();
    entry.index = static_cast<uint32_t>(fEntries.size() - 1);
    entry.id = fFirstID + entry.index;
    entry.retainCount = 1;
    return entry;
}

}
