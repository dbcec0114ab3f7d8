#include <DiskArbitration/Plan.h>

#include <algorithm>

namespace da {

namespace {

constexpr const char* kFilesystem = "org.freedesktop.UDisks2.Filesystem";

Plan Refused(DAReturn status) { return { {}, Refusal { status }, nullptr }; }

const ServedBlock* BlockOf(const Part& part, const ServedObjects& service)
{
    const auto found = service.blocks.find(part.device);
    return found != service.blocks.end() ? &found->second : nullptr;
}

ServiceCall CallFor(const Wish& wish, const ServedBlock& volume, const Part& part)
{
    switch (wish.verb) {
    case Verb::Mount:
        return { volume.object, kFilesystem, "Mount", {}, wish.text, false, &part };
    case Verb::Rename:
        return { volume.object, kFilesystem, "SetLabel", wish.text, "", false, &part };
    default:
        return { volume.object, kFilesystem, "Unmount", {}, "", wish.isForced, &part };
    }
}

/// Those that are as wished already are left alone; there need not be any others.
Plan PlanForAll(const Wish& wish, const std::vector<Part>& parts, const ServedObjects& service)
{
    Plan plan;
    for (const Part& part : parts) {
        const ServedBlock* const block = BlockOf(part, service);
        if (block != nullptr && block->hasFileSystem
            && part.mount.has_value() == (wish.verb == Verb::Unmount))
            plan.calls.push_back(CallFor(wish, *block, part));
    }
    return plan;
}

Plan PlanForEject(const std::vector<Part>& parts, const ServedBlock& block, const ServedObjects& service)
{
    const auto mounted
        = std::find_if(parts.begin(), parts.end(), [](const Part& part) { return part.mount.has_value(); });
    if (mounted != parts.end())
        return { {}, Refusal { kDAReturnBusy }, &*mounted };
    const auto only = [&parts](const std::string& object, const char* interface, const char* method) {
        return Plan { { { object, interface, method, {}, "", false, &parts.front() } }, {}, nullptr };
    };
    if (block.isLoop)
        return only(block.object, "org.freedesktop.UDisks2.Loop", "Delete");
    const auto drive = service.drives.find(block.drive);
    if (drive == service.drives.end() || (!drive->second.isEjectable && !drive->second.canPowerOff))
        return Refused(kDAReturnUnsupported);
    // A disk that is one with its drive leaves when the drive may be unplugged.
    return only(
        block.drive, "org.freedesktop.UDisks2.Drive", drive->second.isEjectable ? "Eject" : "PowerOff");
}

}

Plan PlanFor(const Wish& wish, const std::vector<Part>& parts, const ServedObjects& service)
{
    const Part& first = parts.front();
    const ServedBlock* const block = BlockOf(first, service);
    if (block == nullptr)
        return Refused(kDAReturnNotFound);
    if (wish.verb == Verb::Eject)
        return PlanForEject(parts, *block, service);
    if (wish.isForWhole)
        return PlanForAll(wish, parts, service);
    if (!block->hasFileSystem)
        return Refused(wish.verb == Verb::Unmount ? kDAReturnNotMounted : kDAReturnUnsupported);
    return { { CallFor(wish, *block, first) }, {}, nullptr };
}

}
