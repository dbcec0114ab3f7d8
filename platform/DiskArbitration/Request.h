#pragma once

#include <CoreFoundation/Runtime.h>
#include <DiskArbitration/DADisk.h>
#include <DiskArbitration/HostVolumes.h>
#include <DiskArbitration/Plan.h>

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace da {

/// What somebody wants of a disk, and whom to tell.
struct Demand {
    cf::Owned<DADiskRef> disk; ///< one that does not hold the session
    std::string wholeDisk; ///< its name
    Wish wish;
    DADiskMountCallback callback; ///< may be null
    void* context;
};

struct ReleaseSlot {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using Slot = std::unique_ptr<sd_bus_slot, ReleaseSlot>; ///< an answer that is waited for until this goes

/// One request on its way: first the service is asked what it knows, then it is told what to do.
class Request {
public:
    /// @param volumes of the host; have to outlive this. @param parts that the wish may be about.
    /// @param whenAnswered called when there is nothing more to wait for, while the bus is processed.
    Request(HostVolumes& volumes, Demand demand, std::vector<Part> parts,
        std::function<void(const Request&)> whenAnswered)
        : fVolumes(volumes)
        , fDemand(std::move(demand))
        , fParts(std::move(parts))
        , fWhenAnswered(std::move(whenAnswered))
    {
    }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    /// @return false when there is no way to the service.
    bool ask(sd_bus* bus);
    /// The first reason counts.
    void refuse(Refusal refusal);
    bool isRefused() const { return fRefusal.has_value(); }
    const std::string& wholeDisk() const { return fDemand.wholeDisk; }
    /// Waits for nothing any more, and lets go of the bus.
    void end() { fExpected.clear(); }
    /// Calls back, after looking for whoever is to blame.
    void tell();

private:
    struct Answer {
        Request& request;
        const Part* part; ///< that the question was about; null for none
        Slot slot {};
    };

    bool send(const Message& message, const Part* part, sd_bus_message_handler_t onAnswer);
    static int OnObjects(sd_bus_message* answer, void* expected, sd_bus_error*);
    static int OnDone(sd_bus_message* answer, void* expected, sd_bus_error*);
    void carryOut(sd_bus* bus, const ServedObjects& service);

    HostVolumes& fVolumes;
    Demand fDemand;
    std::vector<Part> fParts;
    std::function<void(const Request&)> fWhenAnswered;
    std::list<Answer> fExpected;
    size_t fMissing = 0; ///< of those expected
    std::optional<Refusal> fRefusal; ///< the first one
    const Part* fBusy = nullptr; ///< what somebody may be holding then
};

}
