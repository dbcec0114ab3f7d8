// Batteries and power settings.

#include "power/PowerSettings.h"
#include "power/PowerSupplies.h"
#include "profile/Facts.h"
#include "profile/Reports.h"

#include <array>
#include <cmath>

namespace profile {

namespace {

constexpr std::array<Fact, 4> kModel { {
    { "sppower_battery_serial_number", "serial_number" },
    { "sppower_battery_manufacturer", "manufacturer" },
    { "sppower_battery_device_name", "model_name" },
    { "sppower_battery_chemistry", "technology" },
} };

struct SettingKey {
    const char* setting;
    const char* key;
};
constexpr std::array<SettingKey, 4> kSettingKeys { {
    { "sleep", "System Sleep Timer" },
    { "hibernatemode", "Hibernate Mode" },
    { "womp", "Wake On LAN" },
    { "lidwake", "Wake On Clamshell Open" },
} };

const char* Truth(bool isSo) { return isSo ? "TRUE" : "FALSE"; }

/// The kernel counts in millionths.
std::optional<int64_t> Thousandths(const HostTree& tree, const std::string& name)
{
    const std::optional<int64_t> millionths = tree.number(name);
    return millionths ? std::optional(*millionths / 1000) : std::nullopt;
}

Item Charge(const HostTree& tree, const Battery& battery)
{
    return Item()
        .setNumber("sppower_battery_charge_remaining", Thousandths(tree, battery.folder + "charge_now"))
        .setNumber("sppower_battery_max_capacity", Thousandths(tree, battery.folder + "charge_full"))
        .setNumber("sppower_battery_state_of_charge", battery.percent)
        .set("sppower_battery_fully_charged", Truth(battery.isFull()))
        .set("sppower_battery_is_charging", Truth(battery.isCharging()));
}

/// How much of what it was made for the battery still takes.
std::string MaximumCapacity(const HostTree& tree, const Battery& battery)
{
    for (const std::string measure : { "energy_full", "charge_full" }) {
        const auto full = static_cast<double>(tree.number(battery.folder + measure).value_or(0));
        const auto design
            = static_cast<double>(tree.number(battery.folder + measure + "_design").value_or(0));
        if (full > 0 && design > 0)
            return std::to_string(std::lround(100 * full / design)) + "%";
    }
    return "";
}

Item BatteryItem(const HostTree& tree, const Battery& battery)
{
    Item model;
    AddFacts(model, tree, battery.folder, kModel);
    Item health;
    if (const int64_t cycles = tree.number(battery.folder + "cycle_count").value_or(0); cycles > 0)
        health.set("sppower_battery_cycle_count", cycles); // 0 is what drivers say that do not know
    health.set("sppower_battery_health_maximum_capacity", MaximumCapacity(tree, battery));
    return Item("spbattery_information")
        .set("sppower_battery_model_info", model)
        .set("sppower_battery_charge_info", Charge(tree, battery))
        .set("sppower_battery_health_info", health)
        .set("sppower_battery_installed", "TRUE")
        .setNumber("sppower_current_amperage", Thousandths(tree, battery.folder + "current_now"))
        .setNumber("sppower_current_voltage", Thousandths(tree, battery.folder + "voltage_now"));
}

Item Settings(const std::vector<PowerSetting>& settings, bool isCurrent)
{
    Item item;
    for (const SettingKey& key : kSettingKeys) {
        for (const PowerSetting& setting : settings)
            item.set(key.key, std::string(setting.name) == key.setting ? setting.value : "");
    }
    return item.set("Current Power Source", isCurrent ? "TRUE" : "");
}

}

Item::List PowerItems(const HostTree& tree)
{
    const std::vector<Battery> batteries = Batteries(tree);
    const std::vector<PowerSetting> settings = PowerSettings(tree);
    const bool isExternal = IsOnExternalPower(tree);
    Item::List items;
    for (const Battery& battery : batteries)
        items.push_back(BatteryItem(tree, battery));
    Item sources("sppower_information");
    sources.set("AC Power", Settings(settings, isExternal));
    if (!batteries.empty())
        sources.set("Battery Power", Settings(settings, !isExternal));
    items.push_back(sources);
    return items;
}

} // namespace profile
