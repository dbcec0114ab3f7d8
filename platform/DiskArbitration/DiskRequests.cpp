#include <DiskArbitration/Disk.h>
#include <DiskArbitration/Requests.h>

#include <CoreFoundation/CFString.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/Relatives.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <variant>

using da::Part;
using da::Verb;
using da::Wish;

namespace {

struct Argument {
    std::string_view mac;
    std::string_view host; ///< "" where it is so without a word
};

constexpr std::array kArguments {
    Argument { "async", "" },
    Argument { "noatime", "noatime" },
    Argument { "nobrowse", "x-gvfs-hide" },
    Argument { "nodev", "nodev" },
    Argument { "noexec", "noexec" },
    Argument { "nosuid", "nosuid" },
    Argument { "perm", "" },
    Argument { "rdonly", "ro" },
    Argument { "sync", "sync" },
};

/// @param arguments ended by null; may be null. @return none when one of them is unknown.
std::optional<std::string> MountOptions(const CFStringRef* arguments)
{
    std::string options;
    for (; arguments != nullptr && *arguments != nullptr; ++arguments) {
        const std::string text = cf::TextOf(*arguments);
        const auto* const known = std::find_if(kArguments.begin(), kArguments.end(),
            [&text](const Argument& argument) { return argument.mac == text; });
        if (known == kArguments.end())
            return {};
        if (!options.empty() && !known->host.empty())
            options += ',';
        options += known->host;
    }
    return options;
}

/// @return the name in the host's encoding; none where it is no text that can have one.
std::optional<std::string> VolumeName(CFStringRef name)
{
    bool isText = name != nullptr && CFGetTypeID(name) == CFStringGetTypeID();
    std::string text = isText ? cf::Utf8(name, &isText) : "";
    return isText && text.find('\0') == std::string::npos ? std::optional(std::move(text)) : std::nullopt;
}

/// @param media of the registry. @return none where it has no device file of this host's.
std::optional<Part> PartOf(const iokit::Held& media)
{
    const auto device = da::DeviceOf(*media.entry);
    std::string file = media.registry->deviceFile(media->bsdName());
    return device && !file.empty() ? std::optional(Part { *device, std::move(file) }) : std::nullopt;
}

/// @param media may be none, as one that is not there any more: others get its numbers.
/// @param isWhole whether all of the disk is meant, rather than the one medium.
std::vector<Part> PartsOf(const iokit::Held& media, bool isWhole)
{
    const auto first = media ? PartOf(media) : std::nullopt;
    if (!first)
        return {};
    std::vector<Part> parts { *first };
    if (!isWhole)
        return parts;
    for (const iokit::Entry* const entry :
        iokit::Relatives(*media.entry, iokit::Plane::Service, kIORegistryIterateRecursively)) {
        if (const auto part = PartOf({ media.registry, entry }))
            parts.push_back(*part);
    }
    return parts;
}

/// @param wish or why it is none.
void Start(DADiskRef disk, std::variant<Wish, DAReturn> wish, DADiskMountCallback callback, void* context)
{
    const auto* const known = cf::As<__DADisk>(disk);
    if (known == nullptr)
        return;
    // With a disk that held the session, nobody could ever release a session while a request has no answer.
    cf::Owned<DADiskRef> own(new __DADisk(nullptr, known->requests.get(), known->media, known->bsdName));
    if (const auto* const refusal = std::get_if<DAReturn>(&wish))
        return known->requests->refuse({ std::move(own), "", {}, callback, context }, *refusal);
    auto& wanted = std::get<Wish>(wish);
    const iokit::Held media = da::MediaNamed(known->bsdName);
    const iokit::Held whole { media.registry, da::WholeMedia(media.entry) };
    const bool isForWhole = wanted.isForWhole || wanted.verb == Verb::Eject;
    known->requests->start(
        { std::move(own), whole ? whole->bsdName() : known->bsdName, std::move(wanted), callback, context },
        PartsOf(isForWhole ? whole : media, isForWhole));
}

}

void DADiskMount(
    DADiskRef disk, CFURLRef path, DADiskMountOptions options, DADiskMountCallback callback, void* context)
{
    DADiskMountWithArguments(disk, path, options, callback, context, nullptr);
}

void DADiskMountWithArguments(DADiskRef disk, CFURLRef path, DADiskMountOptions options,
    DADiskMountCallback callback, void* context, CFStringRef arguments[])
{
    const auto mountOptions = MountOptions(arguments);
    if (path != nullptr)
        return Start(disk, kDAReturnUnsupported, callback, context);
    if (!mountOptions)
        return Start(disk, kDAReturnBadArgument, callback, context);
    Start(disk, Wish { Verb::Mount, (options & kDADiskMountOptionWhole) != 0, false, *mountOptions },
        callback, context);
}

void DADiskUnmount(
    DADiskRef disk, DADiskUnmountOptions options, DADiskUnmountCallback callback, void* context)
{
    Start(disk,
        Wish { Verb::Unmount, (options & kDADiskUnmountOptionWhole) != 0,
            (options & kDADiskUnmountOptionForce) != 0 },
        callback, context);
}

void DADiskEject(DADiskRef disk, DADiskEjectOptions /*options*/, DADiskEjectCallback callback, void* context)
{
    Start(disk, Wish { Verb::Eject }, callback, context);
}

void DADiskRename(DADiskRef disk, CFStringRef name, DADiskRenameOptions /*options*/,
    DADiskRenameCallback callback, void* context)
{
    const auto text = VolumeName(name);
    if (!text)
        return Start(disk, kDAReturnBadArgument, callback, context);
    Start(disk, Wish { Verb::Rename, false, false, *text }, callback, context);
}
