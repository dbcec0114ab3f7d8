#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <string>

/// How an object describes itself to people: a text is itself, a number its digits, collections list what they hold,
/// dictionaries sorted by key. Objects with the same contents have the same description.
/// @param object not null.
std::string Description(CFTypeRef object);
