#pragma once

#include <Host/HostTree.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

struct sd_bus;

// Connecting to message buses without waiting for longer than one means to.

/// @param socket of a bus, any path. @return its address.
std::string BusAddress(const std::string& socket);
/// @return the address of the host's system bus: the one that the environment names, or, for a host other than this, the
/// usual one below its root.
std::string SystemBusAddress(const HostTree& host);

/// Whether every address of the list is a plain socket. The other kinds look up host names or start programs, and
/// connecting waits for that.
bool NamesSocketsOnly(std::string_view addresses);

struct CloseBus {
    void operator()(sd_bus* bus) const;
};
using BusConnection = std::unique_ptr<sd_bus, CloseBus>;

/// @param address sockets only, or it counts as a bus that does not answer.
/// @return a connection on which the bus has greeted this program; null when it has not, within that time.
BusConnection ConnectToBus(const std::string& address, std::chrono::milliseconds patience);

/// Whether the bus lets this program in. Libraries that connect wait for that, for minutes or without end.
inline bool BusAnswers(const std::string& address, std::chrono::milliseconds patience)
{
    return ConnectToBus(address, patience) != nullptr;
}
