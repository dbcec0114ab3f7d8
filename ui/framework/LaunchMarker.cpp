#include "ui/framework/LaunchMarker.h"

#include <Host/HostPath.h>
#include <algorithm>
#include <array>
#include <fcntl.h>
#include <fstream>
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

}

bool FirstLaunch(const std::string& name, uint32_t* value)
{
    std::ifstream file(HostPath(kFolder + name), std::ios::binary);
    MarkerBytes bytes {};
    const bool isValid
        = file.read(bytes.data(), bytes.size()) && file.peek() == std::ifstream::traits_type::eof();
    uint32_t number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<uint8_t>(byte);
    if (value != nullptr)
        *value = isValid ? number : 0;
    return !isValid;
}

void SetFirstLaunch(const std::string& name, uint32_t value)
{
    if (!IsASCII(name))
        return;
    const std::string path = (kFolder + name).substr(0, kLongestPath);
    const int file = open(HostPath(path).c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0)
        return;
    const MarkerBytes bytes { static_cast<char>(value >> 24), static_cast<char>(value >> 16),
        static_cast<char>(value >> 8), static_cast<char>(value) };
    const ssize_t written = write(file, bytes.data(), bytes.size());
    close(file);
    if (written == static_cast<ssize_t>(bytes.size()))
        chmod(HostPath(path).c_str(), 0666);
}
