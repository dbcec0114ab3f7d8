#pragma once

#include "tests/DiskArbitration/DiskService.h"
#include "tests/DiskArbitration/Disks.h"
#include "tests/support/MessageBus.h"

#include <sys/sysmacros.h>

/// Requests to disks of a hand-made host: "disk0" with the volumes "disk0s1" and "disk0s2" and the swap space "disk0s3",
/// and the image "disk1". Its bus is there from the start.
class Requests : public Disks {
protected:
    Requests()
    {
        iokit::Registry registry;
        iokit::Entry& whole = addMedia(registry, registry.root(), "disk0", 8, 0, "/dev/sda");
        for (const char* const part : { "1", "2", "3" })
            addMedia(registry, whole, std::string("disk0s") + part, 8, static_cast<unsigned>(*part - '0'),
                std::string("/dev/sda") + part);
        addMedia(registry, registry.root(), "disk1", 7, 3, "/dev/loop3");
        use(std::move(registry));
        host.add("run/dbus/", { { "place", "" } });
    }

    /// The service's objects for these disks. @param drive properties of the disk's drive.
    static DiskService::Answer objects(bool isEjectable = false, bool canPowerOff = false)
    {
        return [=](sd_bus_message* message) {
            int done = sd_bus_message_open_container(message, 'a', "{oa{sa{sv}}}");
            const auto add = [&](const char* object, dev_t device, const char* extra) {
                const std::string path = std::string("/org/freedesktop/UDisks2/block_devices/") + object;
                if (done >= 0)
                    done = sd_bus_message_append(message, "{oa{sa{sv}}}", path.c_str(), 2,
                        "org.freedesktop.UDisks2.Block", 3, "DeviceNumber", "t", uint64_t { device }, "Drive",
                        "o", object[0] == 's' ? "/org/freedesktop/UDisks2/drives/D" : "/", "IdUsage", "s",
                        "filesystem", extra, 0);
            };
            add("sda", makedev(8, 0), "org.freedesktop.UDisks2.PartitionTable");
            // Not the names of the devices' files: these are theirs as they were found.
            add("first", makedev(8, 1), "org.freedesktop.UDisks2.Filesystem");
            add("second", makedev(8, 2), "org.freedesktop.UDisks2.Filesystem");
            add("sda3", makedev(8, 3), "org.freedesktop.UDisks2.Swapspace");
            add("loop3", makedev(7, 3), "org.freedesktop.UDisks2.Loop");
            if (done >= 0)
                done = sd_bus_message_append(message, "{oa{sa{sv}}}", "/org/freedesktop/UDisks2/drives/D", 1,
                    "org.freedesktop.UDisks2.Drive", 3, "Ejectable", "b", isEjectable ? 1 : 0, "Vendor", "s",
                    "Heron", "CanPowerOff", "b", canPowerOff ? 1 : 0);
            return done < 0 ? done : sd_bus_message_close_container(message);
        };
    }

    const std::string socket = host.root() + "/run/dbus/system_bus_socket";
};

using Calls = std::vector<std::string>;
