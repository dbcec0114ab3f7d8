#pragma once

#include <CoreFoundation/Runtime.h>
#include <DiskArbitration/DADisk.h>
#include <DiskArbitration/Requests.h>
#include <DiskArbitration/Session.h>
#include <IOKit/References.h>

#include <optional>
#include <string>
#include <string_view>

struct __DADisk : cf::Object {
    /// @param itsSession retained; null where the disk is not to hold it. @param itsRequests the session's; retained.
    __DADisk(DASessionRef itsSession, da::Requests* itsRequests, iokit::Held held, std::string name)
        : Object(typeID())
        , session(cf::Retained(itsSession))
        , requests(cf::Retained(itsRequests))
        , media(std::move(held))
        , bsdName(std::move(name))
    {
    }
    static CFTypeID typeID();
    bool isEqual(const cf::Object& other) const override; ///< a disk of the same name
    CFHashCode hash() const override;

    const cf::Owned<DASessionRef> session;
    const cf::Owned<da::Requests*> requests;
    const iokit::Held media;
    const std::string bsdName;
};

namespace da {

/// @return what is on the disk, as its host tells, or a recording does; none where that cannot be found out.
std::optional<Volume> VolumeOf(const __DADisk& disk);

/// @return the medium as the registry has it now; none where it has gone.
iokit::Held MediaNamed(std::string_view bsdName);

/// @param media of a registry. @return the medium of which it is a part, itself where it is whole; null for none.
const iokit::Entry* WholeMedia(const iokit::Entry* media);

/// The folder's path as a Mac program writes it: inside the start-up volume it starts there.
std::string MacPath(const std::string& folder);

}
