#include "Support.h"

#include <CoreServices/CoreServices.h>
#include <Host/HostPath.h>

#include <array>

namespace fs = std::filesystem;

namespace {

constexpr ProcessSerialNumber kSystem { 0, 1 };

class AppleEventsTest : public testing::Test {
protected:
    AppleEventsTest() { setenv("ZEK_STARTUP_VOLUME", folder.path().c_str(), 1); }

    static OSStatus send(AEEventClass eventClass, AEEventID eventID, const ProcessSerialNumber& process)
    {
        AEDesc target {};
        AppleEvent event {};
        AppleEvent reply {};
        EXPECT_EQ(AECreateDesc(typeProcessSerialNumber, &process, sizeof(process), &target), noErr);
        EXPECT_EQ(AECreateAppleEvent(
                      eventClass, eventID, &target, kAutoGenerateReturnID, kAnyTransactionID, &event),
            noErr);
        const OSStatus status
            = AESendMessage(&event, &reply, kAENoReply | kAECanSwitchLayer, kAEDefaultTimeout);
        AEDisposeDesc(&target);
        AEDisposeDesc(&event);
        AEDisposeDesc(&reply);
        return status;
    }

    static OSStatus sendRestart() { return send(kCoreEventClass, kAERestart, kSystem); }

    TemporaryFolder folder;
};

} // namespace

TEST_F(AppleEventsTest, RestartIsRecordedOnTheVolume)
{
    ASSERT_EQ(sendRestart(), noErr);
    const std::string record = ReadText(folder / "private/var/db/RestartRequest.plist");
    EXPECT_NE(record.find("<integer>" + std::to_string(getpid()) + "</integer>"), std::string::npos)
        << record;
    EXPECT_NE(record.find("services_test</string>"), std::string::npos) << record;
    EXPECT_NE(record.find("<date>20"), std::string::npos) << record;
    WriteText(HostRestartRequestPath(), "of another program");
    EXPECT_EQ(sendRestart(), noErr);
    EXPECT_NE(ReadText(HostRestartRequestPath()), "of another program");
}

TEST_F(AppleEventsTest, RestartThatCannotBeRecordedFails)
{
    WriteText(folder / "private", "no folder");
    EXPECT_EQ(sendRestart(), ioErr);
    setenv("ZEK_STARTUP_VOLUME", (folder / "missing").c_str(), 1);
    EXPECT_EQ(sendRestart(), ioErr);
    EXPECT_FALSE(fs::exists(folder / "missing"));
    if (geteuid() != 0)
        return;
    fs::create_directory(folder / "missing");
    AsStranger([&] { EXPECT_EQ(sendRestart(), permErr); });
}

TEST_F(AppleEventsTest, OtherEventsAndTargetsAreNotMistakenForARestart)
{
    EXPECT_EQ(send(kCoreEventClass, kAERestart, { 0, 2 }), procNotFound);
    EXPECT_EQ(send(kCoreEventClass, kAERestart, { 1, 1 }), procNotFound);
    EXPECT_EQ(send(kCoreEventClass, 0x71756974, kSystem), errAEEventNotHandled);
    EXPECT_EQ(send(0x636F7265, kAERestart, kSystem), errAEEventNotHandled);

    AEDesc target {};
    AppleEvent event {};
    ASSERT_EQ(AECreateDesc(0x7369676E, &kSystem, sizeof(kSystem), &target), noErr);
    ASSERT_EQ(AECreateAppleEvent(kCoreEventClass, kAERestart, &target, -1, 0, &event), noErr);
    EXPECT_EQ(AESendMessage(&event, nullptr, kAENoReply, kAEDefaultTimeout), procNotFound);
    EXPECT_EQ(AESendMessage(&target, nullptr, kAENoReply, kAEDefaultTimeout), errAENotAppleEvent);
    EXPECT_EQ(AESendMessage(&event, nullptr, 3, kAEDefaultTimeout), paramErr) << "nowhere for the reply";
    AEDisposeDesc(&target);
    AEDisposeDesc(&event);
    EXPECT_EQ(EntryCount(folder.path()), 0U);
}

TEST_F(AppleEventsTest, DescriptorsCopyTheirDataAndAreDisposedOfOnce)
{
    AEDesc desc {};
    std::string text = "data";
    ASSERT_EQ(AECreateDesc(0x54455854, text.data(), 4, &desc), noErr);
    text = "lost";
    std::array<char, 8> buffer {};
    EXPECT_EQ(AEGetDescDataSize(&desc), 4);
    EXPECT_EQ(AEGetDescData(&desc, buffer.data(), 3), noErr);
    EXPECT_STREQ(buffer.data(), "dat");
    EXPECT_EQ(AEDisposeDesc(&desc), noErr);
    EXPECT_EQ(desc.descriptorType, typeNull);
    EXPECT_EQ(AEDisposeDesc(&desc), noErr);
    EXPECT_EQ(AEGetDescDataSize(&desc), 0);

    EXPECT_EQ(AECreateDesc(typeNull, nullptr, 1, &desc), paramErr);
    EXPECT_EQ(AECreateDesc(typeNull, text.data(), -1, &desc), paramErr);
    EXPECT_EQ(AECreateDesc(typeNull, text.data(), 4, nullptr), paramErr);
    ASSERT_EQ(AECreateDesc(typeProcessSerialNumber, text.data(), 4, &desc), noErr);
    AppleEvent event {};
    EXPECT_EQ(AECreateAppleEvent(kCoreEventClass, kAERestart, &desc, -1, 0, &event), paramErr) << "too short";
    EXPECT_EQ(AECreateAppleEvent(kCoreEventClass, kAERestart, nullptr, -1, 0, &event), paramErr);
    EXPECT_EQ(AESendMessage(nullptr, nullptr, kAENoReply, kAEDefaultTimeout), paramErr);
    EXPECT_EQ(AEDisposeDesc(nullptr), paramErr);
    AEDisposeDesc(&desc);
}
