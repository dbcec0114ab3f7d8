#include <IOKit/IOKitLib.h>

#include <IOKit/CurrentRegistry.h>
#include <IOKit/Matching.h>
#include <IOKit/References.h>
#include <IOKit/Relatives.h>

#include <algorithm>
#include <cstring>

using iokit::Entry;
using iokit::Held;
using iokit::Plane;
using iokit::References;

namespace {

/// An entry and a plane, as many functions ask for. Nothing where one of them is not there.
struct Position {
    Position(io_registry_entry_t reference, const char* planeName)
        : entry(References::shared().entry(reference))
        , plane(iokit::PlaneNamed(planeName))
    {
    }
    explicit operator bool() const { return entry && plane != nullptr; }

    Held entry;
    const Plane* plane;
};

/// Cut to what fits.
template <size_t Size> void CopyText(const std::string& text, char (&destination)[Size])
{
    const size_t length = text.copy(static_cast<char*>(destination), Size - 1);
    destination[length] = '\0';
}

kern_return_t Found(bool isFound) { return isFound ? KERN_SUCCESS : KERN_INVALID_NAME; }

/// @return kIOReturnNoDevice where the list is empty.
kern_return_t HoldFirst(const Held& entry, const std::vector<const Entry*>& list, io_object_t* reference)
{
    if (list.empty())
        return kIOReturnNoDevice;
    *reference = References::shared().hold({ entry.registry, list.front() });
    return kIOReturnSuccess;
}

}

const mach_port_t kIOMasterPortDefault = 0;

kern_return_t IOObjectRetain(io_object_t object) { return Found(References::shared().retain(object)); }

kern_return_t IOObjectRelease(io_object_t object) { return Found(References::shared().release(object)); }

UInt32 IOObjectGetUserRetainCount(io_object_t object) { return References::shared().count(object); }

boolean_t IOObjectIsEqualTo(io_object_t object, io_object_t anObject)
{
    return static_cast<boolean_t>(object == anObject && References::shared().count(object) > 0);
}

kern_return_t IOObjectGetClass(io_object_t object, io_name_t className)
{
    if (className == nullptr || References::shared().count(object) == 0)
        return kIOReturnBadArgument;
    const Held entry = References::shared().entry(object);
    CopyText(entry ? entry->objectClass->name : "IOUserIterator", *reinterpret_cast<io_name_t*>(className));
    return kIOReturnSuccess;
}

boolean_t IOObjectConformsTo(io_object_t object, const io_name_t className)
{
    const Held entry = References::shared().entry(object);
    return static_cast<boolean_t>(entry && className != nullptr && entry->conformsTo(className));
}

io_object_t IOIteratorNext(io_iterator_t iterator)
{
    return References::shared().hold(References::shared().next(iterator));
}

void IOIteratorReset(io_iterator_t iterator) { References::shared().reset(iterator); }

boolean_t IOIteratorIsValid(io_iterator_t iterator)
{
    return static_cast<boolean_t>(
        References::shared().count(iterator) > 0 && !References::shared().entry(iterator));
}

io_service_t IOServiceGetMatchingService(mach_port_t /*masterPort*/, CFDictionaryRef matching)
{
    const cf::Owned<CFDictionaryRef> owned(matching);
    const auto registry = iokit::CurrentRegistry();
    const auto fits = [matching](const Entry& entry) { return iokit::Matches(entry, matching); };
    const auto& entries = registry->entries();
    const auto found
        = matching != nullptr ? std::find_if(entries.begin(), entries.end(), fits) : entries.end();
    return found != entries.end() ? References::shared().hold({ registry, &*found }) : IO_OBJECT_NULL;
}

kern_return_t IOServiceGetMatchingServices(
    mach_port_t /*masterPort*/, CFDictionaryRef matching, io_iterator_t* existing)
{
    const cf::Owned<CFDictionaryRef> owned(matching);
    if (matching == nullptr || existing == nullptr)
        return kIOReturnBadArgument;
    const auto registry = iokit::CurrentRegistry();
    std::vector<const Entry*> found;
    for (const Entry& entry : registry->entries()) {
        if (iokit::Matches(entry, matching))
            found.push_back(&entry);
    }
    *existing = found.empty() ? IO_OBJECT_NULL : References::shared().iterate(registry, std::move(found));
    return kIOReturnSuccess;
}

io_registry_entry_t IORegistryGetRootEntry(mach_port_t /*masterPort*/)
{
    const auto registry = iokit::CurrentRegistry();
    return References::shared().hold({ registry, &registry->root() });
}

io_registry_entry_t IORegistryEntryFromPath(mach_port_t /*masterPort*/, const io_string_t path)
{
    if (path == nullptr)
        return IO_OBJECT_NULL;
    const auto registry = iokit::CurrentRegistry();
    return References::shared().hold({ registry, iokit::EntryAtPath(*registry, path) });
}

