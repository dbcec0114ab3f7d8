#pragma once

#include "registry/RegistryView.h"

#include <ostream>

/// Prints the registry as an XML property list: a dictionary for each entry, in which its properties and what is told of
/// it lie side by side and "IORegistryEntryChildren" is the list of those below; a list of trees where the view shows
/// subtrees, and nothing at all where there are none. Values that XML cannot hold are left out. However deep the tree is, it
/// is written entry by entry, and therefore without indents beyond an entry's own.
/// @return false when memory is too short for an entry.
bool PrintRegistryArchive(std::ostream& out, const iokit::Registry& registry, const RegistryView& view);
