#pragma once

#include <CoreFoundation/Runtime.h>
#include <DiskArbitration/DASession.h>
#include <DiskArbitration/HostVolumes.h>

#include <memory>

struct __DASession : cf::Object {
    explicit __DASession(std::shared_ptr<da::HostVolumes> itsVolumes)
        : Object(typeID())
        , volumes(std::move(itsVolumes))
    {
    }
    static CFTypeID typeID();

    const std::shared_ptr<da::HostVolumes> volumes; ///< those of all sessions for the host
};

namespace da {

/// From now on sessions are made for this host, the one that the registry comes from as well. Until it is called, that is
/// the one that the program runs on.
void UseHost(HostTree host);

}
