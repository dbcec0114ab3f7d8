// When and where callers are told the answers.

#include "tests/DiskArbitration/Requests.h"

#include <future>
#include <sys/resource.h>

namespace {

class SessionTest : public Requests {
protected:
    void ask(const char* name) { DADiskMount(disk(name).get(), nullptr, 0, OnAnswer, self()); }
};

}

TEST_F(SessionTest, SendsRequestsTogetherAndTellsOneAnswerARun)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    ask("disk0s1");
    ask("disk1");
    DADiskEject(disk("disk1").get(), 0, OnAnswer, self());
    EXPECT_EQ(next().disk, "disk1") << "which has no volume";
    EXPECT_EQ(next().disk, "disk0s1");
    EXPECT_EQ(next().disk, "disk1");
    EXPECT_EQ(service.asked(2), (Calls { "first Mount", "loop3 Delete" }));
    // Those that are known at once as well.
    CFStringRef arguments[] = { CFSTR("odd"), nullptr };
    for (int i = 0; i < 2; ++i)
        DADiskMountWithArguments(disk("disk0s1").get(), nullptr, 0, OnAnswer, self(), arguments);
    EXPECT_EQ(answers.size(), 3U) << "not before the loop runs";
    next();
    next();
    EXPECT_TRUE(isSilent());
}

TEST_F(SessionTest, KeepsTheOrderOfWhatIsWantedOfADisk)
{
    const MessageBus bus(socket);
    auto service = std::make_unique<DiskService>(bus.address(), objects(true));
    service->answer("Mount", "-");
    ask("disk0s1");
    DADiskUnmount(disk("disk0s2").get(), 0, OnAnswer, self());
    DADiskEject(disk("disk0").get(), 0, OnAnswer, self());
    EXPECT_EQ(ejectDisk("disk1").disk, "disk1") << "others need not wait";
    EXPECT_TRUE(isSilent());
    EXPECT_EQ(service->asked(2), (Calls { "first Mount", "loop3 Delete" }));
    service.reset();
    for (const char* const name : { "disk0s1", "disk0s2", "disk0" })
        EXPECT_EQ(next().disk, name);
    service = std::make_unique<DiskService>(bus.address(), objects(true));
    DADiskUnmount(disk("disk0s2").get(), 0, OnAnswer, self());
    DADiskEject(disk("disk0").get(), 0, OnAnswer, self());
    next();
    next();
    EXPECT_EQ(service->asked(2), (Calls { "second Unmount", "D Eject" }));
}

TEST_F(SessionTest, WaitsWithoutWorking)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    service.answer("Mount", "-");
    ask("disk0s1");
    rusage before {};
    rusage after {};
    getrusage(RUSAGE_THREAD, &before);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false);
    getrusage(RUSAGE_THREAD, &after);
    EXPECT_EQ(service.asked(1), Calls { "first Mount" });
    const auto microseconds = [](const timeval& time) { return time.tv_sec * 1000000 + time.tv_usec; };
    EXPECT_LT(microseconds(after.ru_utime) + microseconds(after.ru_stime) - microseconds(before.ru_utime)
            - microseconds(before.ru_stime),
        200000);
}

TEST_F(SessionTest, TellsAnswersOnlyWhileItIsScheduled)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    const auto unschedule = [this] {
        DASessionUnscheduleFromRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    };
    const auto schedule = [this] {
        DASessionScheduleWithRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    };
    ask("disk0s1");
    unschedule();
    CFStringRef arguments[] = { CFSTR("odd"), nullptr };
    DADiskMountWithArguments(disk("disk0s1").get(), nullptr, 0, OnAnswer, self(), arguments);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
    schedule();
    schedule();
    next();
    next();
    EXPECT_TRUE(isSilent());
    unschedule();
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
    ask("disk0s1"); // opens nothing, and is told in another mode
    DASessionScheduleWithRunLoop(session.get(), CFRunLoopGetCurrent(), CFSTR("Other"));
    EXPECT_EQ(CFRunLoopRunInMode(CFSTR("Other"), 20, false), kCFRunLoopRunStopped);
    DASessionScheduleWithRunLoop(nullptr, CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    DASessionUnscheduleFromRunLoop(session.get(), nullptr, nullptr);
}

TEST_F(SessionTest, TellsAnswersOnTheThreadOfItsLoop)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    DASessionUnscheduleFromRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    std::promise<void> isScheduled;
    std::thread other([&] {
        DASessionScheduleWithRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
        isScheduled.set_value();
        next();
        next();
    });
    isScheduled.get_future().wait();
    const std::thread::id thread = other.get_id();
    ask("disk0s1"); // a loop that waits already hears of the bus
    CFStringRef arguments[] = { CFSTR("odd"), nullptr };
    DADiskMountWithArguments(disk("disk0s1").get(), nullptr, 0, OnAnswer, self(), arguments);
    other.join();
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_TRUE(answers[0].thread == thread && answers[1].thread == thread);
}

TEST_F(SessionTest, ThatGoesTakesItsAnswersAlong)
{
    const MessageBus bus(socket);
    DiskService service(bus.address(), objects());
    service.answer("Mount", "-");
    ask("disk0s1");
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.2, false);
    EXPECT_EQ(service.asked(1), Calls { "first Mount" });
    CFStringRef arguments[] = { CFSTR("odd"), nullptr };
    DADiskMountWithArguments(disk("disk0s1").get(), nullptr, 0, OnAnswer, self(), arguments);
    cf::Owned<DADiskRef> last = disk("disk0s2");
    session.reset();
    EXPECT_FALSE(isSilent()) << "a disk keeps its session";
    last.reset();
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
}

TEST_F(SessionTest, MayGoInACallback)
{
    std::function<void()> atFirst = [this] {
        answers.emplace_back();
        session.reset();
    };
    for (int i = 0; i < 2; ++i)
        DADiskUnmount(
            disk("disk0s1").get(), 0,
            [](DADiskRef disk, DADissenterRef, void* end) {
                (*static_cast<std::function<void()>*>(end))();
                EXPECT_STREQ(DADiskGetBSDName(disk), "disk0s1");
            },
            &atFirst);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 5, false), kCFRunLoopRunFinished);
    EXPECT_EQ(answers.size(), 1U);
}

TEST_F(SessionTest, LosesTheServiceOrTheBusAndFindsItAgain)
{
    auto bus = std::make_unique<MessageBus>(socket);
    for (const bool losesBus : { false, true }) {
        auto service = std::make_unique<DiskService>(bus->address(), objects());
        service->answer("Mount", "-");
        ask("disk0s1");
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.2, false);
        EXPECT_EQ(service->asked(1).size(), 1U);
        if (losesBus)
            bus.reset();
        service.reset();
        EXPECT_EQ(next().refusal, kDAReturnNotReady);
    }
    ask("disk0s1");
    EXPECT_EQ(next().refusal, kDAReturnNotReady);
    bus = std::make_unique<MessageBus>(socket);
    const DiskService service(bus->address(), objects());
    ask("disk0s1");
    EXPECT_EQ(next().refusal, std::nullopt);
    bus = nullptr; // unheard
    DASessionUnscheduleFromRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    bus = std::make_unique<MessageBus>(socket);
    const DiskService another(bus->address(), objects());
    DASessionScheduleWithRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    ask("disk0s1");
    EXPECT_EQ(next().refusal, std::nullopt);
}
