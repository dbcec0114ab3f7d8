#include "profile/Facts.h"

#include <Host/Computer.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

namespace profile {

namespace {

struct Unit {
    double size;
    const char* format;
};

std::string InUnits(int64_t bytes, std::span<const Unit> units)
{
    const auto number = static_cast<double>(bytes);
    const auto fits = [number](const Unit& unit) { return number >= unit.size; };
    const auto found = std::find_if(units.begin(), units.end(), fits);
    if (found == units.end())
        return std::to_string(bytes) + " bytes";
    std::array<char, 32> text {};
    std::snprintf(text.data(), text.size(), found->format, number / found->size);
    return text.data();
}

constexpr double kKilo = 1024;

/// The blocks that the kernel can switch on and off.
int64_t BlocksMemory(const HostTree& tree)
{
    const std::string folder = "sys/devices/system/memory";
    const std::vector<std::string> names = tree.names(folder);
    const auto count = std::count_if(names.begin(), names.end(),
        [&](const std::string& name) { return tree.text(folder + "/" + name + "/online") == "1"; });
    return count * NumberIn("0x" + tree.text(folder + "/block_size_bytes")).value_or(0);
}

}

void AddFacts(Item& item, const HostTree& tree, const std::string& folder, std::span<const Fact> facts)
{
    for (const Fact& fact : facts) {
        const std::string text = Told(tree.text(folder + fact.file));
        item.set(fact.key, text.empty() ? "" : fact.before + text + fact.behind);
    }
}

std::string DecimalSize(int64_t bytes)
{
    constexpr std::array<Unit, 4> units { { { 1e12, "%.2f TB" }, { 1e9, "%.2f GB" }, { 1e6, "%.1f MB" },
        { 1e3, "%.0f KB" } } };
    return InUnits(bytes, units);
}

std::string BinarySize(int64_t bytes)
{
    constexpr std::array<Unit, 4> units { { { kKilo * kKilo * kKilo * kKilo, "%.4g TB" },
        { kKilo * kKilo * kKilo, "%.4g GB" }, { kKilo * kKilo, "%.4g MB" }, { kKilo, "%.4g KB" } } };
    return InUnits(bytes, units);
}

std::optional<int64_t> PhysicalMemory(const HostTree& tree)
{
    if (const int64_t bytes = BlocksMemory(tree); bytes > 0)
        return bytes;
    // What the kernel has left for itself and for programs, somewhat less than there is.
    const std::string total = ValueOf(PairsOf(tree.bytes("proc/meminfo"), ':'), "MemTotal");
    const std::optional<int64_t> kilobytes = NumberIn(total.substr(0, total.find(' ')));
    return kilobytes ? std::optional(*kilobytes * 1024) : std::nullopt;
}

std::string PciName(const HostTree& tree, const std::string& address)
{
    std::string name = ValueOf(tree.udev("+pci:" + address), "ID_MODEL_FROM_DATABASE");
    const std::string folder = "sys/bus/pci/devices/" + address;
    const std::string vendor = tree.text(folder + "/vendor");
    const std::string device = tree.text(folder + "/device");
    if (!name.empty() || !vendor.starts_with("0x") || !device.starts_with("0x"))
        return name;
    return "pci" + vendor.substr(2) + "," + device.substr(2);
}

std::string PciAddressIn(const HostTree& tree, const std::string& path)
{
    std::string last;
    for (const std::filesystem::path& component : std::filesystem::path(path)) {
        if (tree.has("sys/bus/pci/devices/" + component.native()))
            last = component;
    }
    return last;
}

} // namespace profile
