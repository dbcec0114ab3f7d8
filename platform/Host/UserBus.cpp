#include "UserBus.h"

#include <sys/stat.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace {
using Clock = std::chrono::steady_clock;

struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};

bool IsOwnFolder(const std::string& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

/// Whether the environment is of a session of the user's. Programs like runuser leave another user's in place.
bool IsOwnSession()
{
    const char* const folder = secure_getenv("XDG_RUNTIME_DIR");
    return folder == nullptr || access(folder, F_OK) != 0 || IsOwnFolder(folder);
}

/// The folder that a user's runtime folder usually is; "" where there is none of this user's.
std::string UsualRuntimeFolder()
{
    const std::string usual = "/run/user/" + std::to_string(geteuid());
    return IsOwnFolder(usual) ? usual : "";
}

/// @return the path as an address names it, where other characters than these stand for more than themselves.
std::string InAddress(const std::string& path)
{
    static constexpr std::string_view plain
        = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_/.-";
    static constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (plain.find(character) != std::string_view::npos)
            text += character;
        else
            text.append({ '%', digits[byte >> 4], digits[byte & 0x0F] });
    }
    return text;
}

}

std::string UserBusAddress()
{
    const bool isOwn = IsOwnSession();
    if (const char* const given = secure_getenv("DBUS_SESSION_BUS_ADDRESS"); given != nullptr && isOwn)
        return given;
    const char* const named = secure_getenv("XDG_RUNTIME_DIR");
    const std::string folder = named != nullptr && isOwn ? named : UsualRuntimeFolder();
    return folder.empty() ? "" : "unix:path=" + InAddress(folder + "/bus");
}

bool NamesSocketsOnly(std::string_view addresses)
{
    for (;;) {
        if (!addresses.starts_with("unix:"))
            return false;
        const size_t end = addresses.find(';');
        if (end == std::string_view::npos || end + 1 == addresses.size())
            return true;
        addresses.remove_prefix(end + 1);
    }
}

bool BusAnswers(const std::string& address, std::chrono::milliseconds patience)
{
    sd_bus* opened = nullptr;
    if (!NamesSocketsOnly(address) || sd_bus_new(&opened) < 0)
        return false;
    const std::unique_ptr<sd_bus, CloseBus> bus(opened);
    if (sd_bus_set_address(opened, address.c_str()) < 0 || sd_bus_set_bus_client(opened, 1) < 0
        || sd_bus_start(opened) < 0)
        return false;
    const auto deadline = Clock::now() + patience;
    while (sd_bus_is_ready(opened) == 0) {
        const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - Clock::now());
        const int done = left.count() > 0 ? sd_bus_process(opened, nullptr) : -1;
        if (done < 0 || (done == 0 && sd_bus_wait(opened, static_cast<uint64_t>(left.count())) < 0))
            return false;
    }
    return sd_bus_is_ready(opened) > 0;
}
