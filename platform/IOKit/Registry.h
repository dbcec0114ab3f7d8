#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/Runtime.h>
#include <IOKit/Class.h>

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace iokit {

/// What an entry that is a service tells of its life.
struct ServiceState {
    bool registered = true; ///< others may match it
    bool matched = true; ///< drivers for it have been looked for
    bool active = true;
    uint32_t busy = 0; ///< how much is being started below it
    std::optional<uint64_t> busyTime = 0; ///< in ns, so far; none where it is not counted
};

/// A device, a driver or another object that the registry knows of.
struct Entry {
    std::string name; ///< UTF-8, unless a recording had other bytes
    std::string location; ///< tells it from others of its name beside it, as after the "@"; "" for none
    const Class* objectClass; ///< never null
    cf::Owned<CFDictionaryRef> properties; ///< never null
    std::optional<ServiceState> service; ///< none where it is no service
    uint64_t id; ///< of this entry alone
    uint32_t retainCount; ///< the registry itself, the parent and each child hold it
    const Entry* parent; ///< null for the root
    std::vector<const Entry*> children; ///< in their order

    bool conformsTo(std::string_view className) const { return objectClass->derivesFrom(className); }
    /// @return the value, which the entry keeps; null when there is none.
    CFTypeRef property(const char* key) const;
};

/// The tree of entries, as its source found it: nothing refreshes it. Sources, which are functions that make a registry,
/// fill it from the root down. Moving it leaves the entries where they are.
class Registry {
public:
    /// With a root "Root", as every registry has, that names the plane "IOService", in which the entries lie.
    Registry();

    const Entry& root() const { return fEntries.front(); }
    Entry& root() { return fEntries.front(); }

    /// Adds an entry as the last child.
    /// @param parent of this registry. @param properties now the entry's; null for none.
    /// @return good as long as the registry; a service that is registered and idle if its class is one.
    Entry& add(Entry& parent, const std::string& className, std::string name, std::string location,
        cf::Owned<CFDictionaryRef> properties);

private:
    Entry& append(const std::string& className, std::string name, std::string location,
        cf::Owned<CFDictionaryRef> properties);

    Classes fClasses;
    std::deque<Entry> fEntries; ///< never moved; the root is the first
};

/// Visits an entry and all below it, parents first. However deep they lie, it takes no more of the stack.
/// @param enter bool(const Entry&, bool isLast): called before the children; answers whether they are to be visited.
/// isLast tells that no sibling follows in this walk. @param leave void(const Entry&): called after the children.
template <class Enter, class Leave> void Walk(const Entry& top, Enter enter, Leave leave)
{
    struct Place {
        const Entry* entry;
        size_t next; ///< child to visit
        size_t end;
    };
    std::vector<Place> way;
    const auto go = [&](const Entry& entry, bool isLast) {
        const bool descends = enter(entry, isLast);
        way.push_back({ &entry, 0, descends ? entry.children.size() : 0 });
    };
    go(top, true);
    while (!way.empty()) {
        Place& place = way.back();
        if (place.next == place.end) {
            leave(*place.entry);
            way.pop_back();
            continue;
        }
        const Entry& child = *place.entry->children[place.next++];
        go(child, place.next == place.end);
    }
}

}
