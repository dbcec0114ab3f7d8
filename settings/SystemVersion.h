#pragma once

#include <cstdint>

/// The version of the running system as a whole to compare; 0 on systems too old to tell.
uint32_t SystemVersion();

/// The first system version with a dark appearance, 10.14.
inline constexpr uint32_t kFirstSystemWithDarkAppearance = 0x10E08000;
