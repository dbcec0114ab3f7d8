#include <DiskArbitration/Description.h>

#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFUUID.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/Relatives.h>

#include <array>

const CFStringRef kDADiskDescriptionVolumeKindKey = CFSTR("DAVolumeKind");
const CFStringRef kDADiskDescriptionVolumeMountableKey = CFSTR("DAVolumeMountable");
const CFStringRef kDADiskDescriptionVolumeNameKey = CFSTR("DAVolumeName");
const CFStringRef kDADiskDescriptionVolumeNetworkKey = CFSTR("DAVolumeNetwork");
const CFStringRef kDADiskDescriptionVolumePathKey = CFSTR("DAVolumePath");
const CFStringRef kDADiskDescriptionVolumeUUIDKey = CFSTR("DAVolumeUUID");
const CFStringRef kDADiskDescriptionMediaBlockSizeKey = CFSTR("DAMediaBlockSize");
const CFStringRef kDADiskDescriptionMediaBSDMajorKey = CFSTR("DAMediaBSDMajor");
const CFStringRef kDADiskDescriptionMediaBSDMinorKey = CFSTR("DAMediaBSDMinor");
const CFStringRef kDADiskDescriptionMediaBSDUnitKey = CFSTR("DAMediaBSDUnit");
const CFStringRef kDADiskDescriptionMediaBSDNameKey = CFSTR("DAMediaBSDName");
const CFStringRef kDADiskDescriptionMediaContentKey = CFSTR("DAMediaContent");
const CFStringRef kDADiskDescriptionMediaEjectableKey = CFSTR("DAMediaEjectable");
const CFStringRef kDADiskDescriptionMediaKindKey = CFSTR("DAMediaKind");
const CFStringRef kDADiskDescriptionMediaLeafKey = CFSTR("DAMediaLeaf");
const CFStringRef kDADiskDescriptionMediaNameKey = CFSTR("DAMediaName");
const CFStringRef kDADiskDescriptionMediaPathKey = CFSTR("DAMediaPath");
const CFStringRef kDADiskDescriptionMediaRemovableKey = CFSTR("DAMediaRemovable");
const CFStringRef kDADiskDescriptionMediaSizeKey = CFSTR("DAMediaSize");
const CFStringRef kDADiskDescriptionMediaUUIDKey = CFSTR("DAMediaUUID");
const CFStringRef kDADiskDescriptionMediaWholeKey = CFSTR("DAMediaWhole");
const CFStringRef kDADiskDescriptionMediaWritableKey = CFSTR("DAMediaWritable");
const CFStringRef kDADiskDescriptionDeviceInternalKey = CFSTR("DADeviceInternal");
const CFStringRef kDADiskDescriptionDeviceModelKey = CFSTR("DADeviceModel");
const CFStringRef kDADiskDescriptionDevicePathKey = CFSTR("DADevicePath");
const CFStringRef kDADiskDescriptionDeviceProtocolKey = CFSTR("DADeviceProtocol");
const CFStringRef kDADiskDescriptionDeviceRevisionKey = CFSTR("DADeviceRevision");
const CFStringRef kDADiskDescriptionDeviceUnitKey = CFSTR("DADeviceUnit");
const CFStringRef kDADiskDescriptionDeviceVendorKey = CFSTR("DADeviceVendor");
const CFStringRef kDADiskDescriptionBusNameKey = CFSTR("DABusName");
const CFStringRef kDADiskDescriptionBusPathKey = CFSTR("DABusPath");

namespace da {

namespace {

using iokit::Entry;
using iokit::Plane;

/// A property that descriptions have under another name.
struct Fact {
    const CFStringRef* key;
    const char* property;
    CFTypeID (*type)();
};

constexpr std::array kOfTheMedia {
    Fact { &kDADiskDescriptionMediaBlockSizeKey, "Preferred Block Size", CFNumberGetTypeID },
    Fact { &kDADiskDescriptionMediaBSDMajorKey, "BSD Major", CFNumberGetTypeID },
    Fact { &kDADiskDescriptionMediaBSDMinorKey, "BSD Minor", CFNumberGetTypeID },
    Fact { &kDADiskDescriptionMediaBSDUnitKey, "BSD Unit", CFNumberGetTypeID },
    Fact { &kDADiskDescriptionMediaBSDNameKey, "BSD Name", CFStringGetTypeID },
    Fact { &kDADiskDescriptionMediaContentKey, "Content", CFStringGetTypeID },
    Fact { &kDADiskDescriptionMediaEjectableKey, "Ejectable", CFBooleanGetTypeID },
    Fact { &kDADiskDescriptionMediaLeafKey, "Leaf", CFBooleanGetTypeID },
    Fact { &kDADiskDescriptionMediaRemovableKey, "Removable", CFBooleanGetTypeID },
    Fact { &kDADiskDescriptionMediaSizeKey, "Size", CFNumberGetTypeID },
    Fact { &kDADiskDescriptionMediaWholeKey, "Whole", CFBooleanGetTypeID },
    Fact { &kDADiskDescriptionMediaWritableKey, "Writable", CFBooleanGetTypeID },
};

constexpr std::array kOfTheDevice {
    Fact { &kDADiskDescriptionDeviceModelKey, "Product Name", CFStringGetTypeID },
    Fact { &kDADiskDescriptionDeviceRevisionKey, "Product Revision Level", CFStringGetTypeID },
    Fact { &kDADiskDescriptionDeviceVendorKey, "Vendor Name", CFStringGetTypeID },
};

constexpr std::array kOfTheProtocol {
    Fact { &kDADiskDescriptionDeviceProtocolKey, "Physical Interconnect", CFStringGetTypeID },
};

class Description {
public:
    explicit Description(const __DADisk& disk)
        : fMedia(disk.media)
        , fWay(iokit::Relatives(
              *disk.media.entry, Plane::Service, kIORegistryIterateRecursively | kIORegistryIterateParents))
    {
        fWay.insert(fWay.begin(), fMedia.entry);
    }

