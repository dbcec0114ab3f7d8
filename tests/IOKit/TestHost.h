#pragma once

#include "tests/support/HostFolder.h"

#include <IOKit/HostRegistry.h>

#include <string>

/// A host to which disks can be added, one of a kind, with all that such disks tell.
class TestHost : public HostFolder {
public:
    iokit::Registry registry() const { return iokit::ReadHostRegistry(tree()); }

    TestHost& sataDisk();
    TestHost& usbStick();
    TestHost& nvmeDisk();
    TestHost& diskImage();
};

/// The entries of that class or one derived from it, in the order of the tree.
std::vector<const iokit::Entry*> EntriesOf(const iokit::Registry& registry, const std::string& className);
/// What the text has for the property: "disk0", 512, Yes; "" where the entry has none.
std::string Property(const iokit::Entry& entry, const char* key);
/// The property of the entry, or of the nearest one above it that has it.
std::string Searched(const iokit::Entry& entry, const char* key);
/// @return the medium of that BSD name; an entry without any properties when there is none.
const iokit::Entry& MediaNamed(const iokit::Registry& registry, const std::string& bsdName);
/// The full names from below the computer down to the entry: "SATA@1F,2 > IOAHCIDevice@0".
std::string WayTo(const iokit::Entry& entry);
