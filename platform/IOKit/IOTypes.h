#pragma once

#include <CoreFoundation/CFBase.h>

// The basic types of <IOKit/IOTypes.h> and <IOKit/IOReturn.h>.

using kern_return_t = int; ///< 0 for success
using mach_port_t = unsigned int;
using boolean_t = unsigned int;
using IOReturn = kern_return_t;
using IOOptionBits = UInt32;

/// A reference to an object of the kernel's: an entry of the registry, or an iterator. IO_OBJECT_NULL is none.
using io_object_t = mach_port_t;
using io_registry_entry_t = io_object_t;
using io_service_t = io_object_t;
using io_iterator_t = io_object_t;

constexpr io_object_t IO_OBJECT_NULL = 0;

using io_name_t = char[128];
using io_string_t = char[512];

enum : kern_return_t {
    KERN_SUCCESS = 0,
    KERN_INVALID_NAME = 15, ///< the reference is of nothing
};

constexpr IOReturn kIOReturnSuccess = KERN_SUCCESS;
constexpr IOReturn kIOReturnNoMemory = static_cast<IOReturn>(0xe00002bdU);
constexpr IOReturn kIOReturnNoDevice = static_cast<IOReturn>(0xe00002c0U);
constexpr IOReturn kIOReturnBadArgument
    = static_cast<IOReturn>(0xe00002c2U); ///< also for a reference that was released
constexpr IOReturn kIOReturnNoSpace
    = static_cast<IOReturn>(0xe00002dbU); ///< the caller's buffer is too short
constexpr IOReturn kIOReturnNotFound = static_cast<IOReturn>(0xe00002f0U);