    void addVolume(const Volume& volume);
    void addMedia();
    void addDevice();
    void addBus();
    cf::Owned<CFDictionaryRef> take() { return cf::Owned<CFDictionaryRef>(fValues.release()); }

    /// Null, here and below, is left out.
    void add(CFStringRef key, CFTypeRef value)
    {
        if (value != nullptr)
            CFDictionarySetValue(fValues.get(), key, value);
    }

private:
    void addText(CFStringRef key, const std::string& text);
    void addUUID(CFStringRef key, const std::string& text);
    void addPath(CFStringRef key, const Entry& entry, Plane plane);
    template <size_t Count> void addFacts(const std::array<Fact, Count>& facts, CFDictionaryRef from);

    /// The value of the media or of the nearest entry above that has it. @return null for none of the type.
    CFTypeRef search(const char* property, CFTypeID type) const;
    CFDictionaryRef searchDictionary(const char* property) const
    {
        return static_cast<CFDictionaryRef>(search(property, CFDictionaryGetTypeID()));
    }

    iokit::Held fMedia;
    std::vector<const Entry*> fWay; ///< the media, and all above
    cf::Owned<CFMutableDictionaryRef> fValues { CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks) };
};

CFBooleanRef Flag(bool value) { return value ? kCFBooleanTrue : kCFBooleanFalse; }

void Description::addVolume(const Volume& volume)
{
    add(kDADiskDescriptionVolumeMountableKey, Flag(!volume.kind.empty()));
    addText(kDADiskDescriptionVolumeKindKey, volume.kind);
    addText(kDADiskDescriptionVolumeNameKey, volume.name);
    addUUID(kDADiskDescriptionVolumeUUIDKey, volume.uuid);
    if (volume.folder.empty())
        return;
    const std::string path = MacPath(volume.folder);
    const cf::Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true));
    add(kDADiskDescriptionVolumePathKey, url.get());
}

void Description::addMedia()
{
    addFacts(kOfTheMedia, fMedia->properties.get());
    addText(kDADiskDescriptionMediaKindKey, fMedia->objectClass->name);
    addText(kDADiskDescriptionMediaNameKey, fMedia->name);
    addUUID(kDADiskDescriptionMediaUUIDKey, cf::TextOf(fMedia->property("UUID")));
    addPath(kDADiskDescriptionMediaPathKey, *fMedia.entry, Plane::Service);
}

void Description::addDevice()
{
    addFacts(kOfTheDevice, searchDictionary("Device Characteristics"));
    CFDictionaryRef const protocol = searchDictionary("Protocol Characteristics");
    addFacts(kOfTheProtocol, protocol);
    const std::string location = protocol != nullptr
        ? cf::TextOf(CFDictionaryGetValue(protocol, CFSTR("Physical Interconnect Location")))
        : "";
    if (!location.empty())
        add(kDADiskDescriptionDeviceInternalKey, Flag(location == "Internal"));
    CFTypeRef const unit = search("IOUnit", CFNumberGetTypeID());
    add(kDADiskDescriptionDeviceUnitKey,
        unit != nullptr ? unit : search("SCSI Logical Unit Number", CFNumberGetTypeID()));
    for (const Entry* const entry : fWay) {
        if (entry->conformsTo("IOBlockStorageDevice"))
            return addPath(kDADiskDescriptionDevicePathKey, *entry, Plane::Service);
    }
}

void Description::addBus()
{
    for (const Entry* const entry : fWay) {
        const Entry* const above = entry->parent(Plane::DeviceTree);
        if (above == nullptr)
            continue;
        if (above->index == 0) // the computer itself is no bus
            return;
        addText(kDADiskDescriptionBusNameKey, entry->name);
        return addPath(kDADiskDescriptionBusPathKey, *entry, Plane::DeviceTree);
    }
}

void Description::addText(CFStringRef key, const std::string& text)
{
    const cf::Owned<CFStringRef> value(text.empty() ? nullptr : cf::MakeString(text));
    add(key, value.get());
}

void Description::addUUID(CFStringRef key, const std::string& text)
{
    const cf::Owned<CFStringRef> string(cf::MakeString(text));
    const cf::Owned<CFUUIDRef> uuid(string ? CFUUIDCreateFromString(nullptr, string.get()) : nullptr);
    add(key, uuid.get());
}

void Description::addPath(CFStringRef key, const Entry& entry, Plane plane)
{
    addText(key, iokit::PathOf(*fMedia.registry, entry, plane));
}

template <size_t Count> void Description::addFacts(const std::array<Fact, Count>& facts, CFDictionaryRef from)
{
    for (const Fact& fact : facts) {
        CFTypeRef const value = from != nullptr
            ? CFDictionaryGetValue(from, __CFStringMakeConstantString(fact.property))
            : nullptr;
        add(*fact.key, value != nullptr && CFGetTypeID(value) == fact.type() ? value : nullptr);
    }
}

CFTypeRef Description::search(const char* property, CFTypeID type) const
{
    for (const Entry* const entry : fWay) {
        if (CFTypeRef const value = entry->property(property))
            return CFGetTypeID(value) == type ? value : nullptr;
    }
    return nullptr;
}

}

CFDictionaryRef CreateDescription(const __DADisk& disk)
{
    Description description(disk);
    if (const auto volume = VolumeOf(disk))
        description.addVolume(*volume);
    description.add(kDADiskDescriptionVolumeNetworkKey, kCFBooleanFalse);
    description.addMedia();
    description.addDevice();
    description.addBus();
    return description.take().release();
}

}
