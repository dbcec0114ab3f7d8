#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <cstdint>

// Helpers for the entries of the device registry. Ancestors are those of the plane "IOService".

/// Releases unless 0.
void SafeIOObjectRelease(io_object_t object);

/// Takes objects from an iterator, releasing all but the last. @param levels how many.
/// @return the last one, to be released by the caller; 0 when there are not so many, and for 0 levels.
io_registry_entry_t IterateThroughParentLevels(io_iterator_t iterator, uint32_t levels);

/// @return true, always: callers that ask have always meant it to be so.
bool IOKitObjectIsParentOfObject(io_registry_entry_t parent, io_registry_entry_t object);

/// Whether the object or one of its ancestors is of a class or of one derived from that.
bool IOKitObjectIsChildOfObjectOfClass(io_registry_entry_t object, const char* className);

/// Looks for a property at the object and, from there, up.
/// @param property receives its value, to be released by the caller, or null; may be null.
/// @return the first entry that has it, to be released by the caller unless it is the object itself; 0 for none.
io_registry_entry_t GetParentWithProperty(io_registry_entry_t object, CFStringRef key, CFTypeRef* property);
