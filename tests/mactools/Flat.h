#pragma once

#include <profile/Item.h>

#include <string>

/// What a report says, "{_name: Hub, _items: [{…}]}".
std::string Flat(const profile::Item::Value& value);
