#pragma once

#include <Host/HostTree.h>

#include <string>

// What the firmware tells of the computer; "" where it tells nothing or may not be asked.

/// @return the text; "" for what makers leave in instead of one of their own, such as "Default string".
std::string Told(const std::string& text);

/// The maker's name of the computer.
std::string ComputerModel(const HostTree& host);
std::string ComputerSerialNumber(const HostTree& host);

/// A UUID, in capitals, that stays with the computer as long as its system: the installation's, since the firmware's may be
/// read by nobody but root, and everybody is to get the same answer.
std::string ComputerUUID(const HostTree& host);
