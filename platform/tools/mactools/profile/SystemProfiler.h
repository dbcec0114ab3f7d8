#pragma once

#include "Tool.h"

#include <iosfwd>

class HostTree;

/// system_profiler [-xml] [-listDataTypes] [-detailLevel mini|basic|full] [-timeout seconds] [data type…]: what the host
/// and the start-up volume are made of, as a property list or for people; without data types about everything. "mini"
/// leaves out what tells whose computer it is, and like "basic" the long lists unless they are asked for by name. Nothing
/// here waits, so that a timeout, which is accepted, has nothing to do.
/// @return 0, also when some of several data types are not known, which is said on standard error.
int SystemProfiler(const Arguments& arguments);

/// The same about another host. @param out receives the report.
int WriteSystemProfile(const Arguments& arguments, const HostTree& tree, std::ostream& out);
