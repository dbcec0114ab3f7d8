#include "MessageBus.h"

#include <cstdlib>
#include <systemd/sd-bus.h>

namespace {
using Clock = std::chrono::steady_clock;
}

std::string BusAddress(const std::string& socket)
{
    // Other characters than these stand for more than themselves.
    static constexpr std::string_view plain
        = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_/.-";
    static constexpr const char* digits = "0123456789abcdef";
    std::string address = "unix:path=";
    for (const char character : socket) {
        const auto byte = static_cast<unsigned char>(character);
        if (plain.find(character) != std::string_view::npos)
            address += character;
        else
            address.append({ '%', digits[byte >> 4], digits[byte & 0x0F] });
    }
    return address;
}

std::string SystemBusAddress(const HostTree& host)
{
    const bool isThis = host.path("") == "/";
    const char* const named = isThis ? secure_getenv("DBUS_SYSTEM_BUS_ADDRESS") : nullptr;
    return named != nullptr ? named : BusAddress(host.path("run/dbus/system_bus_socket"));
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

void CloseBus::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }

BusConnection ConnectToBus(const std::string& address, std::chrono::milliseconds patience)
{
    sd_bus* opened = nullptr;
    if (!NamesSocketsOnly(address) || sd_bus_new(&opened) < 0)
        return nullptr;
    BusConnection bus(opened);
    if (sd_bus_set_address(opened, address.c_str()) < 0 || sd_bus_set_bus_client(opened, 1) < 0
        || sd_bus_start(opened) < 0)
        return nullptr;
    const auto deadline = Clock::now() + patience;
    while (sd_bus_is_ready(opened) == 0) {
        const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - Clock::now());
        const int done = left.count() > 0 ? sd_bus_process(opened, nullptr) : -1;
        if (done < 0 || (done == 0 && sd_bus_wait(opened, static_cast<uint64_t>(left.count())) < 0))
            return nullptr;
    }
    return sd_bus_is_ready(opened) > 0 ? std::move(bus) : nullptr;
}
