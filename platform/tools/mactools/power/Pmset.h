#pragma once

#include "Tool.h"

#include <iosfwd>

class HostTree;

/// pmset -g [live|custom|batt|ps|cap]: the host's power settings, its batteries, and what can be set for each source of
/// power. Changing them is up to the host, and refused.
int Pmset(const Arguments& arguments);

/// The same about another host. @param out receives the answer.
int WritePowerState(const Arguments& arguments, const HostTree& tree, std::ostream& out);
