#include "HostMounts.h"

#include "TextReading.h"

#include <algorithm>
#include <optional>
#include <sys/sysmacros.h>

namespace {

/// Takes the text up to a separator off the start, and the separator too.
std::string_view Taken(std::string_view& text, char separator)
{
    const std::string_view taken = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(taken.size() + 1, text.size()));
    return taken;
}

std::optional<dev_t> DeviceIn(std::string_view numbers)
{
    const auto major = NumberIn(Taken(numbers, ':'));
    const auto minor = NumberIn(numbers);
    if (!major || !minor)
        return {};
    return makedev(static_cast<unsigned>(*major), static_cast<unsigned>(*minor));
}

std::optional<HostMount> MountIn(std::string_view line)
{
    const auto id = NumberIn(Taken(line, ' '));
    const auto parent = NumberIn(Taken(line, ' '));
    const auto device = DeviceIn(Taken(line, ' '));
    const std::string_view root = Taken(line, ' ');
    const std::string_view folder = Taken(line, ' ');
    // Any number of optional fields ends with a dash.
    const size_t dash = line.find(" - ");
    if (!id || !parent || !device || !folder.starts_with('/') || dash == std::string_view::npos)
        return {};
    line.remove_prefix(dash + 3);
    const std::string_view type = Taken(line, ' ');
    const std::string_view source = Taken(line, ' ');
    return HostMount { *id, *parent, *device, Unescaped(root), Unescaped(folder), Unescaped(type),
        Unescaped(source) };
}

}

HostMounts HostMountsIn(std::string_view table)
{
    HostMounts mounts;
    while (!table.empty()) {
        if (auto mount = MountIn(Taken(table, '\n')))
            mounts.push_back(std::move(*mount));
    }
    return mounts;
}
