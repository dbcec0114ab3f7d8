#include "util/MediaTypes.h"

#include "util/Disks.h"
#include "util/ReadTest.h"
#include "util/RegistryEntries.h"
#include "util/RegistryProperties.h"
#include "util/StringConversions.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

struct Interconnect {
    const char* text; ///< in the name that the drive's protocol has
    BusCode bus;
};

/// The first row that fits counts: "SATA" has "ATA" in it.
constexpr std::array kInterconnects {
    Interconnect { "PCI", kBusPCI },
    Interconnect { "SCSI", kBusSCSI },
    Interconnect { "SAS", kBusSAS },
    Interconnect { "Fibre Channel Interface", kBusFibreChannel },
    Interconnect { "SATA", kBusSATA },
    Interconnect { "ATA", kBusATA },
    Interconnect { "FireWire", kBusFireWire },
    Interconnect { "USB", kBusUSB },
};

struct OpticalClass {
    const char* name;
    MediaCode code;
};

constexpr std::array kOpticalClasses {
    OpticalClass { "IOCDMedia", kMediaCD },
    OpticalClass { "IODVDMedia", kMediaDVD },
    OpticalClass { "IOBDMedia", kMediaBluRay },
};

CFRef<CFTypeRef> InterconnectOf(io_registry_entry_t media)
{
    return SearchedMember(media, CFSTR("Protocol Characteristics"), CFSTR("Physical Interconnect"));
}

/// USB's speeds have numbers, which differ between the systems' generations.
BusCode USBBusOf(io_registry_entry_t media)
{
    constexpr int64_t fastDevice = 3;
    constexpr int64_t fastUSB = 4;
    const CFRef<CFTypeRef> device = SearchedProperty(media, CFSTR("Device Speed"));
    const auto speed = NumberFrom(device ? device.get() : SearchedProperty(media, CFSTR("USBSpeed")).get());
    return speed && *speed >= (device ? fastDevice : fastUSB) ? kBusFastUSB : kBusUSB;
}

/// Stores the code if there is one to store.
bool Answer(bool isThat, uint32_t code, uint32_t* destination)
{
    if (isThat && destination != nullptr)
        *destination = code;
    return isThat;
}

constexpr std::array kTests { TestForAPFS_Media, TestForOpticalMedia, TestForIPodMedia, TestForDiskImageMedia,
    TestForXsanImageMedia, TestForSSD_Media };

}

bool TestForDiskOnSupportedBus(io_registry_entry_t media, uint32_t* bus)
{
    const CFRef<CFTypeRef> interconnect = InterconnectOf(media);
    const auto* const known = std::find_if(
        kInterconnects.begin(), kInterconnects.end(), [&interconnect](const Interconnect& one) {
            return CompareCFTypeRefToString(interconnect.get(), one.text, true);
        });
    BusCode code = known != kInterconnects.end() ? known->bus : kBusUnknown;
    if (code == kBusUSB)
        code = USBBusOf(media);
    return Answer(static_cast<bool>(interconnect), code, bus);
}

uint32_t GetMediaTypeWithIOServiceObject(io_registry_entry_t media)
{
    uint32_t code = kMediaDisk;
    (void)std::any_of(kTests.begin(), kTests.end(), [&](const auto& test) { return test(media, &code); });
    return code;
}

bool TestForAPFS_Media(io_registry_entry_t media, uint32_t* code)
{
    io_name_t className {};
    return code != nullptr && IOObjectGetClass(media, className) == kIOReturnSuccess
        && Answer(std::strcmp(className, "AppleAPFSMedia") == 0, kMediaAPFS, code);
}

bool TestForOpticalMedia(io_registry_entry_t media, uint32_t* code)
{
    const auto* const known = std::find_if(kOpticalClasses.begin(), kOpticalClasses.end(),
        [media](const OpticalClass& one) { return IOKitObjectIsChildOfObjectOfClass(media, one.name); });
    return known != kOpticalClasses.end() && Answer(true, known->code, code);
}

bool TestForIPodMedia(io_registry_entry_t media, uint32_t* code)
{
    const CFRef<CFTypeRef> product
        = SearchedMember(media, CFSTR("Device Characteristics"), CFSTR("Product Name"));
    return Answer(CompareCFTypeRefToString(product.get(), "iPod", true), kMediaIPod, code);
}

bool TestForDiskImageMedia(io_registry_entry_t media, uint32_t* code)
{
    const bool isImage = IOKitObjectIsChildOfObjectOfClass(media, "KDIFileBackingStore")
        || CompareCFTypeRefToString(InterconnectOf(media).get(), "Virtual Interface", true);
    return Answer(isImage, kMediaImage, code);
}

bool TestForXsanImageMedia(io_registry_entry_t media, uint32_t* code)
{
    return Answer(
        IsString(SearchedProperty(media, CFSTR("Content")).get(), CFSTR("Apple_Xsan")), kMediaXsan, code);
}

bool TestForSSD_Media(io_registry_entry_t media, uint32_t* code)
{
    const CFRef<CFTypeRef> type
        = SearchedMember(media, CFSTR("Device Characteristics"), CFSTR("Medium Type"));
    if (type)
        return Answer(CompareCFTypeRefToString(type.get(), "Solid State", false), kMediaSSD, code);
    std::array<char, 32> name {};
    uint64_t size = 0;
    GetBSDNameAndSizes(media, nullptr, name.data(), name.size(), &size, nullptr, nullptr);
    return Answer(PerformReadTestForSSD_Media(name.data(), size), kMediaSSD, code);
}

bool TestForTRIM_Support(io_registry_entry_t media)
{
    return IsTrue(SearchedMember(media, CFSTR("IOStorageFeatures"), CFSTR("Unmap")).get());
}

bool TestForZEK_SSD(io_registry_entry_t media)
{
    return CompareCFTypeRefToString(
        SearchedProperty(media, CFSTR("Model Number")).get(), "ZEK Pellurio M.2 SSD", false);
}
