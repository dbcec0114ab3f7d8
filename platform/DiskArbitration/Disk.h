#pragma once

#include <CoreFoundation/Runtime.h>
#include <DiskArbitration/DADisk.h>
#include <DiskArbitration/Session.h>
#include <IOKit/References.h>

#include <optional>
#include <string>

struct __DADisk : cf::Object {
    /// @param owner retained.
    __DADisk(DASessionRef owner, iokit::Held held, std::string name)
        : Object(typeID())
        , session(cf::Retained(owner))
        , media(std::move(held))
        , bsdName(std::move(name))
    {
    }
    static CFTypeID typeID();

    const cf::Owned<DASessionRef> session;
    const iokit::Held media;
    const std::string bsdName;
};

namespace da {

/// @return what is on the disk, as its host tells, or a recording does; none where that cannot be found out.
std::optional<Volume> VolumeOf(const __DADisk& disk);

/// The folder's path as a Mac program writes it: inside the start-up volume it starts there.
std::string MacPath(const std::string& folder);

}
