#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <IOKit/IOKitKeys.h>
#include <IOKit/IOTypes.h>

#include <cstdint>

// The part of Apple's <IOKit/IOKitLib.h> that programs use to read the device registry. What answers is the current
// registry: this host's, or a recording (see CurrentRegistry.h).
//
// References are counted. The same entry has the same number as long as the program holds it; each function that answers a
// reference adds one to be released with IOObjectRelease. A reference that was released, and IO_OBJECT_NULL, are refused
// with kIOReturnBadArgument; so are null buffers, names and planes that there are not. An entry that a program holds keeps
// what it was found to be, counters excepted, also when its device has gone. Entry IDs are of a registry as it was read: when
// devices came or went, its entries have others, and no number comes back.
//
// All functions may be called from any thread.

CF_EXTERN_C_BEGIN

/// For the first argument of several functions, which is for the kernel to talk to.
CF_EXPORT const mach_port_t kIOMasterPortDefault;

enum : IOOptionBits {
    kIORegistryIterateRecursively = 0x00000001,
    kIORegistryIterateParents = 0x00000002,
};

// References

/// @return KERN_INVALID_NAME for a reference of nothing.
CF_EXPORT kern_return_t IOObjectRetain(io_object_t object);
CF_EXPORT kern_return_t IOObjectRelease(io_object_t object);
/// @return how many references to the object this program holds; 0 for none.
CF_EXPORT UInt32 IOObjectGetUserRetainCount(io_object_t object);
CF_EXPORT boolean_t IOObjectIsEqualTo(io_object_t object, io_object_t anObject);

/// @param className receives the name of the object's class, cut to 127 bytes.
CF_EXPORT kern_return_t IOObjectGetClass(io_object_t object, io_name_t className);
/// Whether the object is of a class or of one derived from it.
CF_EXPORT boolean_t IOObjectConformsTo(io_object_t object, const io_name_t className);

// Iterators

/// @return the next object, to be released by the caller; 0 at the end.
CF_EXPORT io_object_t IOIteratorNext(io_iterator_t iterator);
CF_EXPORT void IOIteratorReset(io_iterator_t iterator);
/// Whether all objects are still those that there are. Iterators go over the registry as it was when they were made.
CF_EXPORT boolean_t IOIteratorIsValid(io_iterator_t iterator);

// Matching. A dictionary tells what has to be true of a service: its class or one that that derives from
// (kIOProviderClassKey), its name (kIONameMatchKey, one or an array of which one is enough), properties with their values
// (kIOPropertyMatchKey, a dictionary or an array of which one is enough), its number (kIORegistryEntryIDKey). Any other key
// is a property and its value.

/// @return a new dictionary; null for null.
CF_EXPORT CFMutableDictionaryRef IOServiceMatching(const char* name) CF_RETURNS_RETAINED;
CF_EXPORT CFMutableDictionaryRef IOServiceNameMatching(const char* name) CF_RETURNS_RETAINED;
CF_EXPORT CFMutableDictionaryRef IOBSDNameMatching(
    mach_port_t masterPort, uint32_t options, const char* bsdName) CF_RETURNS_RETAINED;
CF_EXPORT CFMutableDictionaryRef IORegistryEntryIDMatching(uint64_t entryID) CF_RETURNS_RETAINED;

/// @param matching one reference of it is taken over; null finds nothing.
/// @return the first registered service that fits, to be released by the caller; 0 for none.
CF_EXPORT io_service_t IOServiceGetMatchingService(mach_port_t masterPort, CFDictionaryRef matching);
/// @param existing receives an iterator over all of them in the order of the registry, to be released by the caller; 0 where
/// there are none, which is no error.
CF_EXPORT kern_return_t IOServiceGetMatchingServices(
    mach_port_t masterPort, CFDictionaryRef matching, io_iterator_t* existing);

// Entries

/// @return to be released by the caller.
CF_EXPORT io_registry_entry_t IORegistryGetRootEntry(mach_port_t masterPort);
/// @param path "IOService:/name@location/…", from the first entry below the root on; locations may be left out.
/// @return to be released by the caller; 0 for none.
CF_EXPORT io_registry_entry_t IORegistryEntryFromPath(mach_port_t masterPort, const io_string_t path);

CF_EXPORT kern_return_t IORegistryEntryGetName(io_registry_entry_t entry, io_name_t name);
/// @return kIOReturnNotFound for an entry without a location.
CF_EXPORT kern_return_t IORegistryEntryGetLocationInPlane(
    io_registry_entry_t entry, const io_name_t plane, io_name_t location);
/// @return kIOReturnNotFound for an entry that does not lie in the plane, kIOReturnNoSpace for a path that is too long.
CF_EXPORT kern_return_t IORegistryEntryGetPath(
    io_registry_entry_t entry, const io_name_t plane, io_string_t path);
CF_EXPORT kern_return_t IORegistryEntryGetRegistryEntryID(io_registry_entry_t entry, uint64_t* entryID);
CF_EXPORT boolean_t IORegistryEntryInPlane(io_registry_entry_t entry, const io_name_t plane);

/// @param properties receives a new dictionary.
CF_EXPORT kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
    CFMutableDictionaryRef* properties, CFAllocatorRef allocator, IOOptionBits options);
/// @return to be released by the caller; null when the entry has no such property.
CF_EXPORT CFTypeRef IORegistryEntryCreateCFProperty(
    io_registry_entry_t entry, CFStringRef key, CFAllocatorRef allocator, IOOptionBits options);
/// The property of the entry or, with kIORegistryIterateRecursively, of the first one below it that has it; with
/// kIORegistryIterateParents as well, above it.
/// @return as above.
CF_EXPORT CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane,
    CFStringRef key, CFAllocatorRef allocator, IOOptionBits options) CF_RETURNS_RETAINED;

/// @param iterator, of all of these, and @param child, parent receive a reference to be released by the caller.
/// @param options kIORegistryIterateRecursively: all below; kIORegistryIterateParents: above instead. The entry itself is
/// not among them.
CF_EXPORT kern_return_t IORegistryEntryCreateIterator(
    io_registry_entry_t entry, const io_name_t plane, IOOptionBits options, io_iterator_t* iterator);
CF_EXPORT kern_return_t IORegistryEntryGetChildIterator(
    io_registry_entry_t entry, const io_name_t plane, io_iterator_t* iterator);
CF_EXPORT kern_return_t IORegistryEntryGetParentIterator(
    io_registry_entry_t entry, const io_name_t plane, io_iterator_t* iterator);
/// The first of them. @return kIOReturnNoDevice where there is none.
CF_EXPORT kern_return_t IORegistryEntryGetChildEntry(
    io_registry_entry_t entry, const io_name_t plane, io_registry_entry_t* child);
CF_EXPORT kern_return_t IORegistryEntryGetParentEntry(
    io_registry_entry_t entry, const io_name_t plane, io_registry_entry_t* parent);

CF_EXTERN_C_END
