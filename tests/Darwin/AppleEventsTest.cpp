#include "Support.h"

#include <CoreServices/CoreServices.h>
#include <Host/HostPath.h>

namespace fs = std::filesystem;

namespace {

constexpr ProcessSerialNumber kSystem { 0, 1 };

class AppleEventsTest : public testing::Test {
protected:
    AppleEventsTest() { setenv("ZEK_STARTUP_VOLUME", folder.path().c_str(), 1); }

    static OSStatus send(AEEventClass eventClass = kCoreEventClass, AEEventID eventID = kAERestart,
        const ProcessSerialNumber& process = kSystem, DescType addressed = typeProcessSerialNumber)
    {
        AEDesc target {};
        AppleEvent event {};
        AppleEvent reply {};
        EXPECT_EQ(AECreateDesc(addressed, &process, sizeof(process), &target), noErr);
        EXPECT_EQ(AECreateAppleEvent(eventClass, eventID, &target, kAutoGenerateReturnID, 0, &event), noErr);
        EXPECT_EQ(AESendMessage(&target, &reply, kAENoReply, kAEDefaultTimeout), errAENotAppleEvent);
        EXPECT_EQ(AESendMessage(&event, nullptr, 3, kAEDefaultTimeout), paramErr) << "no place for a reply";
        const OSStatus status
            = AESendMessage(&event, &reply, kAENoReply | kAECanSwitchLayer, kAEDefaultTimeout);
        for (AEDesc* desc : { &target, &event, &reply })
            EXPECT_EQ(AEDisposeDesc(desc), noErr);
        return status;
    }

    TemporaryFolder folder;
};

} // namespace

TEST_F(AppleEventsTest, RestartIsRecordedOnTheVolume)
{
    ASSERT_EQ(send(), noErr);
    const std::string record = ReadText(folder / "private/var/db/RestartRequest.plist");
    for (const std::string& part : { "<integer>" + std::to_string(getpid()) + "</integer>",
             std::string("services_test</string>"), std::string("<date>20") })
        EXPECT_NE(record.find(part), std::string::npos) << part << " in " << record;
    WriteText(HostRestartRequestPath(), "of another program");
    EXPECT_EQ(send(), noErr);
    EXPECT_NE(ReadText(HostRestartRequestPath()), "of another program");
}

TEST_F(AppleEventsTest, RestartThatCannotBeRecordedFails)
{
    WriteText(folder / "private", "no folder");
    EXPECT_EQ(send(), ioErr);
    setenv("ZEK_STARTUP_VOLUME", (folder / "missing").c_str(), 1);
    EXPECT_EQ(send(), ioErr);
    EXPECT_FALSE(fs::exists(folder / "missing"));
    if (geteuid() != 0)
        return;
    fs::create_directory(folder / "missing");
    AsStranger([] { EXPECT_EQ(send(), permErr); });
}

TEST_F(AppleEventsTest, OtherEventsAndTargetsAreNotMistakenForARestart)
{
    EXPECT_EQ(send(kCoreEventClass, kAERestart, { 0, 2 }), procNotFound);
    EXPECT_EQ(send(kCoreEventClass, kAERestart, { 1, 1 }), procNotFound);
    EXPECT_EQ(send(kCoreEventClass, kAERestart, kSystem, 0x7369676E), procNotFound);
    EXPECT_EQ(send(kCoreEventClass, 0x71756974), errAEEventNotHandled);
    EXPECT_EQ(send(0x636F7265), errAEEventNotHandled);
    EXPECT_EQ(EntryCount(folder.path()), 0U);
}

TEST_F(AppleEventsTest, DescriptorsCopyTheirDataAndAreDisposedOfOnce)
{
    AEDesc desc {};
    AppleEvent event {};
    std::string text = "data";
    ASSERT_EQ(AECreateDesc(typeProcessSerialNumber, text.data(), 4, &desc), noErr);
    EXPECT_EQ(AECreateDesc(typeNull, text.data(), -1, &event), paramErr);
    text = "lost";
    EXPECT_EQ(AEGetDescData(&desc, text.data(), 3), noErr);
    EXPECT_EQ(text, "datt");
    EXPECT_EQ(AECreateAppleEvent(kCoreEventClass, kAERestart, &desc, -1, 0, &event), paramErr) << "too short";
    EXPECT_EQ(AEDisposeDesc(&desc), noErr);
    EXPECT_EQ(AEDisposeDesc(&desc), noErr);
}
