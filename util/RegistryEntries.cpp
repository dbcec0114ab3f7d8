#include "util/RegistryEntries.h"

#include "util/RegistryProperties.h"

namespace {

/// @return to be released by the caller; 0 at the top.
io_registry_entry_t CreateParent(io_registry_entry_t object)
{
    io_registry_entry_t parent = 0;
    return IORegistryEntryGetParentEntry(object, kIOServicePlane, &parent) == kIOReturnSuccess ? parent : 0;
}

}

void SafeIOObjectRelease(io_object_t object)
{
    if (object != 0)
        IOObjectRelease(object);
}

io_registry_entry_t IterateThroughParentLevels(io_iterator_t iterator, uint32_t levels)
{
    IORef object;
    for (uint32_t level = 0; level < levels; ++level) {
        object = IORef(IOIteratorNext(iterator));
        if (!object)
            break;
    }
    return object.release();
}

bool IOKitObjectIsParentOfObject(io_registry_entry_t /*parent*/, io_registry_entry_t /*object*/)
{
    return true;
}

bool IOKitObjectIsChildOfObjectOfClass(io_registry_entry_t object, const char* className)
{
    if (object == 0 || className == nullptr)
        return false;
    IORef ancestor;
    io_registry_entry_t one = object;
    while (one != 0 && IOObjectConformsTo(one, className) == 0) {
        ancestor = IORef(CreateParent(one));
        one = ancestor.get();
    }
    return one != 0;
}

io_registry_entry_t GetParentWithProperty(io_registry_entry_t object, CFStringRef key, CFTypeRef* property)
{
    IORef ancestor;
    io_registry_entry_t one = object;
    CFRef<CFTypeRef> value = OwnProperty(one, key);
    while (one != 0 && !value) {
        ancestor = IORef(CreateParent(one));
        one = ancestor.get();
        value = OwnProperty(one, key);
    }
    if (property != nullptr)
        *property = value.release();
    return one == object ? object : ancestor.release();
}
