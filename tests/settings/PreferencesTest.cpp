#include "settings/Preferences.h"

#include "tests/support/TestVolume.h"
#include "util/CFText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

class PreferencesTest : public ::testing::Test {
protected:
    PreferencesTest() { volume.makeInstaller("2.1"); }

    /// Stores a domain made of these XML entries and reads it into a new store.
    Preferences& stored(const std::string& entries)
    {
        TestVolume::write(
            volume.preferencesFile(), "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>");
        return *Preferences::init();
    }

    static double secondsOf(CFDateRef date) { return date != nullptr ? CFDateGetAbsoluteTime(date) : -1; }

    TestVolume volume;
};

struct NotificationCounter {
    int count = 0;
    const void* object = nullptr;
    bool storedFirst = false;
    const TestVolume* volume = nullptr;

    static void Notified(
        CFNotificationCenterRef, void* observer, CFStringRef, const void* object, CFDictionaryRef)
    {
        auto* const self = static_cast<NotificationCounter*>(observer);
        ++self->count;
        self->object = object;
        self->storedFirst = self->volume->preferences().count("Check For Updates") == 1;
    }
};

}

TEST_F(PreferencesTest, WithoutAStoredDomainTheDefaultsStand)
{
    const Preferences& preferences = *Preferences::init();
    EXPECT_EQ(&preferences, Preferences::preferencesPtr());
    EXPECT_TRUE(preferences.launchAtLogin());
    EXPECT_TRUE(preferences.collectUsageInfo());
    EXPECT_TRUE(preferences.checkForUpdates());
    EXPECT_TRUE(preferences.checkForUpdatesNow());
    EXPECT_EQ(preferences.lastDisplayedVersionOfEndUserLicense(), 0U);
    EXPECT_EQ(preferences.agentVersionAsNumVersionVariant(), 0U);
    EXPECT_EQ(preferences.agentVersionAsString(), nullptr);
    EXPECT_EQ(secondsOf(preferences.lastCheckForUpdatesTimestamp()), 0);
    EXPECT_EQ(preferences.updateLaterTimestamp(), nullptr);
    EXPECT_FALSE(fs::exists(volume.preferencesFile())) << "reading must not write";
}

TEST_F(PreferencesTest, StoredValuesAreReadWhateverTypeTheyHave)
{
    const Preferences& preferences
        = stored("<key>Agent Version</key><string>1.2b3</string>"
                 "<key>Launch At Login</key><integer>0</integer>"
                 "<key>Collect Usage Info</key><string>NO</string>"
                 "<key>Check For Updates</key><string> Yes</string>"
                 "<key>Last Check For Updates Timestamp</key><string>12.5</string>"
                 "<key>Last Displayed Version Of End User License</key><real>1.9</real>"
                 "<key>Update Later Timestamp</key><integer>77</integer>");
    EXPECT_EQ(preferences.agentVersionAsNumVersionVariant(), 0x01206003U);
    EXPECT_TRUE(CFEqual(preferences.agentVersionAsString(), CFSTR("1.2b3")));
    EXPECT_FALSE(preferences.launchAtLogin());
    EXPECT_FALSE(preferences.collectUsageInfo());
    EXPECT_TRUE(preferences.checkForUpdates());
    EXPECT_EQ(secondsOf(preferences.lastCheckForUpdatesTimestamp()), 12.5);
    EXPECT_EQ(preferences.lastDisplayedVersionOfEndUserLicense(), 1U);
    EXPECT_EQ(secondsOf(preferences.updateLaterTimestamp()), 77);
}

TEST_F(PreferencesTest, ValuesThatMeanNothingLeaveTheDefaults)
{
    for (const char* value :
        { "<data>AAAA</data>", "<array/>", "<dict/>", "<date>2020-01-01T00:00:00Z</date>" }) {
        std::string entries;
        for (const char* key : { "Agent Version", "Launch At Login", "Collect Usage Info",
                 "Check For Updates", "Last Check For Updates Timestamp",
                 "Last Displayed Version Of End User License", "Update Later Timestamp" })
            entries += "<key>" + std::string(key) + "</key>" + value;
        const Preferences& preferences = stored(entries);
        EXPECT_TRUE(
            preferences.launchAtLogin() && preferences.collectUsageInfo() && preferences.checkForUpdates());
        EXPECT_EQ(preferences.agentVersionAsNumVersionVariant(), 0U);
        EXPECT_NE(preferences.agentVersionAsString(), nullptr) << "kept as read";
        EXPECT_EQ(preferences.lastDisplayedVersionOfEndUserLicense(), 0U);
        EXPECT_EQ(secondsOf(preferences.lastCheckForUpdatesTimestamp()), 0);
        EXPECT_EQ(preferences.updateLaterTimestamp(), nullptr);
    }
    EXPECT_EQ(
        stored("<key>Agent Version</key><string>1.2\xC3\xA9</string>").agentVersionAsNumVersionVariant(), 0U);
    EXPECT_EQ(stored("<key>Last Displayed Version Of End User License</key><real>1e300</real>")
                  .lastDisplayedVersionOfEndUserLicense(),
        0U);
}

