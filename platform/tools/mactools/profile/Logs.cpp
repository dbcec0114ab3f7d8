// The ends of the host's logs, and what the computer found out about itself when it was switched on.

#include "profile/Reports.h"

#include <Host/Descriptor.h>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace profile {

namespace {

constexpr size_t kMostLogs = 64;
constexpr size_t kMostBytes = size_t { 32 } * 1024; ///< of each

/// The last whole lines.
std::string RecentLines(int file, off_t size)
{
    const off_t start = std::max<off_t>(size - static_cast<off_t>(kMostBytes), 0);
    std::string bytes(kMostBytes, '\0');
    const ssize_t got = pread(file, bytes.data(), bytes.size(), start);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return start > 0 ? bytes.substr(bytes.find('\n') + 1) : bytes;
}

/// @return an empty one for what is no log: programs' own records have null characters in them, packed ones are old.
Item Log(const HostTree& tree, const std::string& name)
{
    if (name.ends_with(".gz") || name.ends_with(".xz"))
        return {};
    // Opening a pipe would wait for its writer, were it not for O_NONBLOCK.
    const Descriptor file(open(tree.path(name).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    struct stat status { };
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    const std::string contents = RecentLines(file.get(), status.st_size);
    if (contents.empty() || contents.find('\0') != std::string::npos)
        return {};
    return Item(name.substr(name.rfind('/') + 1))
        .set("source", "/" + name)
        .set("byteSize", int64_t { status.st_size })
        .set("lastModified", Date { status.st_mtime })
        .set("contents", contents);
}

}

Item::List LogItems(const HostTree& tree)
{
    Item::List items;
    for (const std::string& name : tree.names("var/log")) {
        const Item log = Log(tree, "var/log/" + name);
        if (!log.entries().empty() && items.size() < kMostLogs)
            items.push_back(log);
    }
    return items;
}

// No firmware leaves the result of its tests where the host could read it.
Item::List DiagnosticItems(const HostTree&) { return {}; }

} // namespace profile
