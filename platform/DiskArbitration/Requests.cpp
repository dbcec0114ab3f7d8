#include <DiskArbitration/Requests.h>

#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <chrono>
#include <systemd/sd-bus.h>
#include <utility>

namespace da {

namespace {

using namespace std::chrono_literals;
constexpr std::chrono::milliseconds kPatience = 1s; ///< with a bus that does not greet

}

CFTypeID Requests::typeID()
{
    static const CFTypeID id = cf::RegisterType("DARequests");
    return id;
}

Requests::Requests(std::shared_ptr<HostVolumes> volumesOfTheHost)
    : Object(typeID())
    , volumes(std::move(volumesOfTheHost))
{
    // Held by the source, and held until close().
    CFRunLoopSourceContext context { 0, this, CFRetain, CFRelease, nullptr, nullptr, nullptr, nullptr,
        nullptr, [](void* info) { static_cast<Requests*>(info)->deliver(); } };
    fAnswers.reset(CFRunLoopSourceCreate(nullptr, 0, &context));
}

std::unique_ptr<Request> Requests::make(Demand demand, std::vector<Part> parts)
{
    return std::make_unique<Request>(
        *volumes, std::move(demand), std::move(parts), [this](const Request& request) { finish(request); });
}

void Requests::start(Demand demand, std::vector<Part> parts)
{
    if (parts.empty())
        return refuse(std::move(demand), kDAReturnNotFound);
    std::unique_ptr<Request> request = make(std::move(demand), std::move(parts));
    const std::lock_guard lock(fMutex);
    if (fIsClosed)
        return;
    const bool isNext = firstFor(request->wholeDisk()) == fOpen.end();
    const bool isStarted = !isNext || ask(*request);
    Request& added = *fOpen.emplace_back(std::move(request));
    if (isStarted)
        return;
    added.refuse({ kDAReturnNotReady });
    finish(added);
}

void Requests::refuse(Demand demand, DAReturn refusal)
{
    std::unique_ptr<Request> request = make(std::move(demand), {});
    request->refuse({ refusal });
    const std::lock_guard lock(fMutex);
    if (fIsClosed)
        return;
    fAnswered.push_back(std::move(request));
    signal();
}

bool Requests::ask(Request& request)
{
    if (!fBus || !request.ask(fBus->get())) {
        loseBus();
        openBus();
        if (!fBus || !request.ask(fBus->get()))
            return false;
    }
    fBus->watch();
    return true;
}

void Requests::openBus()
{
    BusConnection bus = ConnectToBus(SystemBusAddress(volumes->host()), kPatience);
    if (!bus)
        return;
    const CFFileDescriptorContext context { 0, this,
        [](void* info) -> void* { return cf::Retained(static_cast<Requests*>(info)); },
        [](void* info) { CFRelease(info); }, nullptr };
    fBus = std::make_unique<WatchedBus>(
        std::move(bus),
        [](CFFileDescriptorRef, CFOptionFlags, void* info) { static_cast<Requests*>(info)->processBus(); },
        context);
    for (const Scheduled& scheduled : fScheduled)
        CFRunLoopAddSource(scheduled.runLoop.get(), fBus->source(), scheduled.mode.get());
}

void Requests::loseBus()
{
    const std::unique_ptr<WatchedBus> lost = std::move(fBus);
    while (!fOpen.empty()) {
        Request& first = *fOpen.front();
        first.refuse({ kDAReturnNotReady });
        finish(first);
    }
}

void Requests::processBus()
{
    const std::lock_guard lock(fMutex);
    if (!fBus)
        return;
    int done = 1;
    while (done > 0)
        done = sd_bus_process(fBus->get(), nullptr);
    if (done < 0)
        loseBus();
    else
        fBus->watch();
}

void Requests::finish(const Request& request)
{
    const auto finished = firstFor(request.wholeDisk());
    (*finished)->end();
    if (!request.isRefused())
        volumes->forget();
    fAnswered.splice(fAnswered.end(), fOpen, finished);
    signal();
    const auto next = firstFor(request.wholeDisk());
    if (next == fOpen.end() || (fBus && (*next)->ask(fBus->get())))
        return;
    (*next)->refuse({ kDAReturnNotReady });
    finish(**next);
}

Requests::Requested::iterator Requests::firstFor(const std::string& wholeDisk)
{
    return std::find_if(fOpen.begin(), fOpen.end(),
        [&wholeDisk](const auto& request) { return request->wholeDisk() == wholeDisk; });
}

void Requests::signal()
{
    CFRunLoopSourceSignal(fAnswers.get());
    for (const Scheduled& scheduled : fScheduled)
        CFRunLoopWakeUp(scheduled.runLoop.get());
}

void Requests::deliver()
{
    Requested told;
    {
        const std::lock_guard lock(fMutex);
        if (fAnswered.empty())
            return;
        told.splice(told.end(), fAnswered, fAnswered.begin());
        if (!fAnswered.empty())
            signal();
    }
    told.front()->tell();
}

std::vector<Requests::Scheduled>::iterator Requests::find(CFRunLoopRef runLoop, CFStringRef mode)
{
    return std::find_if(fScheduled.begin(), fScheduled.end(), [runLoop, mode](const Scheduled& scheduled) {
        return scheduled.runLoop.get() == runLoop && CFEqual(scheduled.mode.get(), mode);
    });
}

void Requests::schedule(CFRunLoopRef runLoop, CFStringRef mode)
{
    const std::lock_guard lock(fMutex);
    if (fIsClosed || find(runLoop, mode) != fScheduled.end())
        return;
    fScheduled.push_back({ cf::Owned<CFRunLoopRef>(cf::Retained(runLoop)),
        cf::Owned<CFStringRef>(CFStringCreateCopy(nullptr, mode)) });
    CFRunLoopAddSource(runLoop, fAnswers.get(), mode);
    if (fBus)
        CFRunLoopAddSource(runLoop, fBus->source(), mode);
    CFRunLoopWakeUp(runLoop);
}

void Requests::unschedule(CFRunLoopRef runLoop, CFStringRef mode)
{
    const std::lock_guard lock(fMutex);
    const auto found = find(runLoop, mode);
    if (found == fScheduled.end())
        return;
    CFRunLoopRemoveSource(runLoop, fAnswers.get(), mode);
    if (fBus)
        CFRunLoopRemoveSource(runLoop, fBus->source(), mode);
    fScheduled.erase(found);
}

void Requests::close()
{
    // They go after the lock: what they hold may hold this.
    Requested requests;
    std::unique_ptr<WatchedBus> bus;
    cf::Owned<CFRunLoopSourceRef> answers;
    std::vector<Scheduled> scheduled;
    const std::lock_guard lock(fMutex);
    fIsClosed = true;
    for (const auto& request : fOpen)
        request->end();
    requests.splice(requests.end(), fOpen);
    requests.splice(requests.end(), fAnswered);
    bus.swap(fBus);
    answers.swap(fAnswers);
    scheduled.swap(fScheduled);
    CFRunLoopSourceInvalidate(answers.get());
}

}
