#pragma once

#include "Tool.h"

#include <Host/HostTree.h>

/// "vm_stat": how the memory is used, once. What the host does not count is left out; repetition is refused.
int VmStat(const Arguments& arguments);

/// @param pageSize in bytes. @return the exit status; 1 after a complaint where the host counts nothing.
int WriteMemoryStatistics(const HostTree& host, uint64_t pageSize, std::ostream& out);
