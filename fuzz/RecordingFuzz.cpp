// Whatever a recording holds, what comes of it is one tree from the root down, in which each entry has a number of its own
// and can be reached once.

#include <IOKit/Recording.h>

#include <cstdint>
#include <cstdlib>
#include <unordered_set>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const std::optional<iokit::Recording> recording = iokit::ReadRecording(text);
    if (!recording)
        return 0;
    const iokit::Registry& registry = recording->registry;
    std::unordered_set<uint64_t> ids;
    size_t level = 0;
    const auto enter = [&](const iokit::Visit& visit) {
        const bool isNew = ids.insert(visit.entry.id).second;
        if (isNew == visit.isAgain || (visit.entry.parent() == nullptr) != (level == 0)
            || visit.entry.name.empty())
            std::abort();
        ++level;
        return true;
    };
    iokit::Walk(registry.root(), enter, [&level](const iokit::Entry&) { --level; });
    if (ids.size() != registry.entries().size() || recording->unreadable > size)
        std::abort();
    return 0;
}
