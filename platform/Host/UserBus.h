#pragma once

#include <string>

/// @return the address of the user's message bus: the one that the environment names, as a desktop's programs inherit it,
/// or where it names none, or is another user's, as after su, in cron and in remote administration, the one in /run/user
/// of the user whose rights the program has. "" when there is none.
std::string UserBusAddress();
