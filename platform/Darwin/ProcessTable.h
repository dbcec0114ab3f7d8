#pragma once

#include <sys/sysctl.h>
#include <vector>

/// The processes that may be seen, in the order of the host's list. One that ends meanwhile is there or not.
std::vector<kinfo_proc> ReadProcessTable();

/// One process; empty when there is none.
std::vector<kinfo_proc> ReadProcess(pid_t process);

/// About how many there are, rather more than fewer.
size_t EstimateProcessCount();
