#pragma once

#include "Tool.h"

/// vsdbutil: keeps on the start-up volume whether the owners and permissions on other volumes count. It keeps the record;
/// how this host mounts them does not depend on it.
/// @return 0; 64 for a wrong command line; 1 for a volume that is not there or not in the record, or when the record cannot
/// be changed.
int Vsdbutil(const Arguments& arguments);
