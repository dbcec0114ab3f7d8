#include "StoreTesting.h"

#include <array>
#include <csignal>
#include <thread>
#include <vector>

#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr const char* kFolder = "Library/Preferences/";

/// A home folder of its own, so that no domain in it was used before.
class PreferencesTest : public testing::Test {
protected:
    static void set(const char* key, CFPropertyListRef value, CFStringRef domain = CFSTR("org.example.App"))
    {
        CFPreferencesSetAppValue(Text(key).get(), value, domain);
    }
    static bool synchronize(CFStringRef domain = CFSTR("org.example.App"))
    {
        return CFPreferencesAppSynchronize(domain);
    }

    /// @return the value as a number, -1 where there is none.
    static CFIndex number(const char* key, CFStringRef domain = CFSTR("org.example.App"))
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

    /// @return what the file has, null when it is no property list.
    Held<CFPropertyListRef> stored() const
    {
        return Hold(
            CFPropertyListCreateWithData(nullptr, Data(home.read(file())).get(), 0, nullptr, nullptr));
    }
    /// @return the number of keys in the file, -1 when it is no dictionary.
    CFIndex storedCount() const
    {
        const Held<CFPropertyListRef> plist = stored();
        const bool isDictionary = plist && CFGetTypeID(plist.get()) == CFDictionaryGetTypeID();
        return isDictionary ? CFDictionaryGetCount(static_cast<CFDictionaryRef>(plist.get())) : -1;
    }

    TemporaryFolder home;
    Environment homeVariable { "CFFIXED_USER_HOME", home.path().c_str() };
};

} // namespace

TEST_F(PreferencesTest, ChangesAreSeenAtOnceAndWrittenWhenSynchronized)
{
    EXPECT_EQ(number("a"), -1);
    set("a", Integer(1).get());
    EXPECT_EQ(number("a"), 1);
    EXPECT_FALSE(home.has("Library"));
    EXPECT_TRUE(synchronize());
    EXPECT_TRUE(home.read(file()).starts_with("bplist00"));
    EXPECT_EQ(storedCount(), 1);
    set("a", nullptr);
    EXPECT_EQ(number("a"), -1);
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(storedCount(), 0);
}

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

TEST_F(PreferencesTest, NothingIsWrittenWhereNothingChanges)
{
    EXPECT_TRUE(synchronize());
    set("absent", nullptr);
    EXPECT_TRUE(synchronize());
    EXPECT_FALSE(home.has(file()));
    writeFile("a", 1);
    const std::string before = home.read(file());
    set("a", Integer(1).get());
    set("absent", nullptr);
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(home.read(file()), before);
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

TEST_F(PreferencesTest, WhatCannotBeReadIsLeftAloneAndTheChangesAreKept)
{
    home.write(file() + "/inside", "precious");
    set("a", Integer(1).get());
    EXPECT_FALSE(synchronize());
    EXPECT_FALSE(synchronize());
    EXPECT_EQ(home.read(file() + "/inside"), "precious");
    EXPECT_EQ(number("a"), 1);

    std::filesystem::remove_all(home.path(file()));
    ASSERT_EQ(mkfifo(home.path(file()).c_str(), 0600), 0);
    EXPECT_FALSE(synchronize());
    std::filesystem::remove(home.path(file()));

    std::filesystem::create_symlink("org.example.App.plist", home.path(file())); // to itself
    EXPECT_FALSE(synchronize());
    std::filesystem::remove(home.path(file()));

    home.write(file(), "");
    std::filesystem::resize_file(home.path(file()), (64U << 20) + 1);
    EXPECT_FALSE(synchronize());
    EXPECT_EQ(std::filesystem::file_size(home.path(file())), (64U << 20) + 1);
    std::filesystem::remove(home.path(file()));

    EXPECT_TRUE(synchronize());
    EXPECT_EQ(storedCount(), 1);
}

TEST_F(PreferencesTest, AFolderThatCannotBeMadeFailsUntilItCan)
{
    home.write("Library", "a file");
    set("a", Integer(1).get());
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

TEST_F(PreferencesTest, ConcurrentWritersLoseNothing)
{
    constexpr int processes = 4;
    constexpr int keys = 25;
    std::vector<pid_t> children;
    for (int process = 0; process < processes; ++process) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child > 0) {
            children.push_back(child);
            continue;
        }
        bool ok = true;
        for (int key = 0; key < keys; ++key) {
            set((std::to_string(process) + '-' + std::to_string(key)).c_str(), Integer(key).get());
            ok = synchronize() && ok;
        }
        _exit(ok ? 0 : 1);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    ASSERT_TRUE(stored());
    EXPECT_EQ(storedCount(), processes * keys);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.path(kFolder)), {}), 1);
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

