#include "Values.h"

#include <atomic>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace {

/// A source that does what the test says.
struct Doer {
    explicit Doer(
        std::function<void()> itsWork = [] {}, CFIndex order = 0)
        : work(std::move(itsWork))
    {
        CFRunLoopSourceContext context {};
        context.info = this;
        context.schedule
            = [](void* self, CFRunLoopRef, CFRunLoopMode) { ++static_cast<Doer*>(self)->places; };
        context.cancel = [](void* self, CFRunLoopRef, CFRunLoopMode) { --static_cast<Doer*>(self)->places; };
        context.perform = [](void* self) {
            ++static_cast<Doer*>(self)->done;
            static_cast<Doer*>(self)->work();
        };
        source.reset(CFRunLoopSourceCreate(nullptr, order, &context));
    }
    Doer(const Doer&) = delete;
    Doer& operator=(const Doer&) = delete;
    ~Doer() { CFRunLoopSourceInvalidate(source.get()); }

    Doer& add(CFStringRef mode = kCFRunLoopDefaultMode)
    {
        CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), mode);
        return *this;
    }
    void signal() const { CFRunLoopSourceSignal(source.get()); }

    std::function<void()> work;
    Held<CFRunLoopSourceRef> source {};
    std::atomic<int> done = 0;
    std::atomic<int> places = 0;
};

CFRunLoopRunResult RunLoop(CFTimeInterval seconds, bool once = false)
{
    return CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, once);
}

constexpr auto kStop = [] { CFRunLoopStop(CFRunLoopGetCurrent()); };

