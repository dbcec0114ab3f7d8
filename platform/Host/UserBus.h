#pragma once

#include <chrono>
#include <string>
#include <string_view>

// The user's message bus, for the host's side of the platform.

/// @return the address of the user's bus: the one that the environment names, as a desktop's programs inherit it, or
/// where it names none, or is another user's, as after su, in cron and in remote administration, the one in /run/user
/// of the user whose rights the program has. "" when there is none.
std::string UserBusAddress();

/// Whether every address of the list is a plain socket. The other kinds look up host names or start programs, and
/// connecting waits for that.
bool NamesSocketsOnly(std::string_view addresses);

/// Whether the bus lets this program in. Libraries that connect wait for that, for minutes or without end.
/// @param address sockets only, or it counts as a bus that does not.
bool BusAnswers(const std::string& address, std::chrono::milliseconds patience);
