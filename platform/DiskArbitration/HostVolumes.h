#pragma once

#include <DiskArbitration/MountTable.h>
#include <DiskArbitration/UDisks.h>
#include <Host/HostTree.h>
#include <IOKit/References.h>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>

namespace da {

/// What is on a medium. A text that is not known is "".
struct Volume {
    std::string kind; ///< a Mac's name of the file system, where Macs have it; "" where there is none
    std::string name;
    std::string uuid; ///< or a shorter number
    std::string folder; ///< in which it is mounted: the host's path
};

/// The number of a medium's device; none where the registry does not have it.
std::optional<dev_t> DeviceOf(const iokit::Entry& media);

/// What a host tells of the volumes on its disks: its table of mounts, its disk service, and udev. Safe to use from all
/// threads.
class HostVolumes {
public:
    explicit HostVolumes(HostTree host);

    /// @param media one of this host's, with its file, "/dev/sda1".
    Volume find(const iokit::Held& media, const std::string& deviceFile);
    /// Where a device's volume is mounted at this moment; none for nowhere. Nobody is asked but the kernel.
    std::optional<HostMount> mountOf(dev_t device, const std::string& deviceFile);

    /// What is on a disk may be another thing now: the disk service is asked again for the next answer.
    void forget();

    const HostTree& host() const { return fHost; }

private:
    Contents contents(dev_t device, const std::shared_ptr<const iokit::Registry>& registry);
    void askUDisks(const std::shared_ptr<const iokit::Registry>& registry);

    HostTree fHost;
    std::mutex fMutex;
    MountTable fMounts;
    std::map<dev_t, ServedBlock> fUDisks; ///< as it was asked last
    /// Another one may have other disks under the same numbers. As long as it is this one, who does not answer is not
    /// waited for again.
    std::weak_ptr<const iokit::Registry> fAskedFor;
};

}
