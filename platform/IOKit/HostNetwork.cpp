#include <IOKit/HostNetwork.h>

#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fnmatch.h>
#include <optional>
#include <tuple>

namespace iokit {

namespace {

constexpr const char* kInterfaces = "sys/class/net/";
constexpr int64_t kEthernet = 1; // of the kernel's types
constexpr int64_t kGivenByHardware = 0; // of the kernel's origins of addresses
constexpr uint64_t kEthernetType = 6; // of a Mac's
constexpr unsigned kAnswersNobody = 0x80; // flag: nothing is at the other end

/// By the places of devices. The first row that fits counts.
constexpr std::array kBuses { Bus { "*/usb[0-9]*", "", "External", "" }, Bus { "*", "", "Internal", "" } };

struct Interface {
    const HostTree* host;
    std::string name;
    std::string device; ///< folder; "" where there is none
    int64_t number = 0; ///< the kernel's
    Entry* above = nullptr;
    bool isBuiltIn = false;

    std::string file(const char* of) const { return kInterfaces + name + '/' + of; }
    std::string text(const char* of) const { return host->text(file(of)); }
    bool isWireless() const { return host->has(file("phy80211")) || host->has(file("wireless")); }
    /// One that drives some special hardware, such as a switch's port, or speaks Ethernet over something else.
    bool isSpecial() const { return !ValueOf(PairsOf(host->bytes(file("uevent")), '='), "DEVTYPE").empty(); }
    bool leadsOut() const
    {
        const auto flags = static_cast<unsigned>(host->number(file("flags")).value_or(kAnswersNobody));
        return (flags & kAnswersNobody) == 0 && !host->has(file("bridge"));
    }
    /// What makes it the primary one, the least of all.
    auto rank() const
    {
        const int kind = isBuiltIn && isWireless() ? 1 : isBuiltIn && !isSpecial() ? 0 : 2;
        return std::pair(kind, number);
    }
};

/// @param text "02:fc:00:00:00:01", or without the colons. @return the six bytes; "" for anything else and for zeroes.
std::string AddressIn(std::string text)
{
    constexpr size_t digits = 12;
    std::erase(text, ':');
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (text.size() != digits || error != std::errc() || end != text.data() + text.size() || number == 0)
        return "";
    std::string bytes;
    for (unsigned shift = 48; shift > 0; shift -= 8)
        bytes += static_cast<char>(number >> (shift - 8) & 0xFFU);
    return bytes;
}

/// The hardware's own address, whatever the interface has been given instead; the one that it has where nobody knows.
std::string HardwareAddress(const Interface& port)
{
    const std::string current = port.text("address");
    const bool isOwn = port.host->number(port.file("addr_assign_type")) == kGivenByHardware;
    // udev names interfaces after their own addresses only: "enx02fc00000001".
    const std::string name = ValueOf(port.host->udev('n' + std::to_string(port.number)), "ID_NET_NAME_MAC");
    const std::array told { isOwn ? current : "", port.text("phy80211/macaddress"),
        port.text("bonding_slave/perm_hwaddr"), name.substr(std::min<size_t>(name.size(), 3)), current };
    std::string address;
    for (const std::string& text : told)
        address = address.empty() ? AddressIn(text) : address;
    return address;
}

/// The number at a name's end, as in "eth0"; none where a name ends otherwise, or in an address.
std::optional<uint64_t> UnitOf(const std::string& name)
{
    constexpr size_t mostDigits = 4;
    const std::string digits = name.substr(name.find_last_not_of("0123456789") + 1);
    const auto number = digits.size() <= mostDigits ? NumberIn(digits) : std::nullopt;
    return number ? std::optional(static_cast<uint64_t>(*number)) : std::nullopt;
}

/// In the order of their numbers. @param isWanted bool(const Interface&): called before the number is known.
template <class IsWanted> std::vector<Interface> EthernetInterfaces(const HostTree& host, IsWanted isWanted)
{
    std::vector<Interface> found;
    for (const std::string& name : host.names(kInterfaces)) {
        Interface port { &host, name, {} };
        const std::string link = port.file("device");
        port.device = host.has(link) ? host.resolved(link) : "";
        if (port.device.starts_with("sys/devices/virtual/"))
            port.device.clear();
        const auto number = isWanted(port) ? host.number(port.file("ifindex")) : std::nullopt;
        if (!number || host.number(port.file("type")) != kEthernet)
            continue;
        port.number = *number;
        found.push_back(std::move(port));
    }
    std::sort(found.begin(), found.end(),
        [](const Interface& first, const Interface& second) { return first.number < second.number; });
    return found;
}

std::vector<Interface> InterfacesToShow(const HostTree& host)
{
    std::vector<Interface> devices
        = EthernetInterfaces(host, [](const Interface& one) { return !one.device.empty(); });
    if (!devices.empty())
        return devices;
    std::vector<Interface> ways
        = EthernetInterfaces(host, [](const Interface& one) { return one.leadsOut(); });
    ways.resize(std::min<size_t>(ways.size(), 1));
    return ways;
}

void Add(Registry& registry, const Interface& port, bool isPrimary)
{
    const bool isWireless = port.isWireless();
    const char* const controllerClass = isWireless ? "IO80211Controller" : "IOEthernetController";
    Entry& controller = registry.add(*port.above, controllerClass, controllerClass, "",
        Properties().data("IOMACAddress", HardwareAddress(port)).take());
    Properties properties;
    properties.text("BSD Name", port.name)
        .number("IOInterfaceUnit", UnitOf(port.name))
        .number("IOInterfaceType", kEthernetType)
        .flag("IOPrimaryInterface", isPrimary)
        .flag("IOBuiltin", port.isBuiltIn);
    registry.add(controller, isWireless ? "IO80211Interface" : "IOEthernetInterface", port.name, "",
        properties.take());
}

}

void AddHostNetwork(Registry& registry, Entry& computer, HostDevices& devices, const HostTree& host)
{
    std::vector<Interface> interfaces = InterfacesToShow(host);
    for (Interface& port : interfaces) {
        const auto* const bus = std::find_if(kBuses.begin(), kBuses.end(),
            [&](const Bus& one) { return fnmatch(one.place, port.device.c_str(), 0) == 0; });
        port.above = port.device.empty() ? &computer : &devices.at(port.device, *bus);
        port.isBuiltIn = LocationOf(*bus, *port.above) == "Internal";
    }
    const auto primary = std::min_element(interfaces.begin(), interfaces.end(),
        [](const Interface& first, const Interface& second) { return first.rank() < second.rank(); });
    for (const Interface& port : interfaces)
        Add(registry, port, &port == &*primary);
}

}
