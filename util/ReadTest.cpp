#include "util/ReadTest.h"

#include "util/DeviceNames.h"
#include "util/Disks.h"
#include "util/RegistryProperties.h"

#include <Host/RawDevice.h>
#include <array>
#include <chrono>
#include <unistd.h>

namespace {

constexpr uint64_t kBlockSize = 4096;
constexpr uint64_t kSmallestDisk = 0x40000000;
constexpr uint64_t kReads = 4;
constexpr double kFastRead = 0.006; // seconds

using Seconds = std::chrono::duration<double>;

double Now() { return Seconds(std::chrono::system_clock::now().time_since_epoch()).count(); }

/// Where a read goes. @param time the moment, in seconds: its microseconds choose the place within the read's stretch.
uint64_t OffsetOfRead(uint64_t read, uint64_t diskSize, double time)
{
    const uint64_t quarter = diskSize / 409600;
    const uint64_t jitter = quarter * 4096;
    const uint64_t base = quarter * 40960 - 4096;
    const uint64_t stride = diskSize - quarter * 40960 - quarter * 4096;
    const uint64_t chance = static_cast<uint64_t>(time * 1000000) & 0xff;
    return (stride * read / 3 + base - (chance * jitter) / 256) / kBlockSize * kBlockSize;
}

bool ReadBlock(int device, uint64_t offset)
{
    alignas(kBlockSize) std::array<char, kBlockSize> block;
    const auto place = static_cast<off_t>(offset);
    return lseek(device, place, SEEK_SET) == place
        && read(device, block.data(), block.size()) == static_cast<ssize_t>(block.size());
}

bool AllReadsAreFast(int device, uint64_t diskSize)
{
    for (uint64_t i = 0; i < kReads; ++i) {
        const double start = Now();
        if (!ReadBlock(device, OffsetOfRead(i, diskSize, start)))
            return false;
        if (i > 0 && Now() - start >= kFastRead)
            return false;
    }
    return true;
}

}

bool PerformReadTestForSSD_Media(const char* bsdName, uint64_t size)
{
    const IORef media(CreateIOKitObjectWithBSDName(bsdName));
    if (!media)
        return false;
    const uint64_t diskSize = size != 0
        ? size
        : static_cast<uint64_t>(NumberFrom(OwnProperty(media.get(), CFSTR("Size")).get()).value_or(0));
    if (diskSize < kSmallestDisk)
        return false;
    std::array<char, 16> path {};
    CopyText(path.data(), bsdName, path.size());
    ConvertBSDNodeToPathname(path.data(), path.size());
    const int device = HostOpenRawDevice(path.data());
    const bool isFast = device >= 0 && AllReadsAreFast(device, diskSize);
    if (device >= 0)
        close(device);
    return isFast;
}
