#include <DiskArbitration/Disk.h>

#include <DiskArbitration/Description.h>
#include <Host/HostPath.h>
#include <IOKit/CurrentRegistry.h>
#include <IOKit/Properties.h>

#include <array>
#include <climits>
#include <functional>
#include <string_view>

using iokit::Entry;
using iokit::Held;

namespace {

constexpr std::string_view kAPFSVolume = "41504653-0000-11AA-AA11-00306543ECAC";

/// @param session, of all of these, may be null or something else. @param media may be none.
cf::Owned<DADiskRef> MakeDisk(DASessionRef session, Held media)
{
    std::string name = media ? media->bsdName() : "";
    const auto* const known = cf::As<__DASession>(session);
    if (name.empty() || known == nullptr)
        return nullptr;
    return cf::Owned<DADiskRef>(
        new __DADisk(session, known->requests.get(), std::move(media), std::move(name)));
}

/// @return a disk for the first medium of the registry that fits; null where none does.
cf::Owned<DADiskRef> MakeDiskThat(DASessionRef session, const std::function<bool(const __DADisk&)>& fits)
{
    const auto registry = iokit::CurrentRegistry();
    for (const Entry& entry : registry->entries()) {
        cf::Owned<DADiskRef> disk = MakeDisk(session, { registry, &entry });
        if (disk && fits(*disk))
            return disk;
    }
    return nullptr;
}

std::string_view WithoutFolder(std::string_view name)
{
    for (const std::string_view folder : { "/dev/r", "/dev/" }) {
        if (name.starts_with(folder))
            return name.substr(folder.size());
    }
    return name;
}

}

CFTypeID __DADisk::typeID()
{
    static const CFTypeID id = cf::RegisterType("DADisk");
    return id;
}

bool __DADisk::isEqual(const cf::Object& other) const
{
    return bsdName == static_cast<const __DADisk&>(other).bsdName;
}

CFHashCode __DADisk::hash() const { return std::hash<std::string>()(bsdName); }

std::optional<da::Volume> da::VolumeOf(const __DADisk& disk)
{
    if (cf::TextOf(disk.media->property("Content")) == kAPFSVolume)
        return Volume { "apfs", disk.media->name, cf::TextOf(disk.media->property("UUID")), "" };
    const std::string file = disk.media.registry->deviceFile(disk.bsdName);
    return file.empty() ? std::nullopt : std::optional(disk.requests->volumes->find(disk.media, file));
}

Held da::MediaNamed(std::string_view bsdName)
{
    auto registry = iokit::CurrentRegistry();
    for (const Entry& entry : registry->entries()) {
        if (entry.bsdName() == bsdName && !bsdName.empty())
            return { std::move(registry), &entry };
    }
    return {};
}

const Entry* da::WholeMedia(const Entry* media)
{
    while (media != nullptr && (media->bsdName().empty() || !iokit::IsTrue(media->property("Whole"))))
        media = media->parent();
    return media;
}

std::string da::MacPath(const std::string& folder)
{
    const std::string volume = HostStartupVolume();
    if (folder == volume)
        return "/";
    return volume != "/" && folder.starts_with(volume + '/') ? folder.substr(volume.size()) : folder;
}

CFTypeID DADiskGetTypeID() { return __DADisk::typeID(); }

DADiskRef DADiskCreateFromBSDName(CFAllocatorRef /*allocator*/, DASessionRef session, const char* name)
{
    if (name == nullptr)
        return nullptr;
    return MakeDisk(session, da::MediaNamed(WithoutFolder(name))).release();
}

DADiskRef DADiskCreateFromIOMedia(CFAllocatorRef /*allocator*/, DASessionRef session, io_service_t media)
{
    return MakeDisk(session, iokit::References::shared().entry(media)).release();
}

DADiskRef DADiskCreateFromVolumePath(CFAllocatorRef /*allocator*/, DASessionRef session, CFURLRef path)
{
    std::array<char, PATH_MAX> wanted {};
    if (path == nullptr || CFGetTypeID(path) != CFURLGetTypeID()
        || !CFURLGetFileSystemRepresentation(
            path, true, reinterpret_cast<UInt8*>(wanted.data()), static_cast<CFIndex>(wanted.size())))
        return nullptr;
    return MakeDiskThat(session, [&wanted](const __DADisk& disk) {
        const auto volume = da::VolumeOf(disk);
        return volume && !volume->folder.empty() && da::MacPath(volume->folder) == wanted.data();
    }).release();
}

const char* DADiskGetBSDName(DADiskRef disk)
{
    const auto* const known = cf::As<__DADisk>(disk);
    return known != nullptr ? known->bsdName.c_str() : nullptr;
}

CFDictionaryRef DADiskCopyDescription(DADiskRef disk)
{
    const auto* const known = cf::As<__DADisk>(disk);
    return known != nullptr ? da::CreateDescription(*known) : nullptr;
}

io_service_t DADiskCopyIOMedia(DADiskRef disk)
{
    const auto* const known = cf::As<__DADisk>(disk);
    return known != nullptr ? iokit::References::shared().hold(known->media) : IO_OBJECT_NULL;
}

DADiskRef DADiskCopyWholeDisk(DADiskRef disk)
{
    const auto* const known = cf::As<__DADisk>(disk);
    const Entry* const whole = known != nullptr ? da::WholeMedia(known->media.entry) : nullptr;
    if (whole == nullptr || whole == known->media.entry)
        return whole != nullptr ? cf::Retained(disk) : nullptr;
    return new __DADisk(
        known->session.get(), known->requests.get(), { known->media.registry, whole }, whole->bsdName());
}
