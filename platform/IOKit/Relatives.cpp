#include <IOKit/Relatives.h>

#include <IOKit/IOKitLib.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace iokit {

namespace {

struct NamedPlane {
    std::string_view name;
    Plane plane;
};

constexpr std::array kPlanes {
    NamedPlane { kIOServicePlane, Plane::Service },
    NamedPlane { kIODeviceTreePlane, Plane::DeviceTree },
};

const std::vector<const Entry*>& Neighbours(const Entry& entry, Plane plane, IOOptionBits options)
{
    const Links& links = entry.in(plane);
    return (options & kIORegistryIterateParents) != 0 ? links.parents : links.children;
}

/// @param path without a slash at the start. @return how many characters of it name the entry; 0 for another one.
size_t NameLength(const Entry& entry, std::string_view path)
{
    for (const std::string& name : { entry.fullName(), entry.name }) {
        const bool isAtEnd = path.size() == name.size();
        if (path.starts_with(name) && !name.empty() && (isAtEnd || path[name.size()] == '/'))
            return name.size();
    }
    return 0;
}

/// Follows a path down. Names may have slashes of their own: of those that fit the longest counts.
const Entry* Descendant(const Entry& top, Plane plane, std::string_view path)
{
    const Entry* entry = &top;
    while (entry != nullptr && !path.empty()) {
        const Entry* next = nullptr;
        size_t length = 0;
        for (const Entry* child : entry->children(plane)) {
            const size_t own = NameLength(*child, path);
            if (own > length)
                next = child;
            length = std::max(own, length);
        }
        entry = next;
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return entry;
}

}

std::vector<const Entry*> Relatives(const Entry& entry, Plane plane, IOOptionBits options)
{
    if ((options & kIORegistryIterateRecursively) == 0)
        return Neighbours(entry, plane, options);
    std::vector<const Entry*> found;
    std::vector<bool> isKnown(entry.index + size_t { 1 });
    isKnown[entry.index] = true;
    const auto& first = Neighbours(entry, plane, options);
    std::vector<const Entry*> waiting(first.rbegin(), first.rend());
    while (!waiting.empty()) {
        const Entry* const next = waiting.back();
        waiting.pop_back();
        if (next->index >= isKnown.size())
            isKnown.resize(next->index * size_t { 2 });
        if (isKnown[next->index])
            continue;
        isKnown[next->index] = true;
        found.push_back(next);
        const auto& neighbours = Neighbours(*next, plane, options);
        waiting.insert(waiting.end(), neighbours.rbegin(), neighbours.rend());
    }
    return found;
}

std::string PathOf(const Registry& registry, const Entry& entry, Plane plane)
{
    const Entry& root = registry.root();
    const std::vector<const Entry*>& tops = root.children(plane);
    const Entry* const first = tops.empty() ? &root : tops.front();
    std::vector<const Entry*> way;
    for (const Entry* one = &entry; one != &root && one != first; one = one->parent(plane)) {
        if (one->in(plane).parents.empty())
            return "";
        way.push_back(one);
    }
    const auto* const named = std::find_if(
        kPlanes.begin(), kPlanes.end(), [plane](const NamedPlane& known) { return known.plane == plane; });
    std::string path = std::string(named->name) + (way.empty() ? ":/" : ":");
    for (; !way.empty(); way.pop_back())
        path += '/' + way.back()->fullName();
    return path;
}

const Entry* EntryAtPath(const Registry& registry, const std::string& path)
{
    const size_t colon = path.find(':');
    const Plane* const plane = PlaneNamed(path.substr(0, colon).c_str());
    if (plane == nullptr || colon == std::string::npos || path.compare(colon, 2, ":/") != 0)
        return nullptr;
    const std::string_view names = std::string_view(path).substr(colon + 2);
    const Entry& root = registry.root();
    const std::vector<const Entry*>& tops = root.children(*plane);
    const Entry* const found = tops.empty() ? nullptr : Descendant(*tops.front(), *plane, names);
    return found != nullptr ? found : Descendant(root, *plane, names);
}

const Plane* PlaneNamed(const char* name)
{
    const auto* const known = std::find_if(kPlanes.begin(), kPlanes.end(),
        [name](const NamedPlane& one) { return name != nullptr && one.name == name; });
    return known != kPlanes.end() ? &known->plane : nullptr;
}

}
