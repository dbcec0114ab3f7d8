#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/Runtime.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace iokit {

/// Where a SCSI device is on its bus.
struct ScsiAddress {
    uint64_t target;
    uint64_t unit;
};

/// @param name as the kernel's folder has it: "2:0:1:0". @return none for other names.
std::optional<ScsiAddress> ScsiAddressIn(const std::string& name);

/// What a device says of who it is: for each name that it bears a dictionary with "Identifier", a string or, where it is
/// binary, data, with "Identifier Type", "Identifier Code Set" and "Association". A name of 8 bytes that is unique in the
/// world comes first, since others ask for that one.
/// @param page 0x83 of its vital product data, any bytes. @return null where it names nothing.
cf::Owned<CFArrayRef> DeviceIdentification(std::string_view page);

/// @param text as "0x5000c50012345678": numbers that are unique in the world have 64 bits, more than others here.
std::optional<uint64_t> WorldWideNumber(std::string_view text);
/// @return the 8 bytes of one, highest first; "" where there is none.
std::string WorldWideName(std::string_view text);

}
