#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// What a program has with DiskArbitration. It keeps what it has found out about the volumes of this host: one session for
/// many disks asks once.
using DASessionRef = struct __DASession*;

CF_EXPORT CFTypeID DASessionGetTypeID();

/// @return to be released by the caller. Never null, whatever of the host is out of reach.
CF_EXPORT DASessionRef DASessionCreate(CFAllocatorRef allocator) CF_RETURNS_RETAINED;

CF_EXTERN_C_END
