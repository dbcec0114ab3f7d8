#pragma once

#include <CoreFoundation/CFFileDescriptor.h>
#include <CoreFoundation/Runtime.h>
#include <Host/MessageBus.h>

namespace da {

/// A connection to a message bus that run loops wait for. Not safe to use from several threads at once.
class WatchedBus {
public:
    /// @param callBack once whenever there is something to do for the connection, after watch().
    WatchedBus(BusConnection bus, CFFileDescriptorCallBack callBack, const CFFileDescriptorContext& context);
    WatchedBus(const WatchedBus&) = delete;
    WatchedBus& operator=(const WatchedBus&) = delete;
    ~WatchedBus() { CFFileDescriptorInvalidate(fFile.get()); }

    sd_bus* get() const { return fBus.get(); }
    CFRunLoopSourceRef source() const { return fSource.get(); } ///< to be added to the loops

    /// Waits for what the connection waits for: answers, or that more can be sent.
    void watch();

private:
    BusConnection fBus;
    cf::Owned<CFFileDescriptorRef> fFile;
    cf::Owned<CFRunLoopSourceRef> fSource;
};

}
