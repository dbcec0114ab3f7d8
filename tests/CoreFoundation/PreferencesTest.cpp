#include "StoreTesting.h"

#include <array>
#include <csignal>
#include <functional>
#include <vector>

#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr const char* kFolder = "Library/Preferences/";
const CFStringRef kDomain = CFSTR("org.example.App");

/// A home folder of its own, so that no domain in it was used before.
class PreferencesTest : public testing::Test {
protected:
    static void set(const char* key, CFPropertyListRef value, CFStringRef domain = kDomain)
    {
        CFPreferencesSetAppValue(Text(key).get(), value, domain);
    }
    static bool synchronize(CFStringRef domain = kDomain) { return CFPreferencesAppSynchronize(domain); }

    /// @return the value as a number, -1 where there is none.
    static CFIndex number(const char* key, CFStringRef domain = kDomain)
    {
        Boolean isValid = false;
        const CFIndex value = CFPreferencesGetAppIntegerValue(Text(key).get(), domain, &isValid);
        return isValid ? value : -1;
    }

    static std::string file(const std::string& domain = "org.example.App")
    {
        return kFolder + domain + ".plist";
    }

    /// Writes a dictionary with one number, as another process would have done.
    void writeFile(const char* key, SInt64 value) const
    {
        const Held<CFMutableDictionaryRef> values = Dictionary();
        CFDictionarySetValue(values.get(), Text(key).get(), Integer(value).get());
        const Held<CFDataRef> data = Hold(
            CFPropertyListCreateData(nullptr, values.get(), kCFPropertyListXMLFormat_v1_0, 0, nullptr));
        home.write(file(), Bytes(data.get()));
    }

    /// @return the number of keys in the file, -1 when it is no dictionary.
    CFIndex storedCount() const
    {
        const auto plist
            = Hold(CFPropertyListCreateWithData(nullptr, Data(home.read(file())).get(), 0, nullptr, nullptr));
        const bool isDictionary = plist && CFGetTypeID(plist.get()) == CFDictionaryGetTypeID();
        return isDictionary ? CFDictionaryGetCount(static_cast<CFDictionaryRef>(plist.get())) : -1;
    }

    TemporaryFolder home;
    Environment homeVariable { "CFFIXED_USER_HOME", home.path().c_str() };
};

} // namespace

TEST_F(PreferencesTest, SynchronizingShowsWhatOtherProcessesWrote)
{
    writeFile("theirs", 1);
    EXPECT_EQ(number("theirs"), 1);
    writeFile("theirs", 2);
    EXPECT_EQ(number("theirs"), 1);
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(number("theirs"), 2);
    set("mine", Integer(3).get());
    writeFile("theirs", 4);
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(number("theirs"), 4);
    EXPECT_EQ(number("mine"), 3);
    EXPECT_EQ(storedCount(), 2);
}

TEST_F(PreferencesTest, DamagedFilesAreMovedAsideBeforeTheNextWrite)
{
    const std::vector<std::string> damaged
        = { "garbage", "", "<plist><array/></plist>", "bplist00", "<plist><dict>" };
    for (const std::string& bytes : damaged) {
        home.write(file(), bytes);
        EXPECT_TRUE(synchronize());
        EXPECT_EQ(number("a"), -1);
        EXPECT_EQ(home.read(file()), bytes);
        set("a", Integer(1).get());
        EXPECT_TRUE(synchronize());
        EXPECT_EQ(storedCount(), 1);
    }
    EXPECT_EQ(home.read(file() + ".damaged"), damaged[0]);
    for (size_t i = 1; i < damaged.size(); ++i)
        EXPECT_EQ(home.read(file() + ".damaged-" + std::to_string(i + 1)), damaged[i]);
}

TEST_F(PreferencesTest, AFullDiskLeavesTheFileWholeAndTheChangesHeld)
{
    writeFile("theirs", 1);
    const std::string before = home.read(file());
    set("mine", Integer(2).get());
    rlimit old {};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit none { 0, old.rlim_max };
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &none);
    const bool wasWritten = synchronize();
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(wasWritten);
    EXPECT_EQ(home.read(file()), before);
    EXPECT_EQ(number("mine"), 2);
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(storedCount(), 2);
}

TEST_F(PreferencesTest, WaitsForTheOtherWriterButNotForever)
{
    std::filesystem::create_directories(home.path(kFolder));
    const int folder = open(home.path(kFolder).c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    set("a", Integer(1).get());
    EXPECT_FALSE(synchronize());
    EXPECT_FALSE(home.has(file()));
    std::thread other([folder] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        close(folder);
    });
    EXPECT_TRUE(synchronize());
    other.join();
    EXPECT_EQ(storedCount(), 1);
}

