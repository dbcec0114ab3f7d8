#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/Runtime.h>
#include <IOKit/Class.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace iokit {

/// One of the trees in which entries lie.
enum class Plane {
    Service, ///< "IOService": who provides for whom
    DeviceTree, ///< "IODeviceTree": what the firmware knows of
};

/// What an entry that is a service tells of its life.
struct ServiceState {
    bool registered = true; ///< others may match it
    bool matched = true; ///< drivers for it have been looked for
    bool active = true;
    uint32_t busy = 0; ///< how much is being started below it
    std::optional<uint64_t> busyTime = 0; ///< in ns, so far; none where it is not counted
};

/// A property that changes all the time, as counters do.
struct LiveProperty {
    const char* key; ///< a literal
    std::function<cf::Owned<CFTypeRef>()>
        read; ///< the value as it is now; null when that cannot be found out any more
};

struct Entry;

/// An entry's place in a plane. What is put together from several disks has several parents; the first is its own.
struct Links {
    std::vector<const Entry*> parents;
    std::vector<const Entry*> children; ///< in their order
};

/// A device, a driver or another object that the registry knows of.
struct Entry {
    std::string name; ///< UTF-8, unless a recording had other bytes
    std::string location; ///< tells it from others of its name beside it, as after the "@"; "" for none
    const Class* objectClass; ///< never null
    cf::Owned<CFDictionaryRef> properties; ///< never null; as they were when the registry was read
    std::optional<LiveProperty> live; ///< besides those, or in the place of one
    std::optional<ServiceState> service; ///< none where it is no service
    uint64_t id; ///< of this entry alone
    uint32_t retainCount; ///< the registry itself, the parents and the children hold it
    uint32_t index; ///< among the registry's entries
    Links services; ///< in Plane::Service
    Links deviceTree; ///< in Plane::DeviceTree

    bool conformsTo(std::string_view className) const { return objectClass->derivesFrom(className); }
    const Links& in(Plane plane) const { return plane == Plane::Service ? services : deviceTree; }
    /// @return null at the top.
    const Entry* parent(Plane plane = Plane::Service) const;
    const std::vector<const Entry*>& children(Plane plane = Plane::Service) const
    {
        return in(plane).children;
    }
    /// "name@location", or the name where there is no location.
    std::string fullName() const { return location.empty() ? name : name + '@' + location; }

    std::string bsdName() const; ///< of a medium; "" of anything else
    /// @return the value, which the entry keeps; null when there is none.
    CFTypeRef property(const char* key) const;
    /// The properties as they are now; never null.
    cf::Owned<CFDictionaryRef> currentProperties() const;
    /// One of them; null when there is none.
    cf::Owned<CFTypeRef> currentProperty(CFStringRef key) const;
};

/// The entries, as their source found them: nothing refreshes them but what is live. Sources fill a registry from
/// the root down. Moving it leaves the entries where they are.
class Registry {
public:
    static constexpr uint64_t kFirstID = 0x100000100;

    Registry()
        : Registry(kFirstID)
    {
    }
    /// With a root "Root", as every registry has, that names the planes. @param firstID of the entries: the root's.
    explicit Registry(uint64_t firstID);

    const Entry& root() const { return fEntries.front(); }
    Entry& root() { return fEntries.front(); }
    /// All of them, parents before their children; the root is the first.
    const std::deque<Entry>& entries() const { return fEntries; }
    Classes& classes() { return fClasses; }

    /// Adds an entry to the service plane as the last child.
    /// @param parent of this registry. @param properties now the entry's; null for none.
    /// @return good as long as the registry; a service that is registered and idle if its class is one.
    Entry& add(Entry& parent, const std::string& className, std::string name, std::string location,
        cf::Owned<CFDictionaryRef> properties);

    /// Makes an entry a further parent's last child in the service plane. Nothing may get below itself.
    void link(Entry& parent, Entry& child);

    /// Puts what the firmware knows of into the device tree: the computer, and the entries below that describe its devices
    /// instead of driving them. Call it once, when the service plane is complete.
    void completeDeviceTree();

    /// The host's file for a disk that the source gave a BSD name.
    /// @return as "/dev/sda"; "" for other names, and for all names of a recording.
    std::string deviceFile(const std::string& bsdName) const;
    void setDeviceFile(const std::string& bsdName, const std::string& path);

private:
    Entry& append(const std::string& className, std::string name, std::string location,
        cf::Owned<CFDictionaryRef> properties);

    uint64_t fFirstID;
    Classes fClasses;
    std::deque<Entry> fEntries; ///< never moved
    std::unordered_map<std::string, std::string> fDeviceFiles; ///< by BSD names
};

/// An entry as a walk meets it.
struct Visit {
    const Entry& entry;
    bool isLast; ///< no sibling follows
    bool isAgain; ///< it was met before, under another parent
};

/// Visits an entry and all below it, parents first; what lies below an entry that has several parents, only the first time.
/// However deep the entries lie, it takes no more of the stack.
/// @param enter bool(const Visit&): called before the children; answers whether they are to be visited.
/// @param leave void(const Entry&): called after the children.
template <class Enter, class Leave>
void Walk(const Entry& top, Enter enter, Leave leave, Plane plane = Plane::Service)
{
    struct Place {
        const Entry* entry;
        size_t next; ///< child to visit
        size_t end;
    };
    std::vector<Place> way;
    std::vector<bool> isKnown(top.index + size_t { 1 });
    const auto go = [&](const Entry& entry, bool isLast) {
        if (entry.index >= isKnown.size())
            isKnown.resize(entry.index * size_t { 2 });
        const bool isAgain = isKnown[entry.index];
        isKnown[entry.index] = true;
        const bool descends = enter(Visit { entry, isLast, isAgain }) && !isAgain;
        way.push_back({ &entry, 0, descends ? entry.children(plane).size() : 0 });
    };
    go(top, true);
    while (!way.empty()) {
        Place& place = way.back();
        if (place.next == place.end) {
            leave(*place.entry);
            way.pop_back();
            continue;
        }
        const Entry& child = *place.entry->children(plane)[place.next++];
        go(child, place.next == place.end);
    }
}

}
