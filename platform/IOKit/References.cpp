#include <IOKit/References.h>

#include <utility>

namespace iokit {

References& References::shared()
{
    static auto* const references
        = new References; // lives as long as the program: other objects may release while they end
    return *references;
}

io_object_t References::hold(const Held& entry)
{
    if (!entry)
        return IO_OBJECT_NULL;
    const std::lock_guard lock(fMutex);
    const auto [place, isNew] = fNumbers.try_emplace(entry.entry, IO_OBJECT_NULL);
    if (isNew)
        place->second = add({ entry.registry, entry.entry, {}, 0, 0 });
    ++fObjects.at(place->second).count;
    return place->second;
}

io_object_t References::iterate(std::shared_ptr<const Registry> registry, std::vector<const Entry*> entries)
{
    const std::lock_guard lock(fMutex);
    return add({ std::move(registry), nullptr, std::move(entries), 0, 1 });
}

bool References::retain(io_object_t object)
{
    const std::lock_guard lock(fMutex);
    Object* const found = find(object);
    if (found != nullptr)
        ++found->count;
    return found != nullptr;
}

bool References::release(io_object_t object)
{
    const std::lock_guard lock(fMutex);
    Object* const found = find(object);
    if (found == nullptr)
        return false;
    if (--found->count == 0) {
        if (found->entry != nullptr)
            fNumbers.erase(found->entry);
        fObjects.erase(object);
    }
    return true;
}

UInt32 References::count(io_object_t object)
{
    const std::lock_guard lock(fMutex);
    const Object* const found = find(object);
    return found != nullptr ? found->count : 0;
}

Held References::entry(io_object_t object)
{
    const std::lock_guard lock(fMutex);
    const Object* const found = find(object);
    return found != nullptr && found->entry != nullptr ? Held { found->registry, found->entry } : Held();
}

Held References::next(io_object_t iterator)
{
    const std::lock_guard lock(fMutex);
    Object* const found = find(iterator);
    if (found == nullptr || found->next == found->entries.size())
        return {};
    return { found->registry, found->entries[found->next++] };
}

void References::reset(io_object_t iterator)
{
    const std::lock_guard lock(fMutex);
    if (Object* const found = find(iterator))
        found->next = 0;
}

size_t References::total()
{
    const std::lock_guard lock(fMutex);
    size_t total = 0;
    for (const auto& [number, object] : fObjects)
        total += object.count;
    return total;
}

/// A number that was used is not used again for as long as possible, so that mistaken releases are found.
io_object_t References::add(Object object)
{
    do
        ++fLast;
    while (fLast == IO_OBJECT_NULL || fObjects.contains(fLast));
    fObjects.emplace(fLast, std::move(object));
    return fLast;
}

References::Object* References::find(io_object_t object)
{
    const auto found = fObjects.find(object);
    return found != fObjects.end() ? &found->second : nullptr;
}

}
