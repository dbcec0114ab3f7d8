#pragma once

#include "tests/Darwin/Support.h"

#include <IOKit/HostRegistry.h>

#include <map>
#include <string>

/// What the files of a host's kernel and of udev would hold, in a folder of its own.
class TestHost {
public:
    using Texts = std::map<std::string, std::string>;

    TestHost();

    iokit::HostFolders folders() const;
    iokit::Registry registry() const { return iokit::ReadHostRegistry(folders()); }

    /// Adds a disk in its place among the devices. @param place ends in the device that the disk belongs to, which
    /// gets the attributes whose names begin with "device/". @param udev nothing for a disk that udev does not know.
    TestHost& disk(
        const std::string& place, const std::string& name, const Texts& attributes, const Texts& udev = {});
    /// Adds a partition to the last disk. @param attributes beside the number.
    TestHost& partition(unsigned number, const Texts& attributes, const Texts& udev = {});
    /// A file below the folder.
    TestHost& file(const std::string& name, const std::string& text);

    // One disk of a kind, with all that such disks tell.
    TestHost& sataDisk();
    TestHost& usbStick();
    TestHost& nvmeDisk();
    TestHost& diskImage();

private:
    void describe(const std::string& folder, const Texts& attributes, const Texts& udev);

    TemporaryFolder fFolder;
    std::string fDisk; ///< the last one's folder
};

/// The entries of that class or one derived from it, in the order of the tree.
std::vector<const iokit::Entry*> EntriesOf(const iokit::Registry& registry, const std::string& className);
/// What the text has for the property: "disk0", 512, Yes; "" where the entry has none.
std::string Property(const iokit::Entry& entry, const char* key);
