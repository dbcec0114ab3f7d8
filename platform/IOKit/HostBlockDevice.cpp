#include <IOKit/HostBlockDevice.h>

#include <algorithm>

namespace iokit {

namespace {

std::optional<uint64_t> CountIn(const std::string& text)
{
    const std::optional<int64_t> number = NumberIn(text);
    return number && *number >= 0 ? std::optional<uint64_t>(*number) : std::nullopt;
}

/// @return the line that begins so; "" where there is none.
std::string_view LineIn(std::string_view record, const std::string& start)
{
    if (!record.starts_with(start)) {
        const size_t before = record.find('\n' + start);
        record.remove_prefix(before == std::string_view::npos ? record.size() : before + 1);
    }
    return record.substr(0, record.find('\n'));
}

std::string LastPart(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}

BlockDevice::BlockDevice(const HostTree& host, std::string folder)
    : fHost(&host)
    , fFolder(std::move(folder))
    , fUevent(bytes("uevent"))
{
    const std::string numbers = text("dev");
    const size_t colon = std::min(numbers.find(':'), numbers.size());
    fMajor = CountIn(numbers.substr(0, colon));
    fMinor = CountIn(numbers.substr(std::min(colon + 1, numbers.size())));
    fSectors = number("size");
    fUdev = host.bytes("run/udev/data/b" + numbers);
}

std::string BlockDevice::name() const { return LastPart(fFolder); }

/// The kernel has a "!" where the file's name has a slash.
std::string BlockDevice::node() const
{
    std::string file = uevent("DEVNAME");
    if (file.empty()) {
        file = name();
        std::replace(file.begin(), file.end(), '!', '/');
    }
    return "/dev/" + file;
}

std::string BlockDevice::ownerFolder() const
{
    const std::string above = fFolder.substr(0, fFolder.rfind('/'));
    return LastPart(above) == "block" ? above.substr(0, above.rfind('/')) : above;
}

std::string BlockDevice::uevent(const std::string& name) const
{
    return ValueOf(PairsOf(LineIn(fUevent, name + '='), '='), name);
}

std::string BlockDevice::udev(const std::string& property) const
{
    return ValueOf(UdevProperties(LineIn(fUdev, "E:" + property + '=')), property);
}

std::optional<uint64_t> BlockDevice::number(const std::string& file) const { return CountIn(text(file)); }

}
