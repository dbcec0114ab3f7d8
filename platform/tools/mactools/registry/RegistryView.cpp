#include "registry/RegistryView.h"

bool RegistryView::isWanted(const iokit::Entry& entry) const
{
    if (!hasCriteria() || (!className.empty() && !entry.conformsTo(className)))
        return false;
    if (!name.empty() && name != entry.name && name != entry.fullName())
        return false;
    const cf::Owned<CFStringRef> wanted(cf::MakeString(key));
    return key.empty() || (wanted && CFDictionaryContainsKey(entry.properties.get(), wanted.get()));
}

std::vector<const iokit::Entry*> RegistryView::tops(const iokit::Registry& registry) const
{
    if (!onlySubtrees || !hasCriteria())
        return { &registry.root() };
    std::vector<const iokit::Entry*> found;
    const auto look = [&](const iokit::Visit& visit) {
        if (!isWanted(visit.entry))
            return true;
        if (!visit.isAgain)
            found.push_back(&visit.entry);
        return false;
    };
    iokit::Walk(
        registry.root(), look, [](const iokit::Entry&) {}, plane);
    return found;
}
