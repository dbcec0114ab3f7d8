#pragma once

#include <Host/HostMounts.h>
#include <Host/HostTree.h>

namespace da {

/// The process that keeps a volume from being unmounted: it is in a folder of it, runs a program from there, or has a file
/// of it open or mapped. Who uses just this mount comes before who uses the volume by another one, or in a mount namespace
/// of its own; this process comes last of all.
/// @param host with its table of processes. @param mount of that host.
/// @return 0 when none is to be seen; those that may not be looked at are not.
pid_t HolderOf(const HostTree& host, const HostMount& mount);

}
