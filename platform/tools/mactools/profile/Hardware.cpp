// What the computer is, and its memory.

#include "profile/Facts.h"
#include "profile/Reports.h"

#include <Host/Computer.h>

#include <array>
#include <cstdio>
#include <set>

namespace profile {

namespace {

struct Cores {
    int64_t cores;
    int64_t packages;
};

Cores CountCores(const HostTree& tree)
{
    const std::string folder = "sys/devices/system/cpu/";
    std::set<std::string> cores;
    std::set<std::string> packages;
    for (const std::string& name : tree.names(folder)) {
        const std::string topology = (folder + name).append("/topology/");
        const std::string package = tree.text(topology + "physical_package_id");
        if (package.empty())
            continue;
        packages.insert(package);
        cores.insert(package + " " + tree.text(topology + "core_id"));
    }
    return { static_cast<int64_t>(cores.size()), static_cast<int64_t>(packages.size()) };
}

/// The speed that the maker names, else the highest, else that of this moment.
std::string ProcessorSpeed(const HostTree& tree, const TextPairs& cpu)
{
    const std::string folder = "sys/devices/system/cpu/cpu0/cpufreq/";
    double gigahertz = std::strtod(ValueOf(cpu, "cpu MHz").c_str(), nullptr) / 1e3;
    for (const char* const file : { "cpuinfo_max_freq", "base_frequency" }) {
        if (const std::optional<int64_t> kilohertz = tree.number(folder + file))
            gigahertz = static_cast<double>(*kilohertz) / 1e6;
    }
    std::array<char, 32> text {};
    std::snprintf(text.data(), text.size(), "%.4g GHz", gigahertz);
    return gigahertz > 0 ? text.data() : "";
}

/// Not files, but what udev has under "MEMORY_DEVICE_0_" and these names.
constexpr std::array<Fact, 6> kModule { {
    { "dimm_type", "TYPE" },
    { "dimm_speed", "CONFIGURED_SPEED_MTS", "", " MHz" },
    { "dimm_speed", "SPEED_MTS", "", " MHz" },
    { "dimm_manufacturer", "MANUFACTURER" },
    { "dimm_part_number", "PART_NUMBER" },
    { "dimm_serial_number", "SERIAL_NUMBER" },
} };

Item Module(const TextPairs& dmi, const std::string& slot)
{
    const std::string bank = Told(ValueOf(dmi, slot + "BANK_LOCATOR"));
    const std::string locator = Told(ValueOf(dmi, slot + "LOCATOR"));
    Item item(bank + (bank.empty() || locator.empty() ? "" : "/") + locator);
    const int64_t size = NumberIn(ValueOf(dmi, slot + "SIZE")).value_or(0);
    if (size == 0)
        return item.set("dimm_size", "empty").set("dimm_status", "empty");
    item.set("dimm_size", BinarySize(size));
    for (const Fact& fact : kModule) {
        const std::string text = Told(ValueOf(dmi, slot + fact.file));
        item.set(fact.key, text.empty() ? "" : text + fact.behind);
    }
    return item;
}

}

Item::List HardwareItems(const HostTree& tree)
{
    const std::string cpus = tree.bytes("proc/cpuinfo", size_t { 4 } << 20U);
    const TextPairs cpu = PairsOf(cpus.substr(0, cpus.find("\n\n")), ':'); // the first one speaks for all
    const Cores counted = CountCores(tree);
    const std::optional<int64_t> memory = PhysicalMemory(tree);
    Item item("hardware_overview");
    item.set("machine_name", Told(tree.text("sys/class/dmi/id/product_family")));
    item.set("machine_name", ComputerModel(tree)).set("machine_model", ComputerModel(tree));
    item.set("boot_rom_version", Told(tree.text("sys/class/dmi/id/bios_version")));
    item.set("serial_number", ComputerSerialNumber(tree)).set("platform_UUID", ComputerUUID(tree));
    item.set("cpu_type", ValueOf(cpu, "model name"));
    item.set("current_processor_speed", ProcessorSpeed(tree, cpu));
    if (counted.packages > 0)
        item.set("packages", counted.packages).set("number_processors", counted.cores);
    item.set("physical_memory", memory ? BinarySize(*memory) : "");
    return { item };
}

Item::List MemoryItems(const HostTree& tree)
{
    constexpr int64_t mostSlots = 256;
    const TextPairs dmi = tree.udev("+dmi:id");
    Item::List modules;
    for (int64_t i = 0; i < mostSlots; ++i) {
        const std::string slot = "MEMORY_DEVICE_" + std::to_string(i) + "_";
        if (const auto next = dmi.lower_bound(slot); next != dmi.end() && next->first.starts_with(slot))
            modules.push_back(Module(dmi, slot));
    }
    const std::optional<int64_t> memory = PhysicalMemory(tree);
    if (modules.empty())
        return memory ? Item::List { Item("global_name").set("SPMemoryDataType", BinarySize(*memory)) }
                      : Item::List {};
    const bool hasEcc = ValueOf(dmi, "MEMORY_ARRAY_EC_TYPE").ends_with("ECC");
    return { Item("global_name")
                 .set("global_ecc_state", hasEcc ? "ecc_enabled" : "ecc_disabled")
                 .set("_items", modules) };
}

} // namespace profile
