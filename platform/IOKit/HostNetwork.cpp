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
std::string HardwareAddress(const Interface& interface)
{
    const std::string current = interface.text("address");
    const bool isOwn = interface.host->number(interface.file("addr_assign_type")) == kGivenByHardware;
    // udev names interfaces after their own addresses only: "enx02fc00000001".
    const std::string name
        = ValueOf(interface.host->udev('n' + std::to_string(interface.number)), "ID_NET_NAME_MAC");
    const std::array told { isOwn ? current : "", interface.text("phy80211/macaddress"),
        interface.text("bonding_slave/perm_hwaddr"), name.substr(std::min<size_t>(name.size(), 3)), current };
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
        Interface interface {
            &host, name, { }
        };
        const std::string link = interface.file("device");
        interface.device = host.has(link) ? host.resolved(link) : "";
        if (interface.device.starts_with("sys/devices/virtual/"))
            interface.device.clear();
        const auto number = isWanted(interface) ? host.number(interface.file("ifindex")) : std::nullopt;
        if (!number || host.number(interface.file("type")) != kEthernet)
            continue;
        interface.number = *number;
        found.push_back(std::move(interface));
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

void Add(Registry& registry, const Interface& interface, bool isPrimary)
{
    const bool isWireless = interface.isWireless();
    const char* const controllerClass = isWireless ? "IO80211Controller" : "IOEthernetController";
    Entry& controller = registry.add(*interface.above, controllerClass, controllerClass, "",
        Properties().data("IOMACAddress", HardwareAddress(interface)).take());
    Properties properties;
    properties.text("BSD Name", interface.name)
        .number("IOInterfaceUnit", UnitOf(interface.name))
        .number("IOInterfaceType", kEthernetType)
        .flag("IOPrimaryInterface", isPrimary)
        .flag("IOBuiltin", interface.isBuiltIn);
    registry.add(controller, isWireless ? "IO80211Interface" : "IOEthernetInterface", interface.name, "",
        properties.take());
}

}

void AddHostNetwork(Registry& registry, Entry& computer, HostDevices& devices, const HostTree& host)
{
    std::vector<Interface> interfaces = InterfacesToShow(host);
    for (Interface& interface : interfaces) {
        const auto* const bus = std::find_if(kBuses.begin(), kBuses.end(),
            [&](const Bus& one) { return fnmatch(one.place, interface.device.c_str(), 0) == 0; });
        interface.above = interface.device.empty() ? &computer : &devices.at(interface.device, *bus);
        interface.isBuiltIn = LocationOf(*bus, *interface.above) == "Internal";
    }
    const auto primary = std::min_element(interfaces.begin(), interfaces.end(),
        [](const Interface& first, const Interface& second) { return first.rank() < second.rank(); });
    for (const Interface& interface : interfaces)
        Add(registry, interface, &interface == &*primary);
}

}
