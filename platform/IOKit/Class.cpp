#include <IOKit/Class.h>

#include <algorithm>
#include <array>
#include <vector>

namespace iokit {

namespace {

struct Derivation {
    std::string_view name;
    const char* super;
};

/// By name.
constexpr std::array kDerivations {
    Derivation { "AirPort_Brcm4360_Interface", "IO80211Interface" },
    Derivation { "AirPort_BrcmNIC_Interface", "IO80211Interface" },
    Derivation { "AppleACPIPlatformExpert", "IOACPIPlatformExpert" },
    Derivation { "AppleAPFSContainer", "IOStorage" },
    Derivation { "AppleAPFSContainerScheme", "IOPartitionScheme" },
    Derivation { "AppleAPFSMedia", "IOMedia" },
    Derivation { "AppleAPFSSnapshot", "IOMedia" },
    Derivation { "AppleAPFSVolume", "IOMedia" },
    Derivation { "AppleARMCPU", "IOCPU" },
    Derivation { "AppleBacklightDisplay", "AppleDisplay" },
    Derivation { "AppleDiskImageDevice", "IOBlockStorageDevice" },
    Derivation { "AppleDisplay", "IODisplay" },
    Derivation { "AppleRAIDConcatSet", "AppleRAIDSet" },
    Derivation { "AppleRAIDMember", "IOStorage" },
    Derivation { "AppleRAIDMirrorSet", "AppleRAIDSet" },
    Derivation { "AppleRAIDSet", "IOStorage" },
    Derivation { "AppleRAIDStripeSet", "AppleRAIDSet" },
    Derivation { "AppleSDXCBlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "AppleSmartBattery", "IOPowerSource" },
    Derivation { "AppleUSBDevice", "IOUSBHostDevice" },
    Derivation { "AppleUSBInterface", "IOUSBHostInterface" },
    Derivation { "CoreStorageGroup", "IOStorage" },
    Derivation { "CoreStorageLogical", "IOMedia" },
    Derivation { "CoreStoragePhysical", "IOStorage" },
    Derivation { "IO80211Controller", "IOEthernetController" },
    Derivation { "IO80211Interface", "IOEthernetInterface" },
    Derivation { "IOACPIPlatformDevice", "IOPlatformDevice" },
    Derivation { "IOACPIPlatformExpert", "IODTPlatformExpert" },
    Derivation { "IOAHCIBlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "IOAHCIDevice", "IOService" },
    Derivation { "IOAHCISerialATAPI", "IOSCSIProtocolServices" },
    Derivation { "IOATABlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "IOATADevice", "IOService" },
    Derivation { "IOATAPIProtocolTransport", "IOSCSIProtocolServices" },
    Derivation { "IOAppleLabelScheme", "IOFilterScheme" },
    Derivation { "IOApplePartitionScheme", "IOPartitionScheme" },
    Derivation { "IOAudioControl", "IOService" },
    Derivation { "IOAudioControlUserClient", "IOUserClient" },
    Derivation { "IOAudioEngineUserClient", "IOUserClient" },
    Derivation { "IOAudioLevelControl", "IOAudioControl" },
    Derivation { "IOAudioSelectorControl", "IOAudioControl" },
    Derivation { "IOAudioToggleControl", "IOAudioControl" },
    Derivation { "IOBDBlockStorageDevice", "IODVDBlockStorageDevice" },
    Derivation { "IOBDBlockStorageDriver", "IODVDBlockStorageDriver" },
    Derivation { "IOBDMedia", "IOMedia" },
    Derivation { "IOBDServices", "IOBDBlockStorageDevice" },
    Derivation { "IOBlockStorageDevice", "IOService" },
    Derivation { "IOBlockStorageDriver", "IOStorage" },
    Derivation { "IOBlockStorageServices", "IOBlockStorageDevice" },
    Derivation { "IOCDBlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "IOCDBlockStorageDriver", "IOBlockStorageDriver" },
    Derivation { "IOCDMedia", "IOMedia" },
    Derivation { "IOCDPartitionScheme", "IOPartitionScheme" },
    Derivation { "IOCPU", "IOService" },
    Derivation { "IOCPUInterruptController", "IOInterruptController" },
    Derivation { "IOCompactDiscServices", "IOCDBlockStorageDevice" },
    Derivation { "IODTNVRAM", "IOService" },
    Derivation { "IODTPlatformExpert", "IOPlatformExpert" },
    Derivation { "IODVDBlockStorageDevice", "IOCDBlockStorageDevice" },
    Derivation { "IODVDBlockStorageDriver", "IOCDBlockStorageDriver" },
    Derivation { "IODVDMedia", "IOMedia" },
    Derivation { "IODVDServices", "IODVDBlockStorageDevice" },
    Derivation { "IODiskImageBlockStorageDeviceInKernel", "IOBlockStorageDevice" },
    Derivation { "IODiskImageBlockStorageDeviceOutKernel", "IOBlockStorageDevice" },
    Derivation { "IODisplay", "IOService" },
    Derivation { "IOEmbeddedNVMeBlockDevice", "IOBlockStorageDevice" },
    Derivation { "IOEthernetAVBInterface", "IOEthernetInterface" },
    Derivation { "IOEthernetController", "IONetworkController" },
    Derivation { "IOEthernetInterface", "IONetworkInterface" },
    Derivation { "IOFDiskPartitionScheme", "IOPartitionScheme" },
    Derivation { "IOFilterScheme", "IOStorage" },
    Derivation { "IOFireWireDevice", "IOFireWireNub" },
    Derivation { "IOFireWireNub", "IOService" },
    Derivation { "IOFireWireSerialBusProtocolTransport", "IOSCSIProtocolServices" },
    Derivation { "IOFireWireUnit", "IOFireWireNub" },
    Derivation { "IOFramebuffer", "IOGraphicsDevice" },
    Derivation { "IOFramebufferSharedUserClient", "IOUserClient" },
    Derivation { "IOFramebufferUserClient", "IOUserClient" },
    Derivation { "IOGUIDPartitionScheme", "IOPartitionScheme" },
    Derivation { "IOGraphicsDevice", "IOService" },
    Derivation { "IOHIDConsumer", "IOHIKeyboard" },
    Derivation { "IOHIDDevice", "IOService" },
    Derivation { "IOHIDEventDriver", "IOHIDEventService" },
    Derivation { "IOHIDEventService", "IOService" },
    Derivation { "IOHIDKeyboard", "IOHIKeyboard" },
    Derivation { "IOHIDLibUserClient", "IOUserClient" },
    Derivation { "IOHIDParamUserClient", "IOUserClient" },
    Derivation { "IOHIDPointing", "IOHIPointing" },
    Derivation { "IOHIDUserDevice", "IOHIDDevice" },
    Derivation { "IOHIDevice", "IOService" },
    Derivation { "IOHIKeyboard", "IOHIDevice" },
    Derivation { "IOHIPointing", "IOHIDevice" },
    Derivation { "IOInterruptController", "IOService" },
    Derivation { "IOMedia", "IOStorage" },
    Derivation { "IONDRVFramebuffer", "IOFramebuffer" },
    Derivation { "IONVMeBlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "IONVRAMController", "IOService" },
    Derivation { "IONetworkController", "IOService" },
    Derivation { "IONetworkInterface", "IOService" },
    Derivation { "IOPCI2PCIBridge", "IOPCIBridge" },
    Derivation { "IOPCIBridge", "IOService" },
    Derivation { "IOPCIDevice", "IOService" },
    Derivation { "IOPMrootDomain", "IOService" },
    Derivation { "IOPartitionScheme", "IOFilterScheme" },
    Derivation { "IOPlatformDevice", "IOService" },
    Derivation { "IOPlatformExpert", "IOService" },
    Derivation { "IOPlatformExpertDevice", "IOService" },
    Derivation { "IOPowerSource", "IOService" },
    Derivation { "IOReducedBlockServices", "IOBlockStorageDevice" },
    Derivation { "IORegistryEntry", "OSObject" },
    Derivation { "IOResources", "IOService" },
    Derivation { "IOSCSIBlockCommandsDevice", "IOSCSIPrimaryCommandsDevice" },
    Derivation { "IOSCSILogicalUnitNub", "IOSCSIPeripheralDeviceNub" },
    Derivation { "IOSCSIMultimediaCommandsDevice", "IOSCSIPrimaryCommandsDevice" },
    Derivation { "IOSCSIParallelInterfaceController", "IOService" },
    Derivation { "IOSCSIParallelInterfaceDevice", "IOSCSIProtocolServices" },
    Derivation { "IOSCSIPeripheralDeviceNub", "IOSCSIProtocolServices" },
    Derivation { "IOSCSIPeripheralDeviceType00", "IOSCSIBlockCommandsDevice" },
    Derivation { "IOSCSIPeripheralDeviceType05", "IOSCSIMultimediaCommandsDevice" },
    Derivation { "IOSCSIPeripheralDeviceType07", "IOSCSIBlockCommandsDevice" },
    Derivation { "IOSCSIPeripheralDeviceType0E", "IOSCSIReducedBlockCommandsDevice" },
    Derivation { "IOSCSIPrimaryCommandsDevice", "IOSCSIProtocolInterface" },
    Derivation { "IOSCSIProtocolInterface", "IOService" },
    Derivation { "IOSCSIProtocolServices", "IOSCSIProtocolInterface" },
    Derivation { "IOSCSIReducedBlockCommandsDevice", "IOSCSIPrimaryCommandsDevice" },
    Derivation { "IOSCSITargetDevice", "IOSCSIPrimaryCommandsDevice" },
    Derivation { "IOService", "IORegistryEntry" },
    Derivation { "IOSharedInterruptController", "IOInterruptController" },
    Derivation { "IOStorage", "IOService" },
    Derivation { "IOSurfaceRootUserClient", "IOUserClient" },
    Derivation { "IOUSBDevice", "IOUSBNub" },
    Derivation { "IOUSBHostDevice", "IOService" },
    Derivation { "IOUSBHostInterface", "IOService" },
    Derivation { "IOUSBHubDevice", "IOUSBDevice" },
    Derivation { "IOUSBInterface", "IOUSBNub" },
    Derivation { "IOUSBMassStorageClass", "IOSCSIProtocolServices" },
    Derivation { "IOUSBNub", "IOService" },
    Derivation { "IOUSBRootHubDevice", "IOUSBHubDevice" },
    Derivation { "IOUserClient", "IOService" },
    Derivation { "IOUserResources", "IOService" },
    Derivation { "IOUserServer", "IOUserClient" },
    Derivation { "OSObject", nullptr },
    Derivation { "RootDomainUserClient", "IOUserClient" },
};
static_assert(std::is_sorted(kDerivations.begin(), kDerivations.end(),
    [](const Derivation& first, const Derivation& second) { return first.name < second.name; }));

/// More than any class has; who tells more is not to be believed.
constexpr size_t kLongestLineage = 64;

size_t Depth(const Class& last)
{
    size_t depth = 0;
    for (const Class* one = &last; one != nullptr; one = one->super)
        ++depth;
    return depth;
}

const char* SuperclassOf(std::string_view name, const char* origin)
{
    const auto* const place = std::lower_bound(kDerivations.begin(), kDerivations.end(), name,
        [](const Derivation& derivation, std::string_view wanted) { return derivation.name < wanted; });
    return place != kDerivations.end() && place->name == name ? place->super : origin;
}

}

bool Class::derivesFrom(std::string_view ancestor) const
{
    const Class* one = this;
    while (one != nullptr && one->name != ancestor)
        one = one->super;
    return one != nullptr;
}

const Class& Classes::named(const std::string& name) { return add(name, "IOService"); }

const Class& Classes::learn(std::string_view lineage, const char* origin)
{
    std::vector<std::string> names;
    for (size_t end = 0; end != std::string_view::npos && names.size() < kLongestLineage;) {
        end = lineage.find(':');
        names.emplace_back(lineage.substr(0, end));
        lineage.remove_prefix(end == std::string_view::npos ? 0 : end + 1);
    }
    const Class* known = &add(names.back(), origin);
    for (size_t i = names.size() - 1; i-- > 0;) {
        const Class* const super = Depth(*known) < kLongestLineage ? known : &named(origin);
        known = &fClasses.try_emplace(names[i], Class { names[i], super }).first->second;
    }
    return *known;
}

/// @param origin what it derives from if it is not known.
const Class& Classes::add(const std::string& name, const char* origin)
{
    const auto [place, isNew] = fClasses.try_emplace(name, Class { name, nullptr });
    Class& found = place->second; // stays where it is, whatever is added
    if (const char* super = isNew ? SuperclassOf(name, origin) : nullptr)
        found.super = &named(super);
    return found;
}

}
