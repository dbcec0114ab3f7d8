#include "CFRunLoop.h"

#include "CFString.h"
#include "RunLoopParts.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

using cf::Check;
using cf::RunLoopLock;

const CFRunLoopMode kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");

namespace {

using Clock = std::chrono::steady_clock;
using Sources = __CFRunLoop::Sources;

/// More than anybody waits, and few enough that it can be added to any time.
constexpr CFTimeInterval kForever = 1e9;

CFRunLoopSourceRef SourceIn(const Sources& sources, const __CFRunLoopSource& wanted)
{
    const auto found = std::find_if(
        sources.begin(), sources.end(), [&wanted](const auto& one) { return one.get() == &wanted; });
    return found != sources.end() ? found->get() : nullptr;
}

std::string ModeName(CFRunLoopMode mode, const char* function)
{
    if (mode == nullptr)
        cf::Fail(function, "needs a mode");
    return cf::Utf8(mode);
}

/// The calling thread's loop. It outlives the thread where somebody holds it, but without sources.
struct ThreadsLoop {
    ThreadsLoop() = default;
    ThreadsLoop(const ThreadsLoop&) = delete;
    ThreadsLoop& operator=(const ThreadsLoop&) = delete;
    ~ThreadsLoop() { loop->removeAll(); }

    const cf::Owned<CFRunLoopRef> loop { new __CFRunLoop };
};

}

std::mutex& cf::RunLoopLock()
{
    static auto* const lock = new std::mutex; // threads may end after the program's objects
    return *lock;
}

CFTypeID __CFRunLoop::typeID()
{
    static const CFTypeID id = cf::RegisterType("CFRunLoop");
    return id;
}

__CFRunLoop::__CFRunLoop()
    : Object(typeID())
    , fBell(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!fBell)
        cf::Fail("CFRunLoopGetCurrent", "has no file descriptor left");
}

void __CFRunLoop::wake() const
{
    const uint64_t ring = 1;
    (void)!write(fBell.get(), &ring, sizeof ring); // full only when it has been rung already
}

void __CFRunLoop::add(__CFRunLoopSource& source, const std::string& mode)
{
    {
        const std::lock_guard lock(RunLoopLock());
        Sources& sources = modes[mode];
        if (isOver || !source.isValid || SourceIn(sources, source) != nullptr)
            return;
        const auto place = std::upper_bound(sources.begin(), sources.end(), source.order,
            [](CFIndex order, const auto& one) { return order < one->order; });
        sources.emplace(place, cf::Retained(&source));
        source.places.push_back({ this, mode });
        wake();
    }
    if (source.context.schedule != nullptr) {
        const cf::Owned<CFStringRef> name(cf::MakeString(mode));
        source.context.schedule(source.context.info, this, name.get());
    }
}

void __CFRunLoop::remove(__CFRunLoopSource& source, const std::string& mode)
{
    cf::Owned<CFRunLoopSourceRef> removed;
    {
        const std::lock_guard lock(RunLoopLock());
        Sources& sources = modes[mode];
        const auto found = std::find_if(
            sources.begin(), sources.end(), [&source](const auto& one) { return one.get() == &source; });
        if (found == sources.end())
            return;
        removed = std::move(*found);
        sources.erase(found);
        std::erase_if(
            source.places, [&](const cf::Place& place) { return place.loop == this && place.mode == mode; });
        wake();
    }
    if (source.context.cancel != nullptr) {
        const cf::Owned<CFStringRef> name(cf::MakeString(mode));
        source.context.cancel(source.context.info, this, name.get());
    }
}

void __CFRunLoop::removeAll()
{
    for (;;) {
        cf::Owned<CFRunLoopSourceRef> source;
        std::string mode;
        {
            const std::lock_guard lock(RunLoopLock());
            isOver = true;
            const auto used = std::find_if(
                modes.begin(), modes.end(), [](const auto& one) { return !one.second.empty(); });
            if (used == modes.end())
                return;
            mode = used->first;
            source.reset(cf::Retained(used->second.front().get()));
        }
        remove(*source, mode);
    }
}