TEST_F(PreferencesTest, DamagedDomainsReadAsNoneAndAreKeptAside)
{
    const std::string damaged = "bplist00 and then nothing that helps";
    TestVolume::write(volume.preferencesFile(), damaged);
    Preferences& preferences = *Preferences::init();
    EXPECT_TRUE(preferences.launchAtLogin());
    preferences.setLaunchAtLogin(false);
    EXPECT_THAT(volume.preferences(), ElementsAre(Pair("Launch At Login", "false")));
    bool kept = false;
    for (const auto& entry : fs::directory_iterator(volume.preferencesFile().parent_path()))
        kept = kept || TestVolume::read(entry.path()) == damaged;
    EXPECT_TRUE(kept) << "what could not be read must not be lost";
}

TEST_F(PreferencesTest, OnlyValuesThatDifferFromTheDefaultAreStored)
{
    Preferences& preferences = *Preferences::init();
    preferences.setLaunchAtLogin(false);
    preferences.setCollectUsageInfo(false);
    preferences.setCheckForUpdates(false);
    EXPECT_THAT(volume.preferences(),
        UnorderedElementsAre(Pair("Launch At Login", "false"), Pair("Collect Usage Info", "false"),
            Pair("Check For Updates", "false")));
    preferences.setLaunchAtLogin(true);
    preferences.setCollectUsageInfo(true);
    EXPECT_THAT(volume.preferences(), ElementsAre(Pair("Check For Updates", "false")));
    EXPECT_FALSE(Preferences::init()->checkForUpdates());
}

TEST_F(PreferencesTest, AValueThatDoesNotChangeIsNotWritten)
{
    Preferences& preferences = *Preferences::init();
    preferences.setLaunchAtLogin(true);
    preferences.setCheckForUpdates(true);
    preferences.setLastDisplayedVersionOfEndUserLicense(0);
    preferences.setAgentVersion(nullptr);
    preferences.startCachingWrites();
    preferences.checkForCachedWrites();
    EXPECT_FALSE(fs::exists(volume.preferencesFile()));
}

TEST_F(PreferencesTest, ChangingUpdateChecksIsAnnouncedAfterTheWrite)
{
    NotificationCounter counter;
    counter.volume = &volume;
    CFNotificationCenterAddObserver(CFNotificationCenterGetLocalCenter(), &counter,
        NotificationCounter::Notified, CFSTR("Check For Updates Setting Changed"), nullptr,
        CFNotificationSuspensionBehaviorDeliverImmediately);
    Preferences& preferences = *Preferences::init();
    preferences.setCheckForUpdates(true);
    preferences.setLaunchAtLogin(false);
    EXPECT_EQ(counter.count, 0);
    preferences.setCheckForUpdates(false);
    EXPECT_EQ(counter.count, 1);
    EXPECT_EQ(counter.object, &preferences);
    EXPECT_TRUE(counter.storedFirst);
    CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetLocalCenter(), &counter);
}

TEST_F(PreferencesTest, AgentVersionIsAnsweredOnlyAfterTheNextRead)
{
    Preferences& preferences = *Preferences::init();
    preferences.setAgentVersion(CFSTR("3.4"));
    EXPECT_EQ(preferences.agentVersionAsNumVersionVariant(), 0U);
    EXPECT_EQ(preferences.agentVersionAsString(), nullptr);
    preferences.readUserPreferences();
    EXPECT_EQ(preferences.agentVersionAsNumVersionVariant(), 0x03408000U);
    preferences.setAgentVersion(CFSTR("nonsense"));
    preferences.readUserPreferences();
    EXPECT_EQ(preferences.agentVersionAsNumVersionVariant(), 0x03408000U)
        << "unreadable text leaves what was known";
}

TEST_F(PreferencesTest, CachedWritesReachTheDiskOnceAndTogether)
{
    Preferences& preferences = *Preferences::init();
    preferences.startCachingWrites();
    preferences.setLaunchAtLogin(false);
    preferences.setLastDisplayedVersionOfEndUserLicense(1);
    EXPECT_FALSE(fs::exists(volume.preferencesFile()));
    preferences.checkForCachedWrites();
    EXPECT_THAT(volume.preferences(),
        UnorderedElementsAre(
            Pair("Launch At Login", "false"), Pair("Last Displayed Version Of End User License", "1")));
    fs::remove(volume.preferencesFile());
    preferences.checkForCachedWrites();
    EXPECT_FALSE(fs::exists(volume.preferencesFile())) << "nothing was held back any more";
    preferences.setLaunchAtLogin(true);
    EXPECT_EQ(volume.preferences().size(), 1U) << "after caching, writes are immediate again";
}