double ProcessorSeconds()
{
    timespec time {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}

TEST(RunLoopTest, RunsWhatIsReadyInOrderAndSaysWhyItEnded)
{
    EXPECT_EQ(RunLoop(10), kCFRunLoopRunFinished) << "nothing to wait for";
    std::string log;
    Doer last([&] { log += "last "; }, 2);
    Doer first([&] { log += "first "; }, -1);
    Doer other([&] { log += "other "; });
    last.add().add(); // counts once
    first.add();
    other.add(CFSTR("other"));
    for (const Doer* const one : { &last, &first, &other })
        one->signal();
    last.signal();
    EXPECT_EQ(RunLoop(0, true), kCFRunLoopRunHandledSource);
    EXPECT_EQ(log, "first ");
    EXPECT_EQ(RunLoop(0), kCFRunLoopRunTimedOut);
    EXPECT_EQ(log, "first last ");
    EXPECT_EQ(CFRunLoopRunInMode(CFSTR("other"), 0, true), kCFRunLoopRunHandledSource);
    EXPECT_EQ(RunLoop(0.01), kCFRunLoopRunTimedOut);

    EXPECT_TRUE(CFRunLoopContainsSource(CFRunLoopGetCurrent(), last.source.get(), kCFRunLoopDefaultMode));
    EXPECT_EQ(last.places, 1);
    CFRunLoopRemoveSource(CFRunLoopGetCurrent(), last.source.get(), kCFRunLoopDefaultMode);
    EXPECT_EQ(last.places, 0);
    first.work = [&] { CFRunLoopSourceInvalidate(first.source.get()); };
    first.signal();
    EXPECT_EQ(RunLoop(10), kCFRunLoopRunFinished) << "the last source took itself out";
    EXPECT_FALSE(CFRunLoopSourceIsValid(first.source.get()));
    EXPECT_EQ(first.add().places, 0);
}

TEST(RunLoopTest, AStopEndsTheInnermostRunAndLeavesTheRestForTheNext)
{
    Doer second([] {}, 2);
    Doer first(kStop, 1);
    second.add().signal();
    first.add().signal();
    CFRunLoopRun();
    EXPECT_EQ(first.done, 1);
    EXPECT_EQ(second.done, 0);
    kStop(); // nothing runs
    EXPECT_EQ(RunLoop(0), kCFRunLoopRunTimedOut);
    EXPECT_EQ(second.done, 1);

    Doer inner(kStop);
    CFRunLoopRunResult nested {};
    first.work = [&] {
        inner.add(CFSTR("inner")).signal();
        nested = CFRunLoopRunInMode(CFSTR("inner"), 10, false);
    };
    first.signal();
    EXPECT_EQ(RunLoop(0), kCFRunLoopRunTimedOut);
    EXPECT_EQ(nested, kCFRunLoopRunStopped);

    inner.work = [] {};
    first.work = [&] {
        kStop(); // this run, and not the one that follows in it
        inner.signal();
        nested = CFRunLoopRunInMode(CFSTR("inner"), 0, false);
    };
    first.signal();
    EXPECT_EQ(RunLoop(10), kCFRunLoopRunStopped);
    EXPECT_EQ(nested, kCFRunLoopRunTimedOut);
}

TEST(RunLoopTest, LetsSourcesTakeOthersAway)
{
    Doer second;
    Doer first(
        [&] { CFRunLoopRemoveSource(CFRunLoopGetCurrent(), second.source.get(), kCFRunLoopDefaultMode); },
        -1);
    first.add().signal();
    second.add().add(CFSTR("other")).signal();
    EXPECT_EQ(RunLoop(0), kCFRunLoopRunTimedOut);
    EXPECT_EQ(second.done, 0);
    EXPECT_EQ(second.places, 1);
    CFRunLoopSourceInvalidate(second.source.get());
    EXPECT_EQ(second.places, 0);
}

TEST(RunLoopTest, WaitsWithoutWorkUntilAnotherThreadHasSome)
{
    Doer doer(kStop);
    doer.add();
    CFRunLoopRef const loop = CFRunLoopGetCurrent();
    const double before = ProcessorSeconds();
    std::thread other([&] {
        EXPECT_NE(CFRunLoopGetCurrent(), loop);
        while (!CFRunLoopIsWaiting(loop))
            usleep(1000);
        usleep(300000);
        doer.signal();
        CFRunLoopWakeUp(loop);
    });
    CFRunLoopRun();
    other.join();
    EXPECT_EQ(doer.done, 1);
    EXPECT_FALSE(CFRunLoopIsWaiting(loop));
    EXPECT_LT(ProcessorSeconds() - before, 0.2) << "it is not to look again and again";

    Doer late(kStop);
    std::thread adding([&] {
        while (!CFRunLoopIsWaiting(loop))
            usleep(1000);
        late.signal();
        CFRunLoopAddSource(loop, late.source.get(), kCFRunLoopDefaultMode);
    });
    CFRunLoopRun();
    adding.join();
    EXPECT_EQ(late.done, 1);

    const auto whileItWaits = [loop](const std::function<void()>& work) {
        std::thread another([&] {
            while (!CFRunLoopIsWaiting(loop))
                usleep(1000);
            work();
        });
        const CFRunLoopRunResult result = RunLoop(60);
        another.join();
        return result;
    };
    EXPECT_EQ(whileItWaits([loop] { CFRunLoopStop(loop); }), kCFRunLoopRunStopped);
    CFRunLoopSourceInvalidate(late.source.get());
    EXPECT_EQ(whileItWaits([&] { CFRunLoopRemoveSource(loop, doer.source.get(), kCFRunLoopDefaultMode); }),
        kCFRunLoopRunFinished);
    EXPECT_EQ(RunLoop(60), kCFRunLoopRunFinished);
    EXPECT_FALSE(CFRunLoopIsWaiting(loop));
}

TEST(RunLoopTest, EndsWithItsThreadAndLetsItsSourcesGo)
{
    Doer doer;
    Held<CFRunLoopRef> loop;
    std::thread([&] {
        doer.add();
        loop.reset(CFRunLoopGetCurrent());
        CFRetain(loop.get());
    }).join();
    EXPECT_EQ(doer.places, 0);
    EXPECT_EQ(CFGetRetainCount(doer.source.get()), 1);
    CFRunLoopAddSource(loop.get(), doer.source.get(), kCFRunLoopDefaultMode);
    EXPECT_FALSE(CFRunLoopContainsSource(loop.get(), doer.source.get(), kCFRunLoopDefaultMode));
}

namespace {

/// A pipe whose ends a run loop waits for.
class FileDescriptorTest : public testing::Test {
protected:
    FileDescriptorTest()
    {
        EXPECT_EQ(pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
        const CFFileDescriptorContext context { 0, this, nullptr, nullptr, nullptr };
        file.reset(CFFileDescriptorCreate(
            nullptr, ends[0], true,
            [](CFFileDescriptorRef, CFOptionFlags types, void* self) {
                static_cast<FileDescriptorTest*>(self)->calls += static_cast<int>(types);
            },
            &context));
        const Held<CFRunLoopSourceRef> source(CFFileDescriptorCreateRunLoopSource(nullptr, file.get(), 0));
        CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), kCFRunLoopDefaultMode);
    }
    ~FileDescriptorTest() override
    {
        CFFileDescriptorInvalidate(file.get());
        if (ends[1] >= 0)
            close(ends[1]);
    }

    void enable() const { CFFileDescriptorEnableCallBacks(file.get(), kCFFileDescriptorReadCallBack); }

    int ends[2] = { -1, -1 };
    int calls = 0; ///< the sum of their types
    Held<CFFileDescriptorRef> file {};
};

}

