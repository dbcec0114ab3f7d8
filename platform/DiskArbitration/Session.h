#pragma once

#include <CoreFoundation/Runtime.h>
#include <DiskArbitration/DASession.h>
#include <DiskArbitration/HostVolumes.h>
#include <DiskArbitration/Requests.h>

#include <memory>

struct __DASession : cf::Object {
    explicit __DASession(std::shared_ptr<da::HostVolumes> volumes)
        : Object(typeID())
        , requests(new da::Requests(std::move(volumes)))
    {
    }
    ~__DASession() override { requests->close(); }
    static CFTypeID typeID();

    const cf::Owned<da::Requests*> requests; ///< which may outlive the session, closed
};

namespace da {

/// From now on sessions are made for this host, the one that the registry comes from as well. Until it is called, that is
/// the one that the program runs on.
void UseHost(HostTree host);

}
