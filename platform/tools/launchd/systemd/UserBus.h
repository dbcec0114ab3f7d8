#pragma once

#include <string>

namespace launchd {

/// Finds the user's message bus: the one that the environment names, as a desktop's programs inherit it, or
/// where it names none, or is another user's, as after su, in cron and in remote administration, the one in
/// /run/user of the user whose rights the program has.
/// @return the address of the bus, or "" when there is none or it does not let this program in within
/// 3 seconds. Only sockets count: other kinds of addresses start programs or go to other computers.
std::string FindUserBus();

} // namespace launchd
