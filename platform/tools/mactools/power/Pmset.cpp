#include "power/Pmset.h"

#include "power/PowerSettings.h"
#include "power/PowerSupplies.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <iostream>

namespace {

constexpr const char* kUsage = "usage: pmset -g [live | custom | batt | ps | cap]";

void WriteSettings(std::ostream& out, const std::vector<PowerSetting>& settings)
{
    for (const PowerSetting& setting : settings)
        out << ' ' << std::left << std::setw(20) << setting.name << ' ' << setting.value << '\n';
}

std::vector<std::string> Sources(const HostTree& tree)
{
    if (Batteries(tree).empty())
        return { "AC Power" };
    return { "Battery Power", "AC Power" };
}

std::string CurrentSource(const HostTree& tree)
{
    return IsOnExternalPower(tree) ? "AC Power" : "Battery Power";
}

void WriteLive(const HostTree& tree, std::ostream& out)
{
    out << "System-wide power settings:\nCurrently in use:\n";
    WriteSettings(out, PowerSettings(tree));
}

void WriteCustom(const HostTree& tree, std::ostream& out)
{
    const std::vector<PowerSetting> settings = PowerSettings(tree);
    for (const std::string& source : Sources(tree)) {
        out << source << ":\n";
        WriteSettings(out, settings);
    }
}

void WriteCapabilities(const HostTree& tree, std::ostream& out)
{
    out << "Capabilities for " << CurrentSource(tree) << ":\n";
    for (const PowerSetting& setting : PowerSettings(tree))
        out << ' ' << setting.name << '\n';
}

std::string State(const Battery& battery, bool isOnExternalPower)
{
    if (battery.isFull())
        return "charged";
    if (battery.isCharging())
        return "charging";
    return isOnExternalPower ? "AC attached; not charging" : "discharging";
}

void WriteBatteries(const HostTree& tree, std::ostream& out)
{
    const bool isOnExternalPower = IsOnExternalPower(tree);
    out << "Now drawing from '" << CurrentSource(tree) << "'\n";
    int number = 0;
    for (const Battery& battery : Batteries(tree)) {
        out << " -InternalBattery-" << number++ << '\t';
        if (battery.percent)
            out << *battery.percent << "%; ";
        out << State(battery, isOnExternalPower) << "; ";
        const std::optional<int64_t> minutes = battery.isFull() ? std::optional<int64_t>(0) : battery.minutes;
        if (minutes)
            out << *minutes / 60 << ':' << std::right << std::setfill('0') << std::setw(2) << *minutes % 60
                << std::setfill(' ') << " remaining";
        else
            out << "(no estimate)";
        out << " present: true\n";
    }
}

struct Answer {
    const char* name;
    void (*write)(const HostTree&, std::ostream&);
};
constexpr std::array<Answer, 5> kAnswers { {
    { "live", WriteLive },
    { "custom", WriteCustom },
    { "batt", WriteBatteries },
    { "ps", WriteBatteries },
    { "cap", WriteCapabilities },
} };

}

int Pmset(const Arguments& arguments) { return WritePowerState(arguments, HostTree(), std::cout); }

int WritePowerState(const Arguments& arguments, const HostTree& tree, std::ostream& out)
{
    const bool asks = !arguments.empty() && arguments.front() == "-g";
    if (arguments.empty() || arguments.front() == "--help" || (asks && arguments.size() > 2))
        return std::cerr << kUsage << '\n', 1;
    if (!asks)
        return Complain("pmset", "power settings cannot be changed here; the host's own decide");
    const std::string name = arguments.size() == 2 ? arguments[1] : "live";
    const auto* const answer = std::find_if(
        kAnswers.begin(), kAnswers.end(), [&name](const Answer& one) { return one.name == name; });
    if (answer == kAnswers.end())
        return Complain("pmset", "-g " + name + ": this system keeps no such record");
    answer->write(tree, out);
    return 0;
}
