#pragma once

#include "tests/DiskArbitration/Telling.h"
#include "tests/support/HostFolder.h"
#include "tests/support/RegistryTest.h"

#include <DiskArbitration/Session.h>
#include <IOKit/Properties.h>

#include <gtest/gtest.h>
#include <string>

/// A hand-made host, from which the registry of the test has its disks.
class Disks : public RegistryTest, protected Telling {
protected:
    Disks() { startAnew(); }

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

    /// Makes this the host's table of mounts.
    void mount(const std::string& lines) { host.add("proc/self/", { { "mountinfo", lines } }); }

    /// Forgets what the host told.
    void startAnew()
    {
        da::UseHost(host.tree());
        startSession();
    }

    HostFolder host;
};