TEST_F(PreferencesTest, NamesThatLeaveTheFolderHaveNoDomain)
{
    using namespace std::string_view_literals;
    for (const std::string_view name : { ""sv, "../escape"sv, "a/b"sv, ".."sv, "a..b"sv, "a\0b"sv }) {
        const Held<CFStringRef> domain = Text(name);
        set("a", Integer(1).get(), domain.get());
        EXPECT_EQ(number("a", domain.get()), -1) << name;
        EXPECT_FALSE(synchronize(domain.get())) << name;
    }
    EXPECT_FALSE(home.has("Library"));
}

TEST_F(PreferencesTest, TheCurrentApplicationIsTheMainBundlesAndAnyApplicationStandsBehindIt)
{
    home.write("App.app/Contents/Info.plist",
        "<plist><dict><key>CFBundleIdentifier</key><string>org.example.Main</string></dict></plist>");
    const Environment process("CFProcessPath", home.path("App.app/Contents/MacOS/App").c_str());
    set("own", Integer(1).get(), kCFPreferencesCurrentApplication);
    set("both", Integer(2).get(), kCFPreferencesCurrentApplication);
    set("both", Integer(3).get(), kCFPreferencesAnyApplication);
    set("general", Integer(4).get(), kCFPreferencesAnyApplication);
    EXPECT_TRUE(synchronize(kCFPreferencesCurrentApplication));
    EXPECT_TRUE(synchronize(kCFPreferencesAnyApplication));
    EXPECT_TRUE(home.has(file("org.example.Main")));
    EXPECT_TRUE(home.has(file(".GlobalPreferences")));
    EXPECT_EQ(number("both", CFSTR("org.example.Main")), 2);
    EXPECT_EQ(number("general", CFSTR("org.example.Main")), 4);
    EXPECT_EQ(number("own", kCFPreferencesAnyApplication), -1);

    home.write("bare/tool", "");
    const Environment tool("CFProcessPath", home.path("bare/tool").c_str());
    set("a", Integer(1).get(), kCFPreferencesCurrentApplication);
    EXPECT_TRUE(synchronize(kCFPreferencesCurrentApplication));
    EXPECT_TRUE(home.has(file("tool")));
}

TEST_F(PreferencesTest, ChangesAreSeenAtOnceAndWrittenWhenSynchronized)
{
    set("absent", nullptr);
    EXPECT_TRUE(synchronize());
    set("a", Integer(1).get());
    EXPECT_EQ(number("a"), 1);
    EXPECT_FALSE(home.has(file()));
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(storedCount(), 1);
    writeFile("a", 1);
    const std::string before = home.read(file());
    set("a", Integer(1).get());
    set("absent", nullptr);
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(home.read(file()), before) << "nothing is written where nothing changes";
    set("a", nullptr);
    EXPECT_EQ(number("a"), -1);
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(home.has(file())) << "what holds nothing is no file";
}

TEST_F(PreferencesTest, WhatCannotBeReadIsLeftAloneAndTheChangesAreKept)
{
    const std::string path = home.path(file());
    constexpr uintmax_t tooBig = (64U << 20) + 1;
    std::filesystem::create_directories(home.path(kFolder));
    const std::array<std::function<void()>, 4> faults
        = { [&] { home.write(file() + "/inside", "precious"); }, [&] { mkfifo(path.c_str(), 0600); },
              [&] { std::filesystem::create_symlink("org.example.App.plist", path); },
              [&] {
                  home.write(file(), "");
                  std::filesystem::resize_file(path, tooBig);
              } };
    set("a", Integer(1).get());
    for (const auto& make : faults) {
        make();
        const auto type = std::filesystem::symlink_status(path).type();
        EXPECT_FALSE(synchronize());
        EXPECT_EQ(std::filesystem::symlink_status(path).type(), type);
        EXPECT_TRUE(type != std::filesystem::file_type::directory || home.has(file() + "/inside"));
        EXPECT_TRUE(
            type != std::filesystem::file_type::regular || std::filesystem::file_size(path) == tooBig);
        EXPECT_EQ(number("a"), 1);
        std::filesystem::remove_all(path);
    }
    std::filesystem::remove_all(home.path("Library"));
    home.write("Library", "a file");
    EXPECT_FALSE(synchronize());
    EXPECT_EQ(home.read("Library"), "a file");
    std::filesystem::remove(home.path("Library"));
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(storedCount(), 1);
    const Environment nowhere("CFFIXED_USER_HOME", home.path("no/such/home").c_str());
    set("a", Integer(1).get());
    EXPECT_FALSE(synchronize());
    EXPECT_FALSE(home.has("no"));
}