TEST_F(PreferencesTest, RemovingEverythingKeepsUnknownKeysThePostponedUpdateAndWhatIsInMemory)
{
    Preferences& preferences = stored("<key>Somebody Else's</key><string>x</string>"
                                      "<key>Launch At Login</key><false/>");
    preferences.setUpdateLaterTimestamp();
    preferences.setAgentVersion(CFSTR("1.0"));
    preferences.checkForUpdatesComplete();
    preferences.setLastDisplayedVersionOfEndUserLicense(1);
    EXPECT_TRUE(Preferences::anySettingStored());
    preferences.removeAllPreferences();
    EXPECT_THAT(
        volume.preferences(), UnorderedElementsAre(Key("Somebody Else's"), Key("Update Later Timestamp")));
    EXPECT_FALSE(Preferences::anySettingStored());
    EXPECT_FALSE(preferences.launchAtLogin());
    EXPECT_EQ(preferences.lastDisplayedVersionOfEndUserLicense(), 1U);
}

TEST_F(PreferencesTest, TimesAreStoredInSecondsAndTheirDatesFollowTheirOwnRules)
{
    Preferences& preferences = *Preferences::init();
    const CFAbsoluteTime before = CFAbsoluteTimeGetCurrent();
    preferences.checkForUpdatesLater();
    EXPECT_EQ(secondsOf(preferences.lastCheckForUpdatesTimestamp()), 0) << "only the stored time changes";
    EXPECT_GE(secondsOf(Preferences::init()->lastCheckForUpdatesTimestamp()), before);

    Preferences& reread = *Preferences::preferencesPtr();
    reread.setLastCheckForUpdatesTimestamp();
    EXPECT_GE(secondsOf(reread.lastCheckForUpdatesTimestamp()), before);
    reread.setUpdateLaterTimestamp();
    EXPECT_GE(secondsOf(reread.updateLaterTimestamp()), before);
    EXPECT_EQ(volume.preferences().count("Update Later Timestamp"), 1U);
    reread.removeUpdateLaterTimestamp();
    EXPECT_EQ(reread.updateLaterTimestamp(), nullptr);
    EXPECT_EQ(volume.preferences().count("Update Later Timestamp"), 0U);
}

TEST_F(PreferencesTest, DefaultsForgetStoredKeysButKeepTheTextAndThePostponedUpdate)
{
    Preferences& preferences = stored("<key>Agent Version</key><string>1.2</string>"
                                      "<key>Update Later Timestamp</key><real>5</real>"
                                      "<key>Launch At Login</key><false/>");
    preferences.setPreferencesToDefaults();
    EXPECT_TRUE(preferences.launchAtLogin());
    EXPECT_EQ(preferences.agentVersionAsNumVersionVariant(), 0U);
    EXPECT_TRUE(CFEqual(preferences.agentVersionAsString(), CFSTR("1.2")));
    EXPECT_EQ(secondsOf(preferences.updateLaterTimestamp()), 5);
    EXPECT_EQ(volume.preferences().size(), 3U) << "nothing is written yet";
    preferences.writeUserPreferences();
    EXPECT_THAT(volume.preferences(), IsEmpty());
}

TEST_F(PreferencesTest, ADomainThatCouldNotBeReadIsAddedToRatherThanReplaced)
{
    // A folder where the file should be cannot be read, by root either.
    TestVolume::write(volume.preferencesFile() / "inside", "");
    Preferences& preferences = *Preferences::init();
    preferences.setCheckForUpdates(false);
    EXPECT_FALSE(Preferences::synchronize()) << "it waits for the disk to take it";
    fs::remove_all(volume.preferencesFile());
    TestVolume::write(volume.preferencesFile(),
        "<plist version=\"1.0\"><dict><key>Launch At Login</key><false/><key>Agent Version</key>"
        "<string>1.0</string></dict></plist>");
    preferences.setLastDisplayedVersionOfEndUserLicense(1);
    EXPECT_TRUE(Preferences::synchronize());
    EXPECT_THAT(volume.preferences(),
        UnorderedElementsAre(Pair("Launch At Login", "false"), Pair("Agent Version", "1.0"),
            Pair("Check For Updates", "false"), Pair("Last Displayed Version Of End User License", "1")));
    preferences.removeAllPreferences();
    EXPECT_THAT(volume.preferences(), IsEmpty()) << "what is removed goes, seen before or not";
}
