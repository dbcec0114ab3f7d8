#include "volume/VolumeDatabase.h"

#include <Host/AtomicFile.h>
#include <sys/mount.h>

#include "CoreFoundation/FileBytes.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <sys/stat.h>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr size_t kDigits = 8;

/// @return nothing for a line of another volume, or one that says something else.
std::optional<uint32_t> FlagsIn(const std::string& line, const std::string& key)
{
    if (line.size() != key.size() + 1 + kDigits || !line.starts_with(key + ' '))
        return {};
    uint32_t flags = 0;
    const char* const end = line.data() + line.size();
    const auto [rest, error] = std::from_chars(end - kDigits, end, flags, 16);
    return error == std::errc() && rest == end ? std::optional(flags) : std::nullopt;
}

std::string Line(const std::string& key, uint32_t flags)
{
    std::array<char, kDigits + 1> digits {};
    std::snprintf(digits.data(), digits.size(), "%08X", flags);
    return key + ' ' + digits.data();
}

/// A line end in a path is written as the host's table of mounts does, since it would end the line.
std::string OnOneLine(std::string path)
{
    for (size_t i = path.find('\n'); i != std::string::npos; i = path.find('\n', i))
        path.replace(i, 1, "\\012");
    return path;
}

}

int VolumeDatabase::read(const std::string& file)
{
    std::vector<uint8_t> bytes;
    const int error = ReadFileBytes(file, bytes);
    std::istringstream text(std::string(bytes.begin(), bytes.end()));
    fLines.clear();
    for (std::string line; std::getline(text, line);)
        fLines.push_back(line);
    return error == ENOENT ? 0 : error;
}

int VolumeDatabase::write(const std::string& file) const
{
    std::string text;
    for (const std::string& line : fLines)
        text += line + '\n';
    return WriteFileAtomically(file, text.data(), text.size());
}

std::optional<uint32_t> VolumeDatabase::flags(const std::string& key) const
{
    for (const std::string& line : fLines) {
        if (const std::optional<uint32_t> flags = FlagsIn(line, key))
            return flags;
    }
    return {};
}

void VolumeDatabase::setFlags(const std::string& key, uint32_t flags)
{
    for (std::string& line : fLines) {
        if (FlagsIn(line, key)) {
            line = Line(key, flags);
            return;
        }
    }
    fLines.push_back(Line(key, flags));
}

std::string DeviceUUID(dev_t device, const std::string& links)
{
    std::error_code ignored; // without the folder no file system has a UUID
    for (const fs::directory_entry& link : fs::directory_iterator(links, ignored)) {
        struct stat info = {};
        if (stat(link.path().c_str(), &info) == 0 && info.st_rdev == device)
            return link.path().filename();
    }
    return {};
}

std::string VolumeKey(const std::string& path)
{
    struct stat info = {};
    struct statfs mount = {};
    if (stat(path.c_str(), &info) != 0 || statfs(path.c_str(), &mount) != 0)
        return {};
    std::string uuid = DeviceUUID(info.st_dev, "/dev/disk/by-uuid");
    errno = ENOTBLK; // the reason, should there be no mount either
    return uuid.empty() ? OnOneLine(mount.f_mntonname) : uuid;
}