TEST_F(PreferencesTest, ConcurrentWritersLoseNothing)
{
    std::array<pid_t, 4> children {};
    for (pid_t& child : children) {
        child = fork();
        ASSERT_GE(child, 0);
        if (child > 0)
            continue;
        bool ok = true;
        for (int key = 0; key < 25; ++key) {
            set((std::to_string(getpid()) + '-' + std::to_string(key)).c_str(), Integer(key).get());
            ok = synchronize() && ok;
        }
        _exit(ok ? 0 : 1);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(storedCount(), 100);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.path(kFolder)), {}), 1);
}

TEST_F(PreferencesTest, ValuesAreCopiedAndRefusedWhenTheyCouldNotBeWritten)
{
    const auto list = Array(), deep = NestedArrays(512);
    set("a", list.get());
    const auto withNull = Text(std::string_view("\0", 1));
    for (const CFTypeRef wrong : std::initializer_list<CFTypeRef> { kCFNull, deep.get(), withNull.get() })
        set("a", wrong);
    CFPreferencesSetAppValue(withNull.get(), kCFBooleanTrue, kDomain);
    CFArrayAppendValue(list.get(), kCFBooleanTrue);
    const auto kept = Hold(CFPreferencesCopyAppValue(CFSTR("a"), kDomain));
    EXPECT_TRUE(kept && CFEqual(kept.get(), Array().get()));
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(storedCount(), 1);
}

TEST_F(PreferencesTest, SeveralKeysAreSetAndFetchedTogetherForTheCurrentUserOnAnyHost)
{
    const auto values = Dictionary();
    for (const char* key : { "a", "b", "c" })
        CFDictionarySetValue(values.get(), Text(key).get(), CFSTR("v"));
    const auto keys = Array({ "a", "gone", "old" });
    set("old", Integer(1).get());
    const auto setIn = [&](CFStringRef user, CFStringRef host) {
        CFPreferencesSetMultiple(values.get(), keys.get(), kDomain, user, host);
        return Hold(CFPreferencesCopyKeyList(kDomain, user, host));
    };
    EXPECT_FALSE(setIn(kCFPreferencesAnyUser, kCFPreferencesAnyHost));
    EXPECT_FALSE(setIn(kCFPreferencesCurrentUser, kCFPreferencesCurrentHost));
    EXPECT_FALSE(setIn(CFSTR("root"), kCFPreferencesAnyHost));
    EXPECT_FALSE(CFPreferencesSynchronize(kDomain, kCFPreferencesAnyUser, kCFPreferencesAnyHost));
    EXPECT_EQ(number("old"), 1);
    EXPECT_EQ(CFArrayGetCount(setIn(kCFPreferencesCurrentUser, kCFPreferencesAnyHost).get()), 3);
    const auto copy = [](CFArrayRef wanted) {
        return Hold(
            CFPreferencesCopyMultiple(wanted, kDomain, kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    };
    EXPECT_TRUE(CFEqual(copy(nullptr).get(), values.get()));
    EXPECT_EQ(CFDictionaryGetCount(copy(keys.get()).get()), 1);
}

TEST_F(PreferencesTest, BooleansAndIntegersAreReadFromWhatStandsForThem)
{
    const auto zero = Integer(0), seven = Integer(7);
    const auto half = Number(0.5);
    const auto list = Array();
    const struct {
        CFPropertyListRef value;
        int boolean; ///< -1 for none
        CFIndex integer;
    } cases[] = { { kCFBooleanTrue, 1, 1 }, { kCFBooleanFalse, 0, 0 }, { zero.get(), 0, 0 },
        { seven.get(), 1, 7 }, { half.get(), 1, -1 }, { CFSTR("YES"), 1, -1 }, { CFSTR("false"), 0, -1 },
        { CFSTR("1"), 1, 1 }, { CFSTR("12x"), -1, -1 }, { CFSTR(""), -1, -1 }, { list.get(), -1, -1 } };
    for (const auto& [value, boolean, integer] : cases) {
        set("v", value);
        Boolean isValid = true;
        const Boolean read = CFPreferencesGetAppBooleanValue(CFSTR("v"), kDomain, &isValid);
        EXPECT_EQ(isValid ? int { read } : -1, boolean) << Taken(CFCopyDescription(value));
        EXPECT_EQ(number("v"), integer) << Taken(CFCopyDescription(value));
    }
    EXPECT_FALSE(CFPreferencesGetAppBooleanValue(CFSTR("absent"), kDomain, nullptr));
}
