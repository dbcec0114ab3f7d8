#include <DiskArbitration/WatchedBus.h>

#include <poll.h>
#include <systemd/sd-bus.h>

namespace da {

WatchedBus::WatchedBus(
    BusConnection bus, CFFileDescriptorCallBack callBack, const CFFileDescriptorContext& context)
    : fBus(std::move(bus))
    , fFile(CFFileDescriptorCreate(nullptr, sd_bus_get_fd(fBus.get()), false, callBack, &context))
    , fSource(CFFileDescriptorCreateRunLoopSource(nullptr, fFile.get(), 0))
{
}

void WatchedBus::watch()
{
    CFFileDescriptorEnableCallBacks(fFile.get(), kCFFileDescriptorReadCallBack);
    const int events = sd_bus_get_events(fBus.get());
    if (events >= 0 && (events & POLLOUT) != 0)
        CFFileDescriptorEnableCallBacks(fFile.get(), kCFFileDescriptorWriteCallBack);
}

}
