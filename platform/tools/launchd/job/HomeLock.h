#pragma once

#include <Host/Descriptor.h>

#include <string>

namespace launchd {

/// Keeps other launchctl of the same home from changing what is loaded, for as long as the descriptor is open. To be taken
/// before anything else: of two that are started one after the other, the first then goes first, however long it takes.
/// Waits for whoever has it, for five minutes at most.
/// @param problem set to one sentence when another one keeps it too long; else "", also where a home that is missing or
/// lies on a file system without locks leaves nothing to lock.
Descriptor LockHome(std::string& problem);

} // namespace launchd
