#pragma once

#include "registry/RegistryView.h"

#include <ostream>

/// Prints the registry as a tree for people. Each tree of a view that shows subtrees is followed by an empty line.
void PrintRegistry(std::ostream& out, const iokit::Registry& registry, const RegistryView& view);
