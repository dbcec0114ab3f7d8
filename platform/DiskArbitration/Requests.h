#pragma once

#include <CoreFoundation/Runtime.h>
#include <DiskArbitration/HostVolumes.h>
#include <DiskArbitration/Request.h>
#include <DiskArbitration/WatchedBus.h>

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace da {

/// The requests of a session, and the answers to them. Run loops, other threads' as well, may be in the midst of it when
/// the session goes; then it is closed and stays until they are done. Safe to use from all threads; nobody is called back
/// with the lock held.
class Requests : public cf::Object {
public:
    explicit Requests(std::shared_ptr<HostVolumes> volumesOfTheHost);
    static CFTypeID typeID();

    const std::shared_ptr<HostVolumes> volumes; ///< those of all sessions for the host

    /// Asks the disk service, without waiting for its answer; only connecting may take up to a second, where the bus is
    /// silent. What somebody has wanted of the same whole disk before comes first.
    /// @param parts that the wish may be about; none where the host does not have the disk, which is refused.
    void start(Demand demand, std::vector<Part> parts);
    /// Answers without asking. @param refusal what is wrong with the demand itself.
    void refuse(Demand demand, DAReturn refusal);

    void schedule(CFRunLoopRef runLoop, CFStringRef mode);
    void unschedule(CFRunLoopRef runLoop, CFStringRef mode);

    /// The session has gone: answers come no more.
    void close();

private:
    struct Scheduled {
        cf::Owned<CFRunLoopRef> runLoop;
        cf::Owned<CFStringRef> mode;
    };
    using Requested = std::list<std::unique_ptr<Request>>;

    std::unique_ptr<Request> make(Demand demand, std::vector<Part> parts);
    void processBus();
    void deliver();

    // With the lock held:
    bool ask(Request& request);
    void openBus();
    void loseBus();
    void finish(const Request& request);
    Requested::iterator firstFor(const std::string& wholeDisk);
    void signal();
    std::vector<Scheduled>::iterator find(CFRunLoopRef runLoop, CFStringRef mode);

    std::mutex fMutex;
    bool fIsClosed = false;
    std::unique_ptr<WatchedBus> fBus; ///< opened for the first request, and again when it was lost
    Requested fOpen; ///< of each whole disk's the first uses the bus, the others wait
    Requested fAnswered; ///< in the order in which the callers will be told
    /// Tells one answer at a time, so that whoever is told can stop the loop.
    cf::Owned<CFRunLoopSourceRef> fAnswers;
    std::vector<Scheduled> fScheduled;
};

}
