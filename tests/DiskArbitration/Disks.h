#pragma once

#include "tests/support/HostFolder.h"
#include "tests/support/RegistryTest.h"

#include <CoreFoundation/CoreFoundation.h>
#include <DiskArbitration/DiskArbitration.h>
#include <DiskArbitration/Session.h>
#include <IOKit/Properties.h>

#include <gtest/gtest.h>
#include <string>

/// A hand-made host, from which the registry of the test has its disks.
class Disks : public RegistryTest {
protected:
    /// Adds a medium with its numbers. @param file of the host's; "" where it is in a recording.
    static iokit::Entry& addMedia(iokit::Registry& registry, iokit::Entry& parent, const std::string& bsdName,
        unsigned major, unsigned minor, const std::string& file)
    {
        iokit::Properties properties;
        properties.text("BSD Name", bsdName)
            .number("BSD Major", major)
            .number("BSD Minor", minor)
            .flag("Whole", bsdName.find('s', 4) == std::string::npos);
        registry.setDeviceFile(bsdName, file);
        return registry.add(parent, "IOMedia", "Media", "", properties.take());
    }
    /// Makes these media the registry: "disk0", 8:0, with "disk0s1" and "disk0s2".
    static void usePartitions()
    {
        iokit::Registry registry;
        iokit::Entry& whole = addMedia(registry, registry.root(), "disk0", 8, 0, "/dev/sda");
        addMedia(registry, whole, "disk0s1", 8, 1, "/dev/sda1");
        addMedia(registry, whole, "disk0s2", 8, 2, "/dev/sda2");
        use(std::move(registry));
    }

    cf::Owned<DADiskRef> disk(const char* name)
    {
        return cf::Owned<DADiskRef>(DADiskCreateFromBSDName(nullptr, session.get(), name));
    }
    /// What the disk's description has for a key, as text: numbers and booleans by their description, URLs as their path.
    /// "" for no such disk or value.
    std::string described(const char* name, CFStringRef key) { return described(disk(name), key); }
    static std::string described(const cf::Owned<DADiskRef>& disk, CFStringRef key)
    {
        const cf::Owned<CFDictionaryRef> all(DADiskCopyDescription(disk.get()));
        CFTypeRef const value = all ? CFDictionaryGetValue(all.get(), key) : nullptr;
        if (value == nullptr || CFGetTypeID(value) == CFStringGetTypeID())
            return cf::TextOf(value);
        if (CFGetTypeID(value) == CFURLGetTypeID())
            return cf::TextOf(cf::Owned<CFStringRef>(
                CFURLCopyFileSystemPath(static_cast<CFURLRef>(value), kCFURLPOSIXPathStyle))
                                  .get());
        return cf::TextOf(cf::Owned<CFStringRef>(CFCopyDescription(value)).get());
    }
    void mount(const std::string& lines) { host.add("proc/self/", { { "mountinfo", lines } }); }

    /// Forgets what the host told.
    void startAnew()
    {
        da::UseHost(host.tree());
        session.reset(DASessionCreate(nullptr));
    }

    HostFolder host;
    cf::Owned<DASessionRef> session { (da::UseHost(host.tree()), DASessionCreate(nullptr)) };
};
