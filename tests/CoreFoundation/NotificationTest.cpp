#include "StoreTesting.h"

#include <array>
#include <atomic>
#include <functional>
#include <thread>

namespace {

/// Writes down what it is told, and then does something.
struct Listener {
    std::string name;
    std::string* log;
    std::function<void()> reaction = [] {};

    static void hear(
        CFNotificationCenterRef, void* self, CFNotificationName notification, const void*, CFDictionaryRef)
    {
        auto* const listener = static_cast<Listener*>(self);
        *listener->log += listener->name + ':' + Show(notification) + ' ';
        listener->reaction();
    }
};

class NotificationTest : public testing::TestWithParam<CFNotificationCenterRef (*)()> {
protected:
    ~NotificationTest() override
    {
        for (const Listener* listener : { &a, &b, &c })
            CFNotificationCenterRemoveEveryObserver(center, listener);
    }

    void add(const Listener& listener, CFStringRef name, const void* object = nullptr) const
    {
        CFNotificationCenterAddObserver(center, &listener, Listener::hear, name, object,
            CFNotificationSuspensionBehaviorDeliverImmediately);
    }
    void remove(const Listener& listener, CFStringRef name, const void* object = nullptr) const
    {
        CFNotificationCenterRemoveObserver(center, &listener, name, object);
    }
    /// @return what was heard of it.
    std::string post(CFStringRef name, const void* object = nullptr)
    {
        log.clear();
        CFNotificationCenterPostNotification(center, name, object, nullptr, true);
        return log;
    }

    CFNotificationCenterRef center = GetParam()();
    std::string log;
    Listener a { "a", &log };
    Listener b { "b", &log };
    Listener c { "c", &log };
};

using CenterTest = NotificationTest;

const auto kLocal = testing::Values(&CFNotificationCenterGetLocalCenter);
const auto kDistributed = testing::Values(&CFNotificationCenterGetDistributedCenter);
const auto kBoth
    = testing::Values(&CFNotificationCenterGetLocalCenter, &CFNotificationCenterGetDistributedCenter);

class LocalCenterTest : public NotificationTest { };
class DistributedCenterTest : public NotificationTest { };

} // namespace

INSTANTIATE_TEST_SUITE_P(Centers, CenterTest, kBoth);
INSTANTIATE_TEST_SUITE_P(Centers, LocalCenterTest, kLocal);
INSTANTIATE_TEST_SUITE_P(Centers, DistributedCenterTest, kDistributed);

TEST_P(CenterTest, CallsThoseInterestedInOrderOfRegistration)
{
    add(b, CFSTR("x"));
    add(a, nullptr);
    add(c, CFSTR("y"));
    add(b, CFSTR("x"));
    EXPECT_EQ(post(CFSTR("x")), "b:x a:x b:x ");
    EXPECT_EQ(post(CFSTR("y")), "a:y c:y ");
    EXPECT_EQ(post(CFSTR("z")), "a:z ");
}

TEST_P(CenterTest, RemovesExactlyWhatWasNamed)
{
    add(a, CFSTR("x"));
    add(a, CFSTR("y"));
    add(a, nullptr);
    add(b, CFSTR("x"));
    remove(a, CFSTR("x"));
    EXPECT_EQ(post(CFSTR("x")), "a:x b:x ");
    EXPECT_EQ(post(CFSTR("y")), "a:y a:y ");
    remove(a, nullptr);
    EXPECT_EQ(post(CFSTR("y")), "");
    EXPECT_EQ(post(CFSTR("x")), "b:x ");
}

TEST_P(CenterTest, ObserversMayComeAndGoDuringDelivery)
{
    a.reaction = [this] {
        remove(a, nullptr);
        remove(b, nullptr);
        add(c, CFSTR("x"));
    };
    add(a, CFSTR("x"));
    add(b, CFSTR("x"));
    EXPECT_EQ(post(CFSTR("x")), "a:x ");
    EXPECT_EQ(post(CFSTR("x")), "c:x ");
}

TEST_P(CenterTest, ACallbackMayPost)
{
    a.reaction = [this] {
        CFNotificationCenterPostNotificationWithOptions(center, CFSTR("y"), nullptr, nullptr, 0);
    };
    add(a, CFSTR("x"));
    add(b, CFSTR("y"));
    add(c, CFSTR("x"));
    EXPECT_EQ(post(CFSTR("x")), "a:x b:y c:x ");
}

TEST_P(CenterTest, HandsOnWhatWasPosted)
{
    struct Seen {
        const void* object = nullptr;
        CFDictionaryRef userInfo = nullptr;
    } seen;
    const auto hear = [](CFNotificationCenterRef, void* observer, CFNotificationName, const void* object,
                          CFDictionaryRef info) {
        *static_cast<Seen*>(observer) = { object, info };
    };
    CFNotificationCenterAddObserver(
        center, &seen, hear, nullptr, nullptr, CFNotificationSuspensionBehaviorDrop);
    const Held<CFMutableDictionaryRef> info = Dictionary();
    CFNotificationCenterPostNotification(center, CFSTR("x"), CFSTR("sender"), info.get(), false);
    CFNotificationCenterRemoveEveryObserver(center, &seen);
    EXPECT_EQ(seen.object, CFSTR("sender"));
    EXPECT_EQ(seen.userInfo, info.get());
}

TEST_P(CenterTest, ManyThreadsMayUseItAtOnce)
{
    std::atomic<int> heard = 0;
    const auto hear = [](CFNotificationCenterRef, void* observer, CFNotificationName, const void*,
                          CFDictionaryRef) { ++*static_cast<std::atomic<int>*>(observer); };
    const auto work = [&] {
        int mine = 0;
        for (int i = 0; i < 500; ++i) {
            CFNotificationCenterAddObserver(
                center, &mine, [](auto...) {}, nullptr, nullptr, CFNotificationSuspensionBehaviorDrop);
            CFNotificationCenterPostNotification(center, CFSTR("x"), nullptr, nullptr, true);
            CFNotificationCenterRemoveEveryObserver(center, &mine);
        }
    };
    CFNotificationCenterAddObserver(
        center, &heard, hear, CFSTR("x"), nullptr, CFNotificationSuspensionBehaviorDrop);
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads)
        thread = std::thread(work);
    for (std::thread& thread : threads)
        thread.join();
    CFNotificationCenterRemoveEveryObserver(center, &heard);
    EXPECT_EQ(heard, 2000);
}

TEST_P(LocalCenterTest, ObjectsAreComparedByAddress)
{
    const Held<CFMutableStringRef> one = Mutable("same");
    const Held<CFMutableStringRef> two = Mutable("same");
    add(a, CFSTR("x"), one.get());
    EXPECT_EQ(post(CFSTR("x"), one.get()), "a:x ");
    EXPECT_EQ(post(CFSTR("x"), two.get()), "");
    EXPECT_EQ(post(CFSTR("x")), "");
    remove(a, nullptr, two.get());
    EXPECT_EQ(post(CFSTR("x"), one.get()), "a:x ");
}

TEST_P(DistributedCenterTest, ObjectsAreComparedByText)
{
    Held<CFMutableStringRef> one = Mutable("same");
    add(a, CFSTR("x"), one.get());
    one.reset();
    EXPECT_EQ(post(CFSTR("x"), Mutable("same").get()), "a:x ");
    EXPECT_EQ(post(CFSTR("x"), CFSTR("other")), "");
    EXPECT_EQ(post(CFSTR("x")), "");
    remove(a, CFSTR("x"), CFSTR("same"));
    EXPECT_EQ(post(CFSTR("x"), CFSTR("same")), "");
}
