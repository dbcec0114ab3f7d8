#pragma once

#include "tests/support/TemporaryFolder.h"

#include <Host/HostTree.h>

#include <initializer_list>
#include <map>
#include <string>
#include <utility>

/// A hand-made host in a temporary folder of its own, removed at the end.
class HostFolder {
public:
    using Texts = std::map<std::string, std::string>;

    const std::string& root() const { return fRoot.path(); }
    HostTree tree() const { return HostTree(root()); }

    /// Writes files below a folder, which ends in a slash. An entry whose text begins with "-> " becomes a link to a name
    /// in the tree.
    HostFolder& add(
        const std::string& folder, std::initializer_list<std::pair<std::string, std::string>> files);

    /// Adds a disk in its place among the devices. @param place ends in the device that the disk belongs to, which
    /// gets the attributes whose names begin with "device/". @param udev nothing for a disk that udev does not know.
    HostFolder& disk(
        const std::string& place, const std::string& name, const Texts& attributes, const Texts& udev = {});
    /// Adds a partition to the last disk. @param attributes beside the number.
    HostFolder& partition(unsigned number, const Texts& attributes, const Texts& udev = {});

private:
    void describe(const std::string& folder, const Texts& attributes, const Texts& udev);

    TemporaryFolder fRoot;
    std::string fDisk; ///< the last one's folder
};
