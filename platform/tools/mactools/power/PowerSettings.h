#pragma once

#include <Host/HostTree.h>

/// A setting by its name on a Mac, such as "sleep", with its value.
struct PowerSetting {
    const char* name;
    std::string value;
};

/// The settings that the host has, for batteries and external power alike, since it makes no difference between them.
/// Sleeping is up to the login manager's configuration; where none is at work nobody sends the computer to sleep, and the
/// settings about that are left out. What desktops decide for themselves does not show.
std::vector<PowerSetting> PowerSettings(const HostTree& tree);

/// @param text such as "90", "30min" or "1h 30min", as systemd's files have it.
/// @return seconds, rounded up; nothing for "infinity" and for what is no time span.
std::optional<int64_t> TimeSpanSeconds(std::string_view text);
