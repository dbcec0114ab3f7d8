#include "util/SystemInformation.h"

#include "util/ChildProcess.h"
#include "util/RegistryProperties.h"

#include <CoreServices/CoreServices.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <sys/sysctl.h>

namespace {

/// A property of the computer itself. @return null where it is missing or of another type; else owned by the caller.
CFTypeRef CopyPlatformProperty(CFStringRef key, CFTypeID type)
{
    const IORef computer(
        IOServiceGetMatchingService(kIOMasterPortDefault, IOServiceMatching("IOPlatformExpertDevice")));
    CFRef<CFTypeRef> value = OwnProperty(computer.get(), key);
    return value && CFGetTypeID(value.get()) == type ? value.release() : nullptr;
}

/// @return 0 where the system does not tell.
template <class Number> Number HardwareNumber(int fact)
{
    int name[] = { CTL_HW, fact };
    Number number = 0;
    size_t size = sizeof number;
    return sysctl(name, std::size(name), &number, &size, nullptr, 0) == 0 ? number : 0;
}

struct Machine {
    std::string_view name;
    InstructionSetCode code;
};

constexpr std::array kMachines {
    Machine { "ppc", kPowerPCInstructionSet },
    Machine { "Power Macintosh", kPowerPCInstructionSet },
    Machine { "ppc_64", kPowerPC64InstructionSet },
    Machine { "i386", kIntelInstructionSet },
    Machine { "x86_64", kIntel64InstructionSet },
};

/// @return an iterator over the network interfaces that call themselves primary.
IORef PrimaryInterfaces()
{
    CFMutableDictionaryRef const matching = IOServiceMatching("IOEthernetInterface");
    const void* key = CFSTR("IOPrimaryInterface");
    const void* value = kCFBooleanTrue;
    const CFRef<CFDictionaryRef> properties(CFDictionaryCreate(kCFAllocatorDefault, &key, &value, 1,
        &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(matching, CFSTR(kIOPropertyMatchKey), properties.get());
    IORef interfaces;
    IOServiceGetMatchingServices(kIOMasterPortDefault, matching, interfaces.receive());
    return interfaces;
}

/// @return the hardware address of a network interface's controller; null where it has none.
CFRef<CFDataRef> AddressOf(const IORef& port)
{
    IORef controller;
    if (!port
        || IORegistryEntryGetParentEntry(port.get(), kIOServicePlane, controller.receive())
            != kIOReturnSuccess)
        return {};
    const CFRef<CFTypeRef> address = OwnProperty(controller.get(), CFSTR("IOMACAddress"));
    return CFRef<CFDataRef>::Retained(CFDynamicCast<CFDataRef>(address.get(), CFDataGetTypeID()));
}

}

CFStringRef CreateHWSerialNumberString()
{
    return static_cast<CFStringRef>(
        CopyPlatformProperty(CFSTR("IOPlatformSerialNumber"), CFStringGetTypeID()));
}

CFStringRef CreateMacTypeString()
{
    const CFRef<CFDataRef> model(
        static_cast<CFDataRef>(CopyPlatformProperty(CFSTR("model"), CFDataGetTypeID())));
    return model ? CFStringCreateFromExternalRepresentation(
               kCFAllocatorDefault, model.get(), kCFStringEncodingMacRoman)
                 : nullptr;
}

CFStringRef CreateMacNameString() { return SCDynamicStoreCopyComputerName(nullptr, nullptr); }

CFStringRef CreateLocalHostNameString() { return SCDynamicStoreCopyLocalHostName(nullptr); }

CFStringRef CreateUsernameString() { return CSCopyUserName(false); }

uint64_t BytesOfRAM() { return HardwareNumber<uint64_t>(HW_MEMSIZE); }

int32_t L1InstructionCacheSize() { return HardwareNumber<int32_t>(HW_L1ICACHESIZE); }

int32_t L1DataCacheSize() { return HardwareNumber<int32_t>(HW_L1DCACHESIZE); }

int32_t L2CacheSize() { return HardwareNumber<int32_t>(HW_L2CACHESIZE); }

int32_t L3CacheSize() { return HardwareNumber<int32_t>(HW_L3CACHESIZE); }

uint32_t KernelISA()
{
    int name[] = { CTL_HW, HW_MACHINE };
    std::array<char, 16> machine {};
    size_t size = machine.size();
    if (sysctl(name, std::size(name), machine.data(), &size, nullptr, 0) != 0)
        return kUnknownInstructionSet;
    const std::string_view text(machine.data(), strnlen(machine.data(), machine.size()));
    const auto* const known = std::find_if(
        kMachines.begin(), kMachines.end(), [text](const Machine& one) { return one.name == text; });
    return known != kMachines.end() ? known->code : kUnknownInstructionSet;
}

uint64_t FreeBytesOfRAM()
{
    constexpr size_t longestAnswer = 32767;
    ToolCall call { "/usr/bin/vm_stat", { "vm_stat" } };
    call.statusWithoutTool.reset();
    RunToolReading(call, [](int output) { ReadPieceAndDiscardRest(output, longestAnswer); });
    return 0;
}

bool GetPrimaryMAC_Address(void* buffer, size_t size)
{
    constexpr size_t addressLength = 6;
    Clear(static_cast<char*>(buffer), size);
    const IORef interfaces = PrimaryInterfaces();
    const IORef first(IOIteratorNext(interfaces.get()));
    const CFRef<CFDataRef> address = AddressOf(first);
    const auto wanted = static_cast<CFIndex>(std::min(size, addressLength));
    if (!address || CFDataGetLength(address.get()) < wanted || IORef(IOIteratorNext(interfaces.get())))
        return false;
    if (buffer != nullptr)
        CFDataGetBytes(address.get(), CFRangeMake(0, wanted), static_cast<UInt8*>(buffer));
    return true;
}
