#include "power/PowerSettings.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <iterator>
#include <map>
#include <sstream>

namespace {

/// Later ones override earlier ones, and a file hides those of the same name in the folders before.
constexpr std::array<const char*, 4> kConfigurationRoots { "usr/lib", "usr/local/lib", "run", "etc" };

/// How the host sleeps, and what that is as a Mac's "hibernatemode".
struct SleepAction {
    const char* action;
    const char* mode;
};
constexpr std::array<SleepAction, 5> kSleepActions { {
    { "suspend", "0" }, // memory stays powered,
    { "sleep", "0" }, { "hybrid-sleep", "3" }, // with a copy on the disk,
    { "suspend-then-hibernate", "3" }, { "hibernate", "25" }, // or the disk alone holds it
} };

/// @return null for what does not let the computer sleep.
const SleepAction* SleepActionNamed(const std::string& name)
{
    const auto* const found = std::find_if(kSleepActions.begin(), kSleepActions.end(),
        [&name](const SleepAction& one) { return one.action == name; });
    return found != kSleepActions.end() ? found : nullptr;
}

void Read(const HostTree& tree, const std::string& file, TextPairs& settings)
{
    for (const auto& [name, value] : PairsOf(tree.bytes(file), '='))
        settings[name] = value;
}

/// The login manager's settings: one main file, then additions in the order of their names.
TextPairs LoginConfiguration(const HostTree& tree)
{
    std::string main;
    std::map<std::string, std::string> additions;
    for (const char* const root : kConfigurationRoots) {
        const std::string file = std::string(root) + "/systemd/logind.conf";
        const std::string folder = file + ".d/";
        main = tree.has(file) ? file : main;
        for (const std::string& name : tree.names(folder)) {
            if (name.ends_with(".conf"))
                additions[name] = folder + name;
        }
    }
    TextPairs settings;
    Read(tree, main, settings);
    for (const auto& [name, file] : additions)
        Read(tree, file, settings);
    return settings;
}

/// @return the setting, or what the login manager does without it.
std::string SettingOr(const TextPairs& settings, const char* name, const char* usual)
{
    const std::string value = ValueOf(settings, name);
    return value.empty() ? usual : value;
}

void AddSleepSettings(std::vector<PowerSetting>& settings, const HostTree& tree)
{
    const bool canSleep = !tree.text("sys/power/state").empty();
    if (!canSleep || !tree.has("run/systemd/seats"))
        return;
    const TextPairs login = LoginConfiguration(tree);
    const SleepAction* idle = SleepActionNamed(SettingOr(login, "IdleAction", "ignore"));
    const SleepAction* lid = SleepActionNamed(SettingOr(login, "HandleLidSwitch", "suspend"));
    const int64_t wait = TimeSpanSeconds(SettingOr(login, "IdleActionSec", "30min")).value_or(0);
    const SleepAction* usual = idle != nullptr ? idle : lid;
    if (usual != nullptr)
        settings.push_back({ "hibernatemode", usual->mode });
    settings.push_back({ "sleep", std::to_string(idle != nullptr ? (wait + 59) / 60 : 0) });
    const bool sleepsByButton = SleepActionNamed(SettingOr(login, "HandlePowerKey", "poweroff")) != nullptr;
    settings.push_back({ "Sleep On Power Button", sleepsByButton ? "1" : "0" });
}

/// Whether one of the devices may wake the computer. Those that cannot at all have no such file, or an empty one.
/// @param folders of the devices, with a slash at their ends, and @param prefix of their names. @param file below them.
/// @return "1" or "0"; "" when there is no such device.
std::string WakeSetting(const HostTree& tree, const std::vector<std::string>& folders,
    const std::string& prefix, const std::string& file)
{
    std::string value;
    for (const std::string& folder : folders) {
        for (const std::string& name : tree.names(folder)) {
            const std::string word = name.starts_with(prefix) ? tree.text((folder + name).append(file)) : "";
            if (!word.empty() && value != "1")
                value = word == "enabled" ? "1" : "0";
        }
    }
    return value;
}

std::string LowPowerMode(const HostTree& tree)
{
    const std::string profile = tree.text("sys/firmware/acpi/platform_profile");
    return profile.empty() ? "" : profile == "low-power" ? "1" : "0";
}

struct TimeUnit {
    const char* names; ///< with a blank around each
    double seconds;
};
constexpr std::array<TimeUnit, 6> kTimeUnits { {
    { " ms msec ", 1e-3 },
    { "  s sec second seconds ", 1 },
    { " m min minute minutes ", 60 },
    { " h hr hour hours ", 3600 },
    { " d day days ", 86400 },
    { " w week weeks ", 604800 },
} };

}

std::vector<PowerSetting> PowerSettings(const HostTree& tree)
{
    std::vector<PowerSetting> settings;
    AddSleepSettings(settings, tree);
    // The lid is a device of the firmware's, found on the one bus or the other by the kernel's age.
    const PowerSetting more[] = {
        { "womp", WakeSetting(tree, { "sys/class/net/" }, "", "/device/power/wakeup") },
        { "lidwake",
            WakeSetting(tree, { "sys/bus/acpi/devices/", "sys/bus/platform/devices/" },
                "PNP0C0D:", "/power/wakeup") },
        { "lowpowermode", LowPowerMode(tree) },
    };
    std::copy_if(std::begin(more), std::end(more), std::back_inserter(settings),
        [](const PowerSetting& setting) { return !setting.value.empty(); });
    return settings;
}

std::optional<int64_t> TimeSpanSeconds(std::string_view text)
{
    constexpr double longest = 1e9;
    std::istringstream words { std::string(text) };
    double seconds = 0;
    while (!(words >> std::ws).eof()) {
        double number = 0;
        std::string unit;
        if (!(words >> number))
            return {};
        while (std::isalpha((words >> std::ws).peek()) != 0)
            unit += static_cast<char>(words.get());
        const auto* const found
            = std::find_if(kTimeUnits.begin(), kTimeUnits.end(), [&unit](const TimeUnit& one) {
                  return std::string_view(one.names).find(" " + unit + " ") != std::string_view::npos;
              });
        if (found == kTimeUnits.end())
            return {};
        seconds += number * found->seconds;
    }
    return seconds >= 0 && seconds <= longest ? std::optional(static_cast<int64_t>(std::ceil(seconds)))
                                              : std::nullopt;
}