kern_return_t IORegistryEntryGetName(io_registry_entry_t entry, io_name_t name)
{
    const Held held = References::shared().entry(entry);
    if (!held || name == nullptr)
        return kIOReturnBadArgument;
    CopyText(held->name, *reinterpret_cast<io_name_t*>(name));
    return kIOReturnSuccess;
}

kern_return_t IORegistryEntryGetLocationInPlane(
    io_registry_entry_t entry, const io_name_t plane, io_name_t location)
{
    const Position position(entry, plane);
    if (!position || location == nullptr)
        return kIOReturnBadArgument;
    if (position.entry->location.empty())
        return kIOReturnNotFound;
    CopyText(position.entry->location, *reinterpret_cast<io_name_t*>(location));
    return kIOReturnSuccess;
}

kern_return_t IORegistryEntryGetPath(io_registry_entry_t entry, const io_name_t plane, io_string_t path)
{
    const Position position(entry, plane);
    if (!position || path == nullptr)
        return kIOReturnBadArgument;
    const std::string text = iokit::PathOf(*position.entry.registry, *position.entry.entry, *position.plane);
    if (text.empty())
        return kIOReturnNotFound;
    if (text.size() >= sizeof(io_string_t))
        return kIOReturnNoSpace;
    CopyText(text, *reinterpret_cast<io_string_t*>(path));
    return kIOReturnSuccess;
}

kern_return_t IORegistryEntryGetRegistryEntryID(io_registry_entry_t entry, uint64_t* entryID)
{
    const Held held = References::shared().entry(entry);
    if (!held || entryID == nullptr)
        return kIOReturnBadArgument;
    *entryID = held->id;
    return kIOReturnSuccess;
}

boolean_t IORegistryEntryInPlane(io_registry_entry_t entry, const io_name_t plane)
{
    const Position position(entry, plane);
    return static_cast<boolean_t>(
        position && (position.entry->index == 0 || position.entry->parent(*position.plane) != nullptr));
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry, CFMutableDictionaryRef* properties,
    CFAllocatorRef allocator, IOOptionBits /*options*/)
{
    const Held held = References::shared().entry(entry);
    if (!held || properties == nullptr)
        return kIOReturnBadArgument;
    *properties = CFDictionaryCreateMutableCopy(allocator, 0, held->currentProperties().get());
    return *properties != nullptr ? kIOReturnSuccess : kIOReturnNoMemory;
}

CFTypeRef IORegistryEntryCreateCFProperty(
    io_registry_entry_t entry, CFStringRef key, CFAllocatorRef /*allocator*/, IOOptionBits /*options*/)
{
    const Held held = References::shared().entry(entry);
    return held && key != nullptr ? held->currentProperty(key).release() : nullptr;
}

CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane, CFStringRef key,
    CFAllocatorRef /*allocator*/, IOOptionBits options)
{
    const Position position(entry, plane);
    if (!position || key == nullptr)
        return nullptr;
    cf::Owned<CFTypeRef> value = position.entry->currentProperty(key);
    if (value || (options & kIORegistryIterateRecursively) == 0)
        return value.release();
    for (const Entry* one : iokit::Relatives(*position.entry.entry, *position.plane, options)) {
        value = one->currentProperty(key);
        if (value)
            break;
    }
    return value.release();
}

kern_return_t IORegistryEntryCreateIterator(
    io_registry_entry_t entry, const io_name_t plane, IOOptionBits options, io_iterator_t* iterator)
{
    const Position position(entry, plane);
    if (!position || iterator == nullptr)
        return kIOReturnBadArgument;
    *iterator = References::shared().iterate(
        position.entry.registry, iokit::Relatives(*position.entry.entry, *position.plane, options));
    return kIOReturnSuccess;
}

kern_return_t IORegistryEntryGetChildIterator(
    io_registry_entry_t entry, const io_name_t plane, io_iterator_t* iterator)
{
    return IORegistryEntryCreateIterator(entry, plane, 0, iterator);
}

kern_return_t IORegistryEntryGetParentIterator(
    io_registry_entry_t entry, const io_name_t plane, io_iterator_t* iterator)
{
    return IORegistryEntryCreateIterator(entry, plane, kIORegistryIterateParents, iterator);
}

kern_return_t IORegistryEntryGetChildEntry(
    io_registry_entry_t entry, const io_name_t plane, io_registry_entry_t* child)
{
    const Position position(entry, plane);
    if (!position || child == nullptr)
        return kIOReturnBadArgument;
    return HoldFirst(position.entry, position.entry->in(*position.plane).children, child);
}

kern_return_t IORegistryEntryGetParentEntry(
    io_registry_entry_t entry, const io_name_t plane, io_registry_entry_t* parent)
{
    const Position position(entry, plane);
    if (!position || parent == nullptr)
        return kIOReturnBadArgument;
    return HoldFirst(position.entry, position.entry->in(*position.plane).parents, parent);
}