TEST_F(PreferencesTest, OnlyTheCurrentUserOnAnyHostIsKept)
{
    const std::array<std::pair<CFStringRef, CFStringRef>, 3> others
        = { { { kCFPreferencesAnyUser, kCFPreferencesAnyHost },
            { kCFPreferencesCurrentUser, kCFPreferencesCurrentHost },
            { CFSTR("root"), kCFPreferencesAnyHost } } };
    for (const auto& [user, host] : others) {
        CFPreferencesSetValue(CFSTR("a"), kCFBooleanTrue, CFSTR("org.example.App"), user, host);
        EXPECT_FALSE(Hold(CFPreferencesCopyValue(CFSTR("a"), CFSTR("org.example.App"), user, host)));
        EXPECT_FALSE(Hold(CFPreferencesCopyKeyList(CFSTR("org.example.App"), user, host)));
        EXPECT_FALSE(CFPreferencesSynchronize(CFSTR("org.example.App"), user, host));
    }
}

TEST_F(PreferencesTest, ValuesThatCouldNotBeWrittenAreRefused)
{
    set("a", Integer(1).get());
    Held<CFMutableArrayRef> deep = Array();
    for (int i = 1; i < 512; ++i) {
        Held<CFMutableArrayRef> next = Array();
        CFArrayAppendValue(next.get(), deep.get());
        deep = std::move(next);
    }
    const Held<CFStringRef> withNull = Text(std::string_view("\0", 1));
    for (const CFTypeRef wrong : std::initializer_list<CFTypeRef> { kCFNull, deep.get(), withNull.get() })
        set("a", wrong);
    CFPreferencesSetAppValue(
        Text(std::string_view("k\0", 2)).get(), kCFBooleanTrue, CFSTR("org.example.App"));
    EXPECT_EQ(number("a"), 1);
    EXPECT_TRUE(synchronize());
    EXPECT_EQ(storedCount(), 1);
}

TEST_F(PreferencesTest, ValuesAreCopied)
{
    const Held<CFMutableArrayRef> list = Array();
    set("list", list.get());
    CFArrayAppendValue(list.get(), kCFBooleanTrue);
    const Held<CFPropertyListRef> kept
        = Hold(CFPreferencesCopyAppValue(CFSTR("list"), CFSTR("org.example.App")));
    ASSERT_TRUE(kept);
    EXPECT_EQ(CFArrayGetCount(static_cast<CFArrayRef>(kept.get())), 0);
}

TEST_F(PreferencesTest, SeveralKeysAreSetAndFetchedTogether)
{
    const Held<CFMutableDictionaryRef> values = Dictionary();
    const Held<CFMutableArrayRef> keys = Array();
    for (const char* key : { "a", "b", "c" })
        CFDictionarySetValue(values.get(), Text(key).get(), CFSTR("v"));
    for (const char* key : { "a", "gone", "old" })
        CFArrayAppendValue(keys.get(), Text(key).get());
    set("old", Integer(1).get());
    CFPreferencesSetMultiple(
        values.get(), keys.get(), CFSTR("org.example.App"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    const auto copy = [](CFArrayRef wanted) {
        return Hold(CFPreferencesCopyMultiple(
            wanted, CFSTR("org.example.App"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    };
    EXPECT_TRUE(CFEqual(copy(nullptr).get(), values.get()));
    EXPECT_EQ(CFDictionaryGetCount(copy(keys.get()).get()), 1);
    const Held<CFArrayRef> list = Hold(
        CFPreferencesCopyKeyList(CFSTR("org.example.App"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    EXPECT_EQ(CFArrayGetCount(list.get()), 3);
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

TEST_F(PreferencesTest, BooleansAndIntegersAreReadFromWhatStandsForThem)
{
    struct Case {
        Held<CFPropertyListRef> value;
        int boolean; ///< -1 for none
        CFIndex integer;
    };
    std::vector<Case> cases;
    const auto add = [&cases](CFPropertyListRef value, int boolean, CFIndex integer) {
        cases.push_back({ Hold(CFRetain(value)), boolean, integer });
    };
    add(kCFBooleanTrue, 1, 1);
    add(kCFBooleanFalse, 0, 0);
    add(Integer(0).get(), 0, 0);
    add(Integer(7).get(), 1, 7);
    add(Number(0.5).get(), 1, -1);
    add(CFSTR("YES"), 1, -1);
    add(CFSTR("false"), 0, -1);
    add(CFSTR("1"), 1, 1);
    add(CFSTR("12x"), -1, -1);
    add(CFSTR(""), -1, -1);
    add(Array().get(), -1, -1);
    for (const Case& test : cases) {
        set("v", test.value.get());
        Boolean isValid = true;
        const Boolean value = CFPreferencesGetAppBooleanValue(CFSTR("v"), CFSTR("org.example.App"), &isValid);
        EXPECT_EQ(isValid ? int { value } : -1, test.boolean) << Taken(CFCopyDescription(test.value.get()));
        EXPECT_EQ(number("v"), test.integer) << Taken(CFCopyDescription(test.value.get()));
    }
    EXPECT_FALSE(CFPreferencesGetAppBooleanValue(CFSTR("absent"), CFSTR("org.example.App"), nullptr));
}