TEST_F(FileDescriptorTest, IsCalledOnceForEachTimeItIsEnabled)
{
    EXPECT_EQ(write(ends[1], "x", 1), 1);
    EXPECT_EQ(RunLoop(0), kCFRunLoopRunTimedOut);
    EXPECT_EQ(calls, 0);
    enable();
    EXPECT_EQ(RunLoop(0.01), kCFRunLoopRunTimedOut);
    EXPECT_EQ(calls, 1);
    enable();
    CFFileDescriptorDisableCallBacks(file.get(), kCFFileDescriptorReadCallBack);
    EXPECT_EQ(RunLoop(0), kCFRunLoopRunTimedOut);
    EXPECT_EQ(calls, 1);

    char piece = 0;
    EXPECT_EQ(read(ends[0], &piece, 1), 1);
    enable();
    std::thread writer([&] {
        usleep(20000);
        EXPECT_EQ(close(std::exchange(ends[1], -1)), 0); // its end is news as well
    });
    EXPECT_EQ(RunLoop(10, true), kCFRunLoopRunHandledSource);
    writer.join();
    EXPECT_EQ(calls, 2);

    // Nobody writes any more, which is news to whoever wants to.
    std::thread enabling([this, loop = CFRunLoopGetCurrent()] {
        while (!CFRunLoopIsWaiting(loop))
            usleep(1000);
        CFFileDescriptorEnableCallBacks(file.get(), kCFFileDescriptorWriteCallBack);
    });
    EXPECT_EQ(RunLoop(60, true), kCFRunLoopRunHandledSource);
    enabling.join();
    EXPECT_EQ(calls, 4);
}

TEST_F(FileDescriptorTest, KeepsItsInfoUntilItIsInvalidAndMayEndInItsCallback)
{
    struct Ending {
        int held = 0;
        CFFileDescriptorRef own = nullptr;
    } ending;
    const CFFileDescriptorContext context { 0, &ending,
        [](void* info) {
            ++static_cast<Ending*>(info)->held;
            return info;
        },
        [](void* info) { --static_cast<Ending*>(info)->held; }, nullptr };
    const auto end = [](CFFileDescriptorRef f, CFOptionFlags, void* info) {
        CFFileDescriptorInvalidate(f);
        EXPECT_EQ(static_cast<Ending*>(info)->held, 1) << "this is still running";
        CFRelease(static_cast<Ending*>(info)->own);
    };
    ending.own = CFFileDescriptorCreate(nullptr, ends[1], false, end, &context);
    Held<CFRunLoopSourceRef> source(CFFileDescriptorCreateRunLoopSource(nullptr, ending.own, 0));
    CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), kCFRunLoopDefaultMode);
    CFFileDescriptorEnableCallBacks(ending.own, kCFFileDescriptorWriteCallBack);
    EXPECT_EQ(RunLoop(10, true), kCFRunLoopRunHandledSource);
    EXPECT_EQ(ending.held, 0);
    EXPECT_FALSE(CFRunLoopSourceIsValid(source.get()));
    EXPECT_EQ(fcntl(ends[1], F_GETFD), FD_CLOEXEC) << "it is not its to close";
}

TEST_F(FileDescriptorTest, IsClosedAndLeavesItsLoopWhenItIsInvalid)
{
    enable();
    CFFileDescriptorInvalidate(file.get());
    EXPECT_FALSE(CFFileDescriptorIsValid(file.get()));
    EXPECT_EQ(RunLoop(10), kCFRunLoopRunFinished);
    pollfd writeEnd { ends[1], POLLOUT, 0 };
    EXPECT_EQ(poll(&writeEnd, 1, 0), 1);
    EXPECT_NE(writeEnd.revents & POLLERR, 0) << "nobody can read it any more";
    EXPECT_EQ(CFFileDescriptorCreateRunLoopSource(nullptr, file.get(), 0), nullptr);
    EXPECT_EQ(CFGetRetainCount(file.get()), 1) << "no source holds it";
}
