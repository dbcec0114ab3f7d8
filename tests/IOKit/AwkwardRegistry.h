#pragma once

#include <IOKit/Registry.h>

#include <string>

/// Entries whose names and values are easily taken for something else, one of them with two parents.
iokit::Registry AwkwardRegistry();

/// What one registry has other than the other: a line for each entry; "" for none.
std::string Differences(const iokit::Registry& expected, const iokit::Registry& found);
