#include "power/PowerSupplies.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

const std::string kSupplies = "sys/class/power_supply/";

/// @return folders in the tree, with a slash at the end.
std::vector<std::string> SuppliesOfType(const HostTree& tree, const std::string& type)
{
    std::vector<std::string> folders;
    for (const std::string& name : tree.names(kSupplies)) {
        const std::string folder = kSupplies + name + "/";
        if (tree.text(folder + "type") == type && tree.text(folder + "scope") != "Device")
            folders.push_back(folder);
    }
    return folders;
}

/// Drivers count energy or charge; with either goes a rate in the same unit.
struct Measure {
    const char* now;
    const char* full;
    const char* rate;
};
constexpr std::array<Measure, 2> kMeasures { {
    { "energy_now", "energy_full", "power_now" },
    { "charge_now", "charge_full", "current_now" },
} };

std::optional<int64_t> MinutesLeft(const HostTree& tree, const Battery& battery)
{
    constexpr int64_t longest = 6000; // a rate next to nothing estimates nothing
    for (const Measure& measure : kMeasures) {
        const std::optional<int64_t> now = tree.number(battery.folder + measure.now);
        const std::optional<int64_t> full = tree.number(battery.folder + measure.full);
        const double rate
            = std::abs(static_cast<double>(tree.number(battery.folder + measure.rate).value_or(0)));
        if (!now || (battery.isCharging() && !full) || rate < 1)
            continue;
        const auto way = static_cast<double>(*now);
        const double minutes = (battery.isCharging() ? static_cast<double>(*full) - way : way) * 60 / rate;
        if (minutes >= 0 && minutes <= longest)
            return static_cast<int64_t>(minutes);
    }
    return {};
}

}

std::vector<Battery> Batteries(const HostTree& tree)
{
    std::vector<Battery> batteries;
    for (const std::string& folder : SuppliesOfType(tree, "Battery")) {
        if (tree.text(folder + "present") == "0") // the bay is there without it
            continue;
        Battery battery { folder, tree.text(folder + "status"), tree.number(folder + "capacity"), {} };
        if (battery.isCharging() || battery.isDischarging())
            battery.minutes = MinutesLeft(tree, battery);
        batteries.push_back(battery);
    }
    return batteries;
}

bool IsOnExternalPower(const HostTree& tree)
{
    std::vector<std::string> adapters = SuppliesOfType(tree, "Mains");
    for (const std::string& folder : SuppliesOfType(tree, "USB"))
        adapters.push_back(folder);
    const auto isOnline = [&tree](const std::string& folder) { return tree.text(folder + "online") == "1"; };
    if (std::any_of(adapters.begin(), adapters.end(), isOnline))
        return true;
    const std::vector<Battery> batteries = Batteries(tree);
    return std::none_of(
        batteries.begin(), batteries.end(), [](const Battery& battery) { return battery.isDischarging(); });
}
