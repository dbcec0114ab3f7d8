#pragma once

#include <CoreFoundation/CFRunLoop.h>
#include <CoreFoundation/Runtime.h>

#include <Host/Descriptor.h>
#include <map>
#include <mutex>
#include <string>
#include <vector>

// Run loops and their sources know each other, whatever threads they are used from. One lock for all of them guards what is
// below, but for what never changes. Nobody is called back, and no object released, while it is held.

namespace cf {

std::mutex& RunLoopLock();

/// A file that a source waits for.
struct Watch {
    int descriptor;
    short events = 0; ///< as for poll(); 0 when nobody waits
};

struct Place {
    struct __CFRunLoop* loop; ///< has the source, so that it outlives this
    std::string mode;
};

}

struct __CFRunLoopSource : cf::Object {
    /// @param itsWatch null, or belonging to the context's info.
    __CFRunLoopSource(CFIndex itsOrder, const CFRunLoopSourceContext& itsContext, cf::Watch* itsWatch);
    ~__CFRunLoopSource() override;
    static CFTypeID typeID();

    /// Wakes the loops that it is in.
    void wakeLoops() const;
    bool isDue(bool fileIsReady) const { return isValid && (isSignalled || fileIsReady); }

    const CFIndex order;
    const CFRunLoopSourceContext context;
    cf::Watch* const watch;
    bool isValid = true;
    bool isSignalled = false;
    std::vector<cf::Place> places {};
};

struct __CFRunLoop : cf::Object {
    __CFRunLoop();
    static CFTypeID typeID();

    void wake() const;
    /// Without the lock, as all below.
    void add(__CFRunLoopSource& source, const std::string& mode);
    void remove(__CFRunLoopSource& source, const std::string& mode);
    /// @param deadline of the clock that steady_clock reads.
    CFRunLoopRunResult run(const std::string& mode, CFTimeInterval seconds, bool returnsAfterSource);
    /// When its thread ends.
    void removeAll();

    using Sources = std::vector<cf::Owned<CFRunLoopSourceRef>>;
    std::map<std::string, Sources> modes {}; ///< by order
    bool isStopped = false; ///< the innermost run is to end
    int runs = 0; ///< within each other
    bool isWaiting = false;
    bool isOver = false; ///< its thread has ended: it takes no sources any more

private:
    class Run;

    const Descriptor fBell; ///< readable when the loop is to look at its sources
};
