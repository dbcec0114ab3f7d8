#include <IOKit/Class.h>

#include <algorithm>
#include <array>

namespace iokit {

namespace {

struct Derivation {
    std::string_view name;
    const char* super;
};

constexpr std::array kDerivations {
    Derivation { "OSObject", nullptr },
    Derivation { "IORegistryEntry", "OSObject" },
    Derivation { "IOService", "IORegistryEntry" },
    Derivation { "IOPlatformExpertDevice", "IOService" },
    Derivation { "IOBlockStorageDevice", "IOService" },
    Derivation { "IOAHCIBlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "IONVMeBlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "IOBlockStorageServices", "IOBlockStorageDevice" },
    Derivation { "AppleSDXCBlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "IODiskImageBlockStorageDeviceOutKernel", "IOBlockStorageDevice" },
    Derivation { "IOCDBlockStorageDevice", "IOBlockStorageDevice" },
    Derivation { "IODVDBlockStorageDevice", "IOCDBlockStorageDevice" },
    Derivation { "IOBDBlockStorageDevice", "IODVDBlockStorageDevice" },
    Derivation { "IOCompactDiscServices", "IOCDBlockStorageDevice" },
    Derivation { "IODVDServices", "IODVDBlockStorageDevice" },
    Derivation { "IOBDServices", "IOBDBlockStorageDevice" },
    Derivation { "IOStorage", "IOService" },
    Derivation { "IOBlockStorageDriver", "IOStorage" },
    Derivation { "IOCDBlockStorageDriver", "IOBlockStorageDriver" },
    Derivation { "IODVDBlockStorageDriver", "IOCDBlockStorageDriver" },
    Derivation { "IOBDBlockStorageDriver", "IODVDBlockStorageDriver" },
    Derivation { "IOMedia", "IOStorage" },
    Derivation { "IOCDMedia", "IOMedia" },
    Derivation { "IODVDMedia", "IOMedia" },
    Derivation { "IOBDMedia", "IOMedia" },
    Derivation { "IOFilterScheme", "IOStorage" },
    Derivation { "IOPartitionScheme", "IOFilterScheme" },
    Derivation { "IOApplePartitionScheme", "IOPartitionScheme" },
    Derivation { "IOFDiskPartitionScheme", "IOPartitionScheme" },
    Derivation { "IOGUIDPartitionScheme", "IOPartitionScheme" },
};

const char* SuperclassOf(std::string_view name)
{
    const auto* const known = std::find_if(kDerivations.begin(), kDerivations.end(),
        [name](const Derivation& derivation) { return derivation.name == name; });
    return known != kDerivations.end() ? known->super : "IOService";
}

}

bool Class::derivesFrom(std::string_view ancestor) const
{
    const Class* one = this;
    while (one != nullptr && one->name != ancestor)
        one = one->super;
    return one != nullptr;
}

const Class& Classes::named(const std::string& name)
{
    const auto [place, isNew] = fClasses.try_emplace(name, Class { name, nullptr });
    Class& found = place->second; // stays where it is, whatever is added
    if (const char* super = isNew ? SuperclassOf(name) : nullptr)
        found.super = &named(super);
    return found;
}

}
