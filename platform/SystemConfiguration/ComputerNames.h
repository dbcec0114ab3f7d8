#pragma once

#include <Host/HostTree.h>

#include <string>

namespace sc {

/// The pretty name in machine-info, of which the system's host name service is but the keeper; else the host's name without
/// its domain. UTF-8; "" where there is none.
std::string ComputerName(const HostTree& host);

/// What multicast DNS makes of the host's name: its first label. "" where nothing is left of it.
std::string LocalHostName(const HostTree& host);

/// From now on the functions of this library tell of this host. Until it is called, that is the one that the program runs on.
void UseHost(HostTree host);

}
