#pragma once

#include <IOKit/Registry.h>

#include <string>

namespace iokit {

/// Where the host tells of its devices.
struct HostFolders {
    std::string sys = "/sys"; ///< the kernel's devices
    std::string udev = "/run/udev/data"; ///< udev's database, which need not be there
    std::string machineID = "/etc/machine-id"; ///< the file that names this installation for good
};

/// The registry of this computer, as it is now: the root, the computer itself, below it each disk with a driver, its medium and
/// the partitions. It never fails: what cannot be found out, or has gone by then, is not in it.
Registry ReadHostRegistry(const HostFolders& folders = {});

}
