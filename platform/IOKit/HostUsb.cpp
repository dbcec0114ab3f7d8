#include <IOKit/HostUsb.h>

#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <sstream>

namespace iokit {

namespace {

struct Speed {
    std::string_view megabits;
    uint64_t code;
};

constexpr std::array kSpeeds { Speed { "1.5", 0 }, Speed { "12", 1 }, Speed { "480", 2 }, Speed { "5000", 3 },
    Speed { "10000", 4 }, Speed { "20000", 4 } };

std::optional<uint64_t> SpeedCode(const std::string& megabits)
{
    const auto* const known = std::find_if(
        kSpeeds.begin(), kSpeeds.end(), [&megabits](const Speed& one) { return one.megabits == megabits; });
    return known != kSpeeds.end() ? std::optional(known->code) : std::nullopt;
}

std::optional<uint64_t> Number(const std::string& text)
{
    const std::optional<int64_t> number = NumberIn(text);
    return number && *number >= 0 ? std::optional<uint64_t>(*number) : std::nullopt;
}

/// The bus in the highest byte, then a digit for the port of each hub on the way.
/// @param ports "1.4.2". @return none for places that have no such number.
std::optional<uint64_t> LocationID(const std::optional<uint64_t>& bus, const std::string& ports)
{
    if (!bus || ports.empty())
        return {};
    uint64_t location = (*bus & 0xFFU) << 24U;
    std::istringstream hubs(ports);
    std::string port;
    for (unsigned shift = 20; std::getline(hubs, port, '.'); shift -= 4) {
        const std::optional<uint64_t> number = Number(port);
        if (!number || *number > 0xF || shift > 20)
            return {};
        location |= *number << shift;
    }
    return location;
}

std::string Hexadecimal(std::optional<uint64_t> number)
{
    std::array<char, 24> text {};
    if (number)
        std::snprintf(text.data(), text.size(), "%08x", static_cast<unsigned>(*number));
    return text.data();
}

}

Entry& AddUsbDevice(Registry& registry, Entry& parent, const HostTree& host, const std::string& folder)
{
    const auto text = [&](const char* file) { return host.text(folder + '/' + file); };
    const auto number = [&](const char* file) { return Number(text(file)); };
    const auto code = [&](const char* file) { return Number("0x" + text(file)); };
    const auto address = number("devnum");
    if (!address)
        return parent;
    const auto location = LocationID(number("busnum"), text("devpath"));
    const std::string product = text("product");
    Properties properties;
    properties.number("USB Address", address)
        .text("USB Vendor Name", text("manufacturer"))
        .text("USB Product Name", product)
        .text("USB Serial Number", text("serial"))
        .number("idVendor", code("idVendor"))
        .number("idProduct", code("idProduct"))
        .number("bcdDevice", code("bcdDevice"))
        .number("bDeviceClass", code("bDeviceClass"))
        .number("locationID", location)
        .number("Device Speed", SpeedCode(text("speed")));
    if (text("removable") == "fixed")
        properties.text("non-removable", "yes");
    const std::string className = "IOUSBHostDevice";
    return registry.add(
        parent, className, product.empty() ? className : product, Hexadecimal(location), properties.take());
}

}
