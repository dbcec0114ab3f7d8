#include <IOKit/HostPci.h>

#include <IOKit/Properties.h>

#include <array>
#include <cinttypes>
#include <cstdio>

namespace iokit {

namespace {

constexpr const char* kThunderboltPath = "Thunderbolt Path";

/// @return the four bytes of a register, lowest first.
std::string Register(int64_t number)
{
    std::string bytes;
    for (unsigned place = 0; place < 4; ++place)
        bytes += static_cast<char>(static_cast<uint64_t>(number) >> (8 * place) & 0xFFU);
    return bytes;
}

/// @return the firmware's name, "SATA", from a path such as "\_SB_.PCI0.SATA"; "" where it has none.
std::string FirmwareName(const std::string& path)
{
    const size_t end = path.find_last_not_of('_') + 1;
    const size_t dot = path.rfind('.', end);
    return dot == std::string::npos ? "" : path.substr(dot + 1, end - dot - 1);
}

/// @param address "0000:00:1f.2". @return "1F,2", or "1F" for the function 0.
std::string Location(const std::string& address)
{
    unsigned device = 0;
    unsigned function = 0;
    const size_t last = address.rfind(':') + 1;
    if (std::sscanf(address.c_str() + last, "%x.%x", &device, &function) != 2) // NOLINT(cert-err34-c): short
        return "";
    std::array<char, 24> text {};
    std::snprintf(text.data(), text.size(), function == 0 ? "%X" : "%X,%X", device, function);
    return text.data();
}

std::string PathOf(const Entry& entry)
{
    std::string path;
    for (const Entry* one = &entry; one->parent() != nullptr; one = one->parent())
        path.insert(0, '/' + one->fullName());
    return "IOService:" + path;
}

/// The port is where the first device outside is plugged in.
std::string ThunderboltPath(const Entry& parent)
{
    const std::string known = cf::TextOf(parent.property(kThunderboltPath));
    return known.empty() ? PathOf(parent) : known;
}

}

PciSurroundings::PciSurroundings(const HostTree& host)
    : fHost(&host)
    , fHasThunderbolt(!host.names("sys/bus/thunderbolt/devices").empty())
{
    for (const std::string& name : host.names("sys/bus/pci/slots"))
        fSlots[host.text("sys/bus/pci/slots/" + name + "/address")] = "Slot-" + name;
}

std::string PciSurroundings::slot(const std::string& address) const
{
    return ValueOf(fSlots, address.substr(0, address.rfind('.')));
}

Entry& AddPciDevice(
    Registry& registry, Entry& parent, const std::string& folder, const PciSurroundings& surroundings)
{
    const HostTree& host = surroundings.host();
    const std::string address = folder.substr(folder.rfind('/') + 1);
    const auto vendor = host.number(folder + "/vendor");
    const auto device = host.number(folder + "/device");
    if (!vendor || !device)
        return parent;
    std::array<char, 48> number {};
    std::snprintf(number.data(), number.size(), "pci%" PRIx64 ",%" PRIx64, *vendor, *device);
    const std::string label = host.text(folder + "/label");
    Properties properties;
    properties.text("IOName", number.data())
        .textData("name", number.data())
        .data("vendor-id", Register(*vendor))
        .data("device-id", Register(*device))
        .data("class-code", Register(host.number(folder + "/class").value_or(0)))
        .textData("model", ValueOf(host.udev("+pci:" + address), "ID_MODEL_FROM_DATABASE"))
        .textData("io-device-location", label.empty() ? surroundings.slot(address) : label);
    if (host.text(folder + "/removable") == "removable") {
        properties.flag("IOPCITunnelled", true);
        if (surroundings.hasThunderbolt())
            properties.text(kThunderboltPath, ThunderboltPath(parent));
    }
    const std::string name = FirmwareName(host.text(folder + "/firmware_node/path"));
    return registry.add(
        parent, "IOPCIDevice", name.empty() ? number.data() : name, Location(address), properties.take());
}

}
