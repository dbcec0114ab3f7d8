#include <DiskArbitration/Session.h>

#include <mutex>
#include <utility>

namespace {

struct TheHost {
    std::mutex mutex {};
    std::shared_ptr<da::HostVolumes> volumes = std::make_shared<da::HostVolumes>(HostTree());
} theHost;

}

CFTypeID __DASession::typeID()
{
    static const CFTypeID id = cf::RegisterType("DASession");
    return id;
}

void da::UseHost(HostTree host)
{
    const std::lock_guard lock(theHost.mutex);
    theHost.volumes = std::make_shared<da::HostVolumes>(std::move(host));
}

CFTypeID DASessionGetTypeID() { return __DASession::typeID(); }

DASessionRef DASessionCreate(CFAllocatorRef /*allocator*/)
{
    const std::lock_guard lock(theHost.mutex);
    return new __DASession(theHost.volumes);
}

void DASessionScheduleWithRunLoop(DASessionRef session, CFRunLoopRef runLoop, CFStringRef runLoopMode)
{
    const auto* const known = cf::As<__DASession>(session);
    if (known != nullptr && runLoop != nullptr && runLoopMode != nullptr)
        known->requests->schedule(runLoop, runLoopMode);
}

void DASessionUnscheduleFromRunLoop(DASessionRef session, CFRunLoopRef runLoop, CFStringRef runLoopMode)
{
    const auto* const known = cf::As<__DASession>(session);
    if (known != nullptr && runLoop != nullptr && runLoopMode != nullptr)
        known->requests->unschedule(runLoop, runLoopMode);
}
