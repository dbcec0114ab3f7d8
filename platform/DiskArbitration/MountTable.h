#pragma once

#include <Host/Descriptor.h>
#include <Host/HostMounts.h>
#include <Host/HostTree.h>

#include <string>

namespace da {

/// A host's mounts, kept until there are others.
class MountTable {
public:
    explicit MountTable(HostTree host);

    /// Where the file system of a device is to be found: the first place that has all of it. One whose files have numbers of
    /// their own, of which only a part may be mounted, is told by its source, and is at the first place of all. What another
    /// mount hides is to be found nowhere.
    /// @param deviceFile of the same device, "/dev/sda1". @return good until the next call; null for none.
    const HostMount* find(dev_t device, const std::string& deviceFile);

private:
    bool isOther() const;
    bool isOf(const HostMount& mount, dev_t device, const std::string& deviceFile) const;

    HostTree fHost;
    Descriptor fFile; ///< tells of changes
    HostMounts fMounts;
};

}
