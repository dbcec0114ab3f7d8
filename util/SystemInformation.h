#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstddef>
#include <cstdint>

// What the computer is. Strings are to be released by the caller; null, 0 and false for what is not known.

CFStringRef CreateHWSerialNumberString();
/// The maker's name of the model.
CFStringRef CreateMacTypeString();
/// The name that users gave it.
CFStringRef CreateMacNameString();
/// The name by which the local network knows it, without ".local".
CFStringRef CreateLocalHostNameString();
/// The user's full name.
CFStringRef CreateUsernameString();

// Sizes are in bytes.

uint64_t BytesOfRAM();
int32_t L1InstructionCacheSize();
int32_t L1DataCacheSize();
int32_t L2CacheSize();
int32_t L3CacheSize();

enum InstructionSetCode : uint32_t {
    kUnknownInstructionSet,
    kPowerPCInstructionSet,
    kPowerPC64InstructionSet,
    kIntelInstructionSet,
    kIntel64InstructionSet,
};

/// What the kernel is made for. @return an InstructionSetCode; ARM is among the unknown.
uint32_t KernelISA();

/// Asks vm_stat, and does not read the answer yet. @return 0, always. Where the tool cannot be started, the copy of the process
/// that was to become it comes back as well.
uint64_t FreeBytesOfRAM();

/// The hardware address of the computer's primary network interface.
/// @param buffer zeroed first; receives the first `size` bytes of the six. Null to learn whether there is one.
/// @return whether there is exactly one; else the buffer is zero.
bool GetPrimaryMAC_Address(void* buffer, size_t size);
