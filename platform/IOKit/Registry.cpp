#include <IOKit/Registry.h>

#include <CoreFoundation/CFString.h>
#include <IOKit/Properties.h>

namespace iokit {

namespace {

constexpr uint64_t kFirstID = 0x100000100;

}

CFTypeRef Entry::property(const char* key) const
{
    return CFDictionaryGetValue(properties.get(), __CFStringMakeConstantString(key));
}

Registry::Registry()
{
    Properties properties;
    properties.dictionary("IORegistryPlanes", Properties().text("IOService", "IOService"));
    append("IORegistryEntry", "Root", "", properties.take());
}

Entry& Registry::add(Entry& parent, const std::string& className, std::string name, std::string location,
    cf::Owned<CFDictionaryRef> properties)
{
    Entry& entry = append(className, std::move(name), std::move(location), std::move(properties));
    entry.parent = &parent;
    parent.children.push_back(&entry);
    ++parent.retainCount;
    ++entry.retainCount;
    return entry;
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
    entry.id = kFirstID + fEntries.size() - 1;
    entry.retainCount = 1;
    return entry;
}

}
