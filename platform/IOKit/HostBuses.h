#pragma once

#include <IOKit/HostBlockDevice.h>

#include <string_view>

namespace iokit {

/// How a disk is connected.
struct Bus {
    const char* place; ///< pattern of the places among the kernel's devices
    std::string_view interconnect; ///< "" where nobody can tell
    std::string_view location; ///< "" where the place does not tell
    std::string_view deviceClass; ///< of the registry
};

// Locations of what is no device.
constexpr std::string_view kInFile = "File";
constexpr std::string_view kInMemory = "RAM";

/// @return never null.
const Bus* BusOf(const BlockDevice& disk);

}
