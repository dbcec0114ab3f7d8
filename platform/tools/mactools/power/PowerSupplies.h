#pragma once

#include <Host/HostTree.h>

/// A battery that runs the computer, as it is now.
struct Battery {
    std::string folder; ///< in the tree, with a slash at its end
    std::string status; ///< the kernel's word: "Charging", "Discharging", "Full", "Not charging", "Unknown"
    std::optional<int64_t> percent;
    std::optional<int64_t> minutes; ///< until it is empty, or full while it is being charged

    bool isCharging() const { return status == "Charging"; }
    bool isDischarging() const { return status == "Discharging"; }
    bool isFull() const { return status == "Full"; }
};

/// @return those of the computer; mice and the like have batteries of their own.
std::vector<Battery> Batteries(const HostTree& tree);

/// Whether the computer runs on external power. Without a word of the host's on that it does, unless a battery is being
/// used up.
bool IsOnExternalPower(const HostTree& tree);