/// One run of a loop in one mode.
class __CFRunLoop::Run {
public:
    Run(__CFRunLoop& loop, const std::string& mode)
        : fLoop(loop)
        , fMode(mode)
    {
        const std::lock_guard lock(RunLoopLock());
        ++fLoop.runs;
        fOthersStop = std::exchange(fLoop.isStopped, false);
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run()
    {
        const std::lock_guard lock(RunLoopLock());
        --fLoop.runs;
        fLoop.isStopped = fOthersStop;
    }

    CFRunLoopRunResult untilDone(Clock::time_point deadline, bool returnsAfterSource)
    {
        for (;;) {
            if (takeStop())
                return kCFRunLoopRunStopped;
            if (!look())
                return kCFRunLoopRunFinished;
            wait(deadline);
            const bool hasHandled = callBack(returnsAfterSource);
            if (takeStop())
                return kCFRunLoopRunStopped;
            if (hasHandled && returnsAfterSource)
                return kCFRunLoopRunHandledSource;
            if (Clock::now() >= deadline)
                return kCFRunLoopRunTimedOut;
        }
    }

private:
    bool takeStop()
    {
        const std::lock_guard lock(RunLoopLock());
        return std::exchange(fLoop.isStopped, false);
    }
    bool look();
    void wait(Clock::time_point deadline);
    bool callBack(bool once);
    bool take(size_t index);

    __CFRunLoop& fLoop;
    const std::string& fMode;
    bool fOthersStop = false; ///< the run that this one is in is to end after it
    Sources fSources {}; ///< at this time
    std::vector<pollfd> fFiles {}; ///< that are waited for: first the bell
    std::vector<size_t> fFileOf {}; ///< for each source its place among them; 0 for none
};

/// Sees what there is to be waited for. @return false for nothing.
bool __CFRunLoop::Run::look()
{
    fSources.clear(); // without the lock: the last reference may go
    const std::lock_guard lock(RunLoopLock());
    fFiles = { { fLoop.fBell.get(), POLLIN, 0 } };
    fFileOf.clear();
    for (const auto& source : fLoop.modes[fMode]) {
        const bool waits = source->watch != nullptr && source->watch->events != 0;
        fFileOf.push_back(waits ? fFiles.size() : 0);
        if (waits)
            fFiles.push_back({ source->watch->descriptor, source->watch->events, 0 });
        fSources.emplace_back(cf::Retained(source.get()));
    }
    fLoop.isWaiting = !fSources.empty()
        && std::none_of(
            fSources.begin(), fSources.end(), [](const auto& source) { return source->isDue(false); });
    return !fSources.empty();
}

void __CFRunLoop::Run::wait(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    const int longest = static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX));
    poll(fFiles.data(), fFiles.size(), fLoop.isWaiting ? longest : 0); // interrupted, it has found nothing
    uint64_t rung = 0;
    if (fFiles.front().revents != 0)
        (void)!read(fLoop.fBell.get(), &rung, sizeof rung);
    const std::lock_guard lock(RunLoopLock());
    fLoop.isWaiting = false;
}

/// @return whether anybody was called.
bool __CFRunLoop::Run::callBack(bool once)
{
    bool hasCalled = false;
    for (size_t i = 0; i < fSources.size() && !(once && hasCalled); ++i) {
        if (!take(i))
            continue;
        fSources[i]->context.perform(fSources[i]->context.info);
        hasCalled = true;
        const std::lock_guard lock(RunLoopLock());
        if (fLoop.isStopped)
            break; // what the others have to do they do in the next run
    }
    return hasCalled;
}

/// @return whether the source has something to do and is still here; its signal is used up then.
bool __CFRunLoop::Run::take(size_t index)
{
    const std::lock_guard lock(RunLoopLock());
    __CFRunLoopSource& source = *fSources[index];
    if (!source.isDue(fFileOf[index] != 0 && fFiles[fFileOf[index]].revents != 0)
        || SourceIn(fLoop.modes[fMode], source) == nullptr)
        return false;
    source.isSignalled = false;
    return true;
}

CFRunLoopRunResult __CFRunLoop::run(const std::string& mode, CFTimeInterval seconds, bool returnsAfterSource)
{
    const std::chrono::duration<double> longest(seconds > 0 ? std::min(seconds, kForever) : 0);
    return Run(*this, mode)
        .untilDone(Clock::now() + std::chrono::duration_cast<Clock::duration>(longest), returnsAfterSource);
}

CFTypeID CFRunLoopGetTypeID() { return __CFRunLoop::typeID(); }

CFRunLoopRef CFRunLoopGetCurrent()
{
    static thread_local const ThreadsLoop own;
    return own.loop.get();
}

void CFRunLoopRun()
{
    CFRunLoopRunResult result = kCFRunLoopRunTimedOut;
    while (result == kCFRunLoopRunTimedOut)
        result = CFRunLoopRunInMode(kCFRunLoopDefaultMode, kForever, false);
}

CFRunLoopRunResult CFRunLoopRunInMode(
    CFRunLoopMode mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled)
{
    return CFRunLoopGetCurrent()->run(
        ModeName(mode, "CFRunLoopRunInMode"), seconds, returnAfterSourceHandled != 0);
}

void CFRunLoopStop(CFRunLoopRef rl)
{
    const __CFRunLoop& loop = Check(rl, "CFRunLoopStop");
    const std::lock_guard lock(RunLoopLock());
    rl->isStopped = loop.runs > 0;
    loop.wake();
}

void CFRunLoopWakeUp(CFRunLoopRef rl) { Check(rl, "CFRunLoopWakeUp").wake(); }

Boolean CFRunLoopIsWaiting(CFRunLoopRef rl)
{
    const __CFRunLoop& loop = Check(rl, "CFRunLoopIsWaiting");
    const std::lock_guard lock(RunLoopLock());
    return loop.isWaiting;
}

void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode)
{
    const char* const function = "CFRunLoopAddSource";
    Check(rl, function).add(Check(source, function), ModeName(mode, function));
}

void CFRunLoopRemoveSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode)
{
    const char* const function = "CFRunLoopRemoveSource";
    Check(rl, function).remove(Check(source, function), ModeName(mode, function));
}

Boolean CFRunLoopContainsSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode)
{
    const char* const function = "CFRunLoopContainsSource";
    __CFRunLoop& loop = Check(rl, function);
    const __CFRunLoopSource& wanted = Check(source, function);
    const std::string name = ModeName(mode, function);
    const std::lock_guard lock(RunLoopLock());
    return SourceIn(loop.modes[name], wanted) != nullptr;
}
