#include "volume/HfsVolume.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <span>
#include <unistd.h>

namespace {

constexpr uint64_t kHeader = 1024; ///< from a volume's start to its header, and from the copy to its end
constexpr size_t kHeaderSize = 512;
constexpr uint16_t kHFS = 0x4244;
constexpr uint16_t kHFSPlus = 0x482b;
constexpr uint16_t kHFSX = 0x4858;

/// Numbers in it begin with their highest byte.
struct Header {
    std::array<uint8_t, kHeaderSize> bytes {};

    uint64_t number(size_t start, size_t size) const
    {
        uint64_t number = 0;
        for (const uint8_t byte : std::span(bytes).subspan(start, size))
            number = number << 8U | byte;
        return number;
    }
    uint16_t signature() const { return static_cast<uint16_t>(number(0, 2)); }
    bool isHFSPlus() const { return signature() == kHFSPlus || signature() == kHFSX; }
    /// In the last two words of what is kept for those who use the volume.
    size_t uuidPlace() const { return isHFSPlus() ? 104 : 116; }
    /// The allocation blocks: how many, and how large. With them a header is told from what only looks like one.
    uint64_t geometry() const { return isHFSPlus() ? number(40, 8) : number(18, 6); }
    /// In bytes. Outside of HFS+'s blocks HFS has others.
    uint64_t sizeOfBlocks() const { return number(44, 4) * number(40, 4); }
};

/// A volume's place on the device, in bytes.
struct Extent {
    uint64_t start;
    uint64_t end;
};

std::optional<Header> ReadHeader(int file, uint64_t place)
{
    Header header;
    const ssize_t size = pread(file, header.bytes.data(), kHeaderSize, static_cast<off_t>(place));
    return size == static_cast<ssize_t>(kHeaderSize) ? std::optional(header) : std::nullopt;
}

/// @return where an HFS volume has an HFS+ volume in it; nothing for one that has none.
std::optional<Extent> EmbeddedIn(const Header& header, const Extent& volume)
{
    constexpr uint64_t sector = 512;
    if (header.number(124, 2) != kHFSPlus)
        return {};
    const uint64_t block = header.number(20, 4);
    const uint64_t start = volume.start + header.number(28, 2) * sector + header.number(126, 2) * block;
    return Extent { start, start + header.number(128, 2) * block };
}

/// @return where the header's copy is. Where the device is larger than the volume, that is at either's end.
std::optional<uint64_t> PlaceOfCopy(int file, const Header& header, const Extent& volume)
{
    std::array ends { volume.end, volume.end };
    if (header.isHFSPlus())
        ends[1] = volume.start + header.sizeOfBlocks();
    for (const uint64_t end : ends) {
        const uint64_t place = end - kHeader;
        if (end > volume.end || end < volume.start + 3 * kHeader)
            continue;
        const std::optional<Header> copy = ReadHeader(file, place);
        if (copy && copy->signature() == header.signature() && copy->geometry() == header.geometry())
            return place;
    }
    return {};
}

bool Write(int file, const HfsUUID& uuid, uint64_t place)
{
    return pwrite(file, uuid.data(), uuid.size(), static_cast<off_t>(place))
        == static_cast<ssize_t>(uuid.size())
        && fsync(file) == 0;
}

}

HfsResult SetHfsUUID(int file, const HfsUUID& uuid)
{
    const off_t size = lseek(file, 0, SEEK_END);
    if (size < 0)
        return HfsResult::Failed;
    Extent volume { 0, static_cast<uint64_t>(size) };
    std::optional<Header> header = ReadHeader(file, kHeader);
    if (header && header->signature() == kHFS) {
        if (const std::optional<Extent> embedded = EmbeddedIn(*header, volume)) {
            volume = { embedded->start, std::min(embedded->end, volume.end) };
            header = ReadHeader(file, volume.start + kHeader);
            if (header && !header->isHFSPlus())
                return HfsResult::NotHFS;
        }
    }
    if (!header || (!header->isHFSPlus() && header->signature() != kHFS))
        return HfsResult::NotHFS;
    const std::optional<uint64_t> copy = PlaceOfCopy(file, *header, volume);
    errno = EIO; // the reason, should there be no copy
    // The copy first: nobody looks at it unless the header is damaged.
    const bool isWritten = copy && Write(file, uuid, *copy + header->uuidPlace())
        && Write(file, uuid, volume.start + kHeader + header->uuidPlace());
    return isWritten ? HfsResult::Done : HfsResult::Failed;
}
