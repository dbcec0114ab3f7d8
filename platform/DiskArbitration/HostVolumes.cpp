#include <DiskArbitration/HostVolumes.h>

#include <Host/MessageBus.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <sys/sysmacros.h>

namespace da {

namespace {

struct Kind {
    std::string_view host;
    const char* mac;
};

/// File systems that Macs have under other names.
constexpr std::array kKinds {
    Kind { "vfat", "msdos" },
    Kind { "hfsplus", "hfs" },
    Kind { "ntfs3", "ntfs" },
    Kind { "iso9660", "cd9660" },
};

std::string MacKind(const std::string& type)
{
    const auto* const known
        = std::find_if(kKinds.begin(), kKinds.end(), [&type](const Kind& kind) { return kind.host == type; });
    return known != kKinds.end() ? known->mac : type;
}

Contents ContentsFromUdev(const HostTree& host, dev_t device)
{
    const TextPairs udev
        = host.udev('b' + std::to_string(major(device)) + ':' + std::to_string(minor(device)));
    const std::string usage = ValueOf(udev, "ID_FS_USAGE");
    if (!usage.empty() && usage != "filesystem")
        return {};
    return { ValueOf(udev, "ID_FS_LABEL_ENC"), ValueOf(udev, "ID_FS_UUID"), ValueOf(udev, "ID_FS_TYPE") };
}

}

std::optional<dev_t> DeviceOf(const iokit::Entry& media)
{
    const auto major = iokit::NumberOf(media.property("BSD Major"));
    const auto minor = iokit::NumberOf(media.property("BSD Minor"));
    if (!major || !minor)
        return {};
    return makedev(static_cast<unsigned>(*major), static_cast<unsigned>(*minor));
}

HostVolumes::HostVolumes(HostTree host)
    : fHost(std::move(host))
    , fMounts(fHost)
{
}

Volume HostVolumes::find(const iokit::Held& media, const std::string& deviceFile)
{
    const auto device = DeviceOf(*media.entry);
    if (!device)
        return {};
    const std::lock_guard lock(fMutex);
    Contents found = contents(*device, media.registry);
    Volume volume { MacKind(found.type), std::move(found.label), std::move(found.uuid), "" };
    if (const HostMount* const mount = fMounts.find(*device, deviceFile)) {
        volume.folder = mount->folder;
        // What a program mounts for the kernel has the program's kind.
        if (!mount->type.starts_with("fuse"))
            volume.kind = MacKind(mount->type);
    }
    return volume;
}

std::optional<HostMount> HostVolumes::mountOf(dev_t device, const std::string& deviceFile)
{
    const std::lock_guard lock(fMutex);
    const HostMount* const mount = fMounts.find(device, deviceFile);
    return mount != nullptr ? std::optional(*mount) : std::nullopt;
}

void HostVolumes::forget()
{
    const std::lock_guard lock(fMutex);
    fAskedFor.reset();
}

Contents HostVolumes::contents(dev_t device, const std::shared_ptr<const iokit::Registry>& registry)
{
    if (fAskedFor.lock() != registry)
        askUDisks(registry);
    const auto told = fUDisks.find(device);
    Contents contents = told != fUDisks.end() ? told->second.contents : Contents();
    const Contents udev = ContentsFromUdev(fHost, device);
    for (std::string Contents::*const fact : { &Contents::label, &Contents::uuid, &Contents::type }) {
        if ((contents.*fact).empty())
            contents.*fact = udev.*fact;
    }
    return contents;
}

void HostVolumes::askUDisks(const std::shared_ptr<const iokit::Registry>& registry)
{
    fUDisks = ObjectsFromUDisks(SystemBusAddress(fHost)).blocks;
    fAskedFor = registry;
}

}
