#include "profile/TextForm.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <span>

namespace profile {

namespace {

struct Term {
    std::string_view term;
    const char* words;
};

/// Keys whose labels do not follow from them.
constexpr auto kKeys = std::to_array<Term>({ { "machine_name", "Model Name" },
    { "machine_model", "Model Identifier" }, { "cpu_type", "Processor Name" },
    { "current_processor_speed", "Processor Speed" }, { "packages", "Number of Processors" },
    { "number_processors", "Total Number of Cores" }, { "physical_memory", "Memory" },
    { "boot_rom_version", "System Firmware Version" }, { "serial_number", "Serial Number (system)" },
    { "platform_UUID", "Hardware UUID" }, { "global_ecc_state", "ECC" }, { "SPMemoryDataType", "Memory" },
    { "sppower_battery_model_info", "Model Information" },
    { "sppower_battery_charge_info", "Charge Information" },
    { "sppower_battery_health_info", "Health Information" },
    { "sppower_battery_charge_remaining", "Charge Remaining (mAh)" },
    { "sppower_battery_max_capacity", "Full Charge Capacity (mAh)" },
    { "sppower_battery_state_of_charge", "State of Charge (%)" },
    { "sppower_battery_is_charging", "Charging" },
    { "sppower_battery_health_maximum_capacity", "Maximum Capacity" },
    { "sppower_battery_installed", "Battery Installed" }, { "sppower_current_amperage", "Amperage (mA)" },
    { "sppower_current_voltage", "Voltage (mV)" }, { "System Sleep Timer", "System Sleep Timer (Minutes)" },
    { "sppci_model", "Chipset Model" }, { "sppci_device_type", "Type" }, { "sppci_slot_name", "Slot" },
    { "spdisplays_vram", "VRAM (Total)" }, { "spdisplays_ndrvs", "Displays" },
    { "_spdisplays_pixels", "Resolution" }, { "_spdisplays_display-year", "Year of Manufacture" },
    { "_spdisplays_display-week", "Week of Manufacture" }, { "switch_uid_key", "UID" },
    { "switch_version_key", "Firmware Version" }, { "device_guid", "GUID" },
    { "spfc_port_wwn", "Port World Wide Name" }, { "spfc_node_wwn", "Node World Wide Name" },
    { "bsd_name", "BSD Name" }, { "size_in_bytes", "Capacity" }, { "free_space_in_bytes", "Free" },
    { "volume_uuid", "Volume UUID" }, { "serial_num", "Serial Number" }, { "bcd_device", "Version" },
    { "bus_power_used", "Current Required (mA)" }, { "device_speed", "Speed" },
    { "os_version", "System Version" }, { "local_host_name", "Computer Name" },
    { "uptime", "Time since boot" }, { "spext_bundleid", "Bundle ID" }, { "spext_version", "Bundle Version" },
    { "spext_info", "Get Info String" }, { "spext_path", "Location" },
    { "spext_lastModified", "Last Modified" }, { "info", "Get Info String" }, { "path", "Location" },
    { "lastModified", "Last Modified" }, { "byteSize", "Size" }, { "contents", "Recent Contents" } });

/// What says in front of a key whose it is, the longer ones first.
constexpr std::array<std::string_view, 9> kPrefixes { "sppower_battery_", "_spdisplays_", "spdisplays_",
    "sppci_", "spsata_", "spnvme_", "spsas_", "dimm_", "spfc_" };

constexpr auto kValues = std::to_array<Term>({ { "hardware_overview", "Hardware Overview" },
    { "global_name", "Memory Slots" }, { "ecc_enabled", "Enabled" }, { "ecc_disabled", "Disabled" },
    { "empty", "Empty" }, { "spbattery_information", "Battery Information" },
    { "sppower_information", "System Power Settings" }, { "TRUE", "Yes" }, { "FALSE", "No" },
    { "spdisplays_gpu", "GPU" }, { "spdisplays_internal", "Internal" }, { "spdisplays_yes", "Yes" },
    { "spdisplays_no", "No" }, { "yes", "Yes" }, { "no", "No" }, { "low_speed", "Up to 1.5 Mb/s" },
    { "full_speed", "Up to 12 Mb/s" }, { "high_speed", "Up to 480 Mb/s" }, { "super_speed", "Up to 5 Gb/s" },
    { "super_speed_plus", "Up to 10 Gb/s" }, { "os_overview", "System Software Overview" },
    { "normal_boot", "Normal" }, { "safe_boot", "Safe" } });

const char* WordsFor(std::span<const Term> terms, std::string_view term)
{
    const auto found
        = std::find_if(terms.begin(), terms.end(), [term](const Term& one) { return one.term == term; });
    return found != terms.end() ? found->words : nullptr;
}

/// "Link Speed" for "link-speed".
std::string Capitalized(std::string_view term)
{
    std::string words;
    for (const char c : term) {
        const bool isFirst = words.empty() || words.back() == ' ';
        words += c == '_' || c == '-' ? ' ' : isFirst ? static_cast<char>(std::toupper(c)) : c;
    }
    if (words.ends_with(" Id"))
        words.back() = 'D';
    return words;
}

}

std::string KeyInWords(std::string_view key)
{
    if (const char* const words = WordsFor(kKeys, key))
        return words;
    for (const std::string_view prefix : kPrefixes) {
        if (key.starts_with(prefix))
            return Capitalized(key.substr(prefix.size()));
    }
    return Capitalized(key.ends_with("_key") ? key.substr(0, key.size() - 4) : key);
}

std::string ValueInWords(const std::string& value)
{
    const char* const words = WordsFor(kValues, value);
    return words != nullptr ? words : value;
}

} // namespace profile
