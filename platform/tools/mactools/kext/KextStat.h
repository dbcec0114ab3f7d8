#pragma once

#include "Tool.h"

/// kextstat: the table of the start-up volume's kernel extensions, as a Mac shows those it has loaded. Nothing is loaded
/// here: addresses and sizes are 0 and there are no UUIDs; references and links are what the bundles say.
/// @return 0, also when extensions had to be left out; 64 for a wrong command line.
int KextStat(const Arguments& arguments);
