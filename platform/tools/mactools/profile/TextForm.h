#pragma once

#include "profile/Item.h"

#include <ostream>
#include <string_view>

namespace profile {

/// Writes the items of one kind for people, under a heading, indented and in words instead of keys.
void WriteText(std::ostream& out, const std::string& title, const Item::List& items);

// What a report says in terms of its own, in people's words. What is no such term is answered unchanged.

/// @return "Model Name" for "machine_name".
std::string KeyInWords(std::string_view key);
/// Also of names: "Hardware Overview" for "hardware_overview".
std::string ValueInWords(const std::string& value);

} // namespace profile
