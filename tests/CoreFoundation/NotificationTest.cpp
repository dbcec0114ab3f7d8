#include "StoreTesting.h"

#include <atomic>
#include <functional>

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

} // namespace

INSTANTIATE_TEST_SUITE_P(Centers, NotificationTest,
    testing::Values(&CFNotificationCenterGetLocalCenter, &CFNotificationCenterGetDistributedCenter));

TEST_P(NotificationTest, CallsThoseInterestedInOrderOfRegistrationUntilTheyAreRemoved)
{
    add(b, CFSTR("x"));
    add(a, nullptr);
    add(a, CFSTR("y"));
    add(b, CFSTR("x")); // once more
    EXPECT_EQ(post(CFSTR("x")), "b:x a:x b:x ");
    EXPECT_EQ(post(CFSTR("y")), "a:y a:y ");
    EXPECT_EQ(post(CFSTR("z")), "a:z ");
    remove(a, CFSTR("y"));
    EXPECT_EQ(post(CFSTR("y")), "a:y ");
    remove(a, nullptr);
    EXPECT_EQ(post(CFSTR("y")), "");
    EXPECT_EQ(post(CFSTR("x")), "b:x b:x ");
}

TEST_P(NotificationTest, ObserversMayComeAndGoAndPostDuringDelivery)
{
    a.reaction = [this] {
        remove(a, nullptr);
        remove(b, nullptr);
        add(c, CFSTR("x"));
        CFNotificationCenterPostNotificationWithOptions(center, CFSTR("y"), nullptr, nullptr, 0);
    };
    add(a, CFSTR("x"));
    add(b, CFSTR("x"));
    add(c, CFSTR("y"));
    EXPECT_EQ(post(CFSTR("x")), "a:x c:y ");
    EXPECT_EQ(post(CFSTR("x")), "c:x ");
}

TEST_P(NotificationTest, HandsOnWhatWasPosted)
{
    using Seen = std::pair<const void*, CFDictionaryRef>;
    Seen seen;
    const auto hear = [](CFNotificationCenterRef, void* observer, CFNotificationName, const void* object,
                          CFDictionaryRef info) {
        *static_cast<Seen*>(observer) = { object, info };
    };
    CFNotificationCenterAddObserver(
        center, &seen, hear, nullptr, nullptr, CFNotificationSuspensionBehaviorDrop);
    const auto info = Dictionary();
    CFNotificationCenterPostNotification(center, CFSTR("x"), CFSTR("sender"), info.get(), false);
    CFNotificationCenterRemoveEveryObserver(center, &seen);
    EXPECT_EQ(seen, Seen(CFSTR("sender"), info.get()));
}

TEST_P(NotificationTest, ManyThreadsMayUseItAtOnce)
{
    std::atomic<int> heard = 0;
    const auto hear = [](CFNotificationCenterRef, void* observer, CFNotificationName, const void*,
                          CFDictionaryRef) { ++*static_cast<std::atomic<int>*>(observer); };
    CFNotificationCenterAddObserver(
        center, &heard, hear, CFSTR("x"), nullptr, CFNotificationSuspensionBehaviorDrop);
    InThreads([&](size_t mine) {
        for (int i = 0; i < 500; ++i) {
            CFNotificationCenterAddObserver(
                center, &mine, [](auto...) {}, nullptr, nullptr, CFNotificationSuspensionBehaviorDrop);
            CFNotificationCenterPostNotification(center, CFSTR("x"), nullptr, nullptr, true);
            CFNotificationCenterRemoveEveryObserver(center, &mine);
        }
    });
    CFNotificationCenterRemoveEveryObserver(center, &heard);
    EXPECT_EQ(heard, 2000);
}

TEST_P(NotificationTest, ComparesObjectsByAddressWithinAProcessAndByTextBetweenThem)
{
    const bool byText = center == CFNotificationCenterGetDistributedCenter();
    auto one = Mutable("same");
    const auto two = Mutable("same");
    add(a, CFSTR("x"), one.get());
    EXPECT_EQ(post(CFSTR("x"), one.get()), "a:x ");
    if (byText)
        one = Mutable("same"); // the text was copied
    EXPECT_EQ(post(CFSTR("x"), two.get()), byText ? "a:x " : "");
    EXPECT_EQ(post(CFSTR("x"), CFSTR("other")), "");
    EXPECT_EQ(post(CFSTR("x")), "");
    remove(a, nullptr, two.get());
    EXPECT_EQ(post(CFSTR("x"), one.get()), byText ? "" : "a:x ");
}
