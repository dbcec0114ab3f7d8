#include "ui/framework/LaunchMarker.h"

#include <Host/HostPath.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char kFolder[] = "/tmp/";
constexpr size_t kLongestPath = 1023;
using MarkerBytes = std::array<char, 4>;

bool IsASCII(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; });
}

/// Never through a link, and never waiting: anybody may put anything into the folder.
constexpr int kMarkerFlags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

/// Opens the marker, empty, for writing. @return -1 when that fails.
int OpenEmpty(const std::string& path)
{
    const int existing = open(path.c_str(), O_RDWR | O_TRUNC | kMarkerFlags);
    // Only then: some systems let nobody create what another user has in a folder for everybody.
    if (existing < 0 && errno == ENOENT)
        return open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | kMarkerFlags, 0666);
    return existing;
}

}

bool FirstLaunch(const std::string& name, uint32_t* value)
{
    std::array<char, sizeof(MarkerBytes) + 1> bytes {}; // one more, to see a longer file
    const int file = open(HostPath(kFolder + name).c_str(), O_RDONLY | kMarkerFlags);
    const bool isValid
        = file >= 0 && read(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(sizeof(MarkerBytes));
    if (file >= 0)
        close(file);
    uint32_t number = 0;
    for (size_t index = 0; index < sizeof(MarkerBytes); ++index)
        number = number << 8 | static_cast<uint8_t>(bytes[index]);
    if (value != nullptr)
        *value = isValid ? number : 0;
    return !isValid;
}

void SetFirstLaunch(const std::string& name, uint32_t value)
{
    if (!IsASCII(name))
        return;
    const int file = OpenEmpty(HostPath((kFolder + name).substr(0, kLongestPath)));
    if (file < 0)
        return;
    const MarkerBytes bytes { static_cast<char>(value >> 24), static_cast<char>(value >> 16),
        static_cast<char>(value >> 8), static_cast<char>(value) };
    [[maybe_unused]] const ssize_t written
        = write(file, bytes.data(), bytes.size()); // no reader takes a part
    fchmod(file, 0666);
    close(file);
}
