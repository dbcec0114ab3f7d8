#include "tests/HostAppearance/Desktop.h"

#include <Host/Descriptor.h>
#include <Host/HostAppearance.h>

#include <filesystem>
#include <gmock/gmock.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

namespace {

using enum HostColorScheme;
using testing::ElementsAre;
using testing::IsEmpty;

long OpenDescriptors() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }

bool Readable(int descriptor, int milliseconds)
{
    pollfd watched { descriptor, POLLIN, 0 };
    return poll(&watched, 1, milliseconds) == 1;
}

/// An application on a desktop. Tests that leave a descriptor open fail.
class AppearanceTest : public testing::Test {
protected:
    AppearanceTest()
    {
        fFolder = mkdtemp(fFolder.data());
        unsetenv("XDG_RUNTIME_DIR");
    }
    ~AppearanceTest() override
    {
        fAppearance.reset();
        fPortal.reset();
        fBus.reset();
        EXPECT_EQ(OpenDescriptors(), fDescriptors);
        std::filesystem::remove_all(fFolder);
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    void startBus() { fBus.emplace(fFolder); }
    void startApplication()
    {
        fAppearance.emplace([this] {
            fSeen.push_back(fAppearance->colorScheme());
            if (fOnChange)
                std::exchange(fOnChange, nullptr)();
        });
        EXPECT_EQ(fAppearance->colorScheme(), unknown);
    }

    /// Runs the main loop, which goes by the descriptor alone. @return whether the condition came true within
    /// ten seconds.
    bool until(const std::function<bool()>& condition)
    {
        for (int turn = 0; turn < 1000 && !condition(); ++turn) {
            if (fPortal)
                fPortal->process();
            if (Readable(fAppearance->descriptor(), 10))
                fAppearance->process();
        }
        return condition();
    }
    bool untilSeen(HostColorScheme scheme)
    {
        return until([this, scheme] { return fAppearance->colorScheme() == scheme; });
    }
    bool untilAsked()
    {
        return until([this] { return fPortal->asked(); });
    }
    /// Lets everything that is on its way arrive, and shows that the main loop then sleeps.
    void settle()
    {
        int turn = 0;
        for (; turn < 1000 && Readable(fAppearance->descriptor(), 200); ++turn)
            fAppearance->process();
        EXPECT_LT(turn, 1000) << "the descriptor stays readable";
    }

    long fDescriptors = OpenDescriptors();
    std::string fFolder = "/tmp/appearance-test-XXXXXX";
    std::optional<SessionBus> fBus;
    std::optional<Portal> fPortal;
    std::optional<HostAppearance> fAppearance;
    std::vector<HostColorScheme> fSeen; ///< after each change
    std::function<void()> fOnChange; ///< called once
};

TEST_F(AppearanceTest, AsksThePortalWheneverItStartsAndKeepsTheAnswerWhenItEnds)
{
    startBus();
    startApplication();
    settle();
    const std::vector<HostColorScheme> meanings { noPreference, dark, light, noPreference };
    for (uint32_t value = 0; value < meanings.size(); ++value) {
        fPortal.emplace(Answer(value));
        EXPECT_TRUE(untilSeen(meanings[value]));
        fPortal.reset();
        settle();
    }
    EXPECT_EQ(fSeen, meanings);
}

TEST_F(AppearanceTest, TellsEveryChangeOnceAndNothingElse)
{
    startBus();
    fPortal.emplace(Answer(1));
    startApplication();
    ASSERT_TRUE(untilSeen(dark));
    fPortal->announce(Number(1));
    fPortal->announce(Number(0), "org.freedesktop.appearance", "contrast");
    fPortal->announce(Number(0), "org.example.interface");
    fPortal->announce(Number(2));
    fPortal->announce(Number(2));
    fPortal->announce(Number(1));
    fPortal->announce(Number(7)); // what a later desktop may offer
    EXPECT_TRUE(untilSeen(noPreference));
    EXPECT_THAT(fSeen, ElementsAre(dark, light, dark, noPreference));
}

TEST_F(AppearanceTest, HearsAPortalThatAnswersLate)
{
    startBus();
    fPortal.emplace(nullptr);
    startApplication();
    ASSERT_TRUE(untilAsked());
    fPortal->announce(Number(2));
    ASSERT_TRUE(untilSeen(light));
    fPortal->answer(Answer(1));
    EXPECT_TRUE(untilSeen(dark));
}

TEST_F(AppearanceTest, IgnoresValuesOfOtherTypes)
{
    const std::array<Value, 6> values {
        [](sd_bus_message* message) { return sd_bus_message_append(message, "v", "s", "dark"); },
        [](sd_bus_message* message) { return sd_bus_message_append(message, "v", "(u)", 2); },
        [](sd_bus_message* message) { return sd_bus_message_append(message, "v", "au", 1, 2); },
        [](sd_bus_message* message) { return sd_bus_message_append(message, "v", "v", "i", 2); },
        [](sd_bus_message* message) { return sd_bus_message_append(message, "u", 2); },
        [](sd_bus_message*) { return 0; },
    };
    startBus();
    startApplication();
    for (const Value& value : values) {
        fPortal.emplace(value);
        ASSERT_TRUE(untilAsked());
        fPortal->announce(value);
        settle();
        fPortal.reset();
    }
    fPortal.emplace(Answer(1));
    EXPECT_TRUE(untilSeen(dark));
    EXPECT_THAT(fSeen, ElementsAre(dark));
}

TEST_F(AppearanceTest, MayBeAskedToProcessWhileItTellsAChange)
{
    startBus();
    fPortal.emplace(Answer(1));
    startApplication();
    fOnChange = [this] {
        fPortal->announce(Number(2));
        EXPECT_TRUE(untilSeen(light));
    };
    EXPECT_TRUE(untilSeen(light));
    EXPECT_THAT(fSeen, ElementsAre(dark, light));
}

TEST_F(AppearanceTest, KeepsTheAnswerAndComesToRestWhenTheBusEnds)
{
    startBus();
    fPortal.emplace(Answer(1));
    startApplication();
    ASSERT_TRUE(untilSeen(dark));
    fBus.reset();
    settle();
    EXPECT_THAT(fSeen, ElementsAre(dark));
    EXPECT_EQ(fAppearance->colorScheme(), dark);
}

TEST_F(AppearanceTest, ExpectsNothingWhereTheEnvironmentNamesNoUsableBus)
{
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    startApplication();
    EXPECT_EQ(fAppearance->descriptor(), -1);
    fAppearance->process();
    // A client that takes any address would try the last three, and wait.
    for (const char* const address :
        { "", "nonsense", "unix:", "unix:path=/nowhere", "tcp:host=127.0.0.1,port=1",
            "unixexec:path=/bin/cat", "unix:path=/no;unixexec:path=/bin/cat" }) {
        setenv("DBUS_SESSION_BUS_ADDRESS", address, 1);
        startApplication();
        EXPECT_EQ(fAppearance->descriptor(), -1) << address;
    }
}

TEST_F(AppearanceTest, NeverWaitsForABusThatDoesNotAnswer)
{
    const std::string path = fFolder + "/mute";
    sockaddr_un name { AF_UNIX, {} };
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    const Descriptor mute(socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(bind(mute.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    ASSERT_EQ(listen(mute.get(), 1), 0);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);

    alarm(30); // ends the test program where something waits for the bus after all
    startApplication();
    settle();
    char first = 'x';
    EXPECT_EQ(read(Descriptor(accept(mute.get(), nullptr, nullptr)).get(), &first, 1), 1);
    EXPECT_EQ(first, '\0') << "the application did not introduce itself";
    settle(); // now that the bus has hung up
    EXPECT_THAT(fSeen, IsEmpty());

    startApplication();
    EXPECT_NE(fAppearance->descriptor(), -1);
    fAppearance.reset(); // with everything still to be sent
    alarm(0);
}

}
