#include "registry/RegistryView.h"

std::string FullName(const iokit::Entry& entry)
{
    return entry.location.empty() ? entry.name : entry.name + '@' + entry.location;
}

bool RegistryView::isWanted(const iokit::Entry& entry) const
{
    if (!hasCriteria() || (!className.empty() && !entry.conformsTo(className)))
        return false;
    if (!name.empty() && name != entry.name && name != FullName(entry))
        return false;
    const cf::Owned<CFStringRef> wanted(cf::MakeString(key));
    return key.empty() || (wanted && CFDictionaryContainsKey(entry.properties.get(), wanted.get()));
}

std::vector<const iokit::Entry*> RegistryView::tops(const iokit::Registry& registry) const
{
    if (!onlySubtrees || !hasCriteria())
        return { &registry.root() };
    std::vector<const iokit::Entry*> found;
    const auto look = [&](const iokit::Entry& entry, bool) {
        if (!isWanted(entry))
            return true;
        found.push_back(&entry);
        return false;
    };
    iokit::Walk(registry.root(), look, [](const iokit::Entry&) {});
    return found;
}
