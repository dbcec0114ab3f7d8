#include "Support.h"

#include <Host/ProgramStart.h>
#include <Security/Authorization.h>

#include <array>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr AuthorizationFlags kAsk
    = kAuthorizationFlagInteractionAllowed | kAuthorizationFlagExtendRights | kAuthorizationFlagPreAuthorize;

/// A reference and a tool that may be started, on a volume of root's.
class AuthorizationTest : public testing::Test {
protected:
    AuthorizationTest()
    {
        setenv("ZEK_STARTUP_VOLUME", folder.path().c_str(), 1);
        setenv("HOST_TOOLS_FOLDER", (folder / "tools").c_str(), 1);
        ownerAnswers(0);
        fs::create_directory(bin);
        fs::copy_file(LAUNCH_PROBE, tool);
        EXPECT_EQ(AuthorizationCreate(nullptr, nullptr, kAuthorizationFlagDefaults, &ref), 0);
    }
    ~AuthorizationTest() override { AuthorizationFree(ref, kAuthorizationFlagDestroyRights); }

    OSStatus ask(AuthorizationFlags flags = kAsk) const
    {
        AuthorizationItem item { kAuthorizationRightExecute, 0, nullptr, 0 };
        const AuthorizationRights rights { 1, &item };
        return AuthorizationCopyRights(ref, &rights, nullptr, flags, nullptr);
    }

    OSStatus start(const std::string& path, std::vector<std::string> arguments, FILE** stream = nullptr) const
    {
        return AuthorizationExecuteWithPrivileges(ref, path.c_str(), 0, PointersTo(arguments).data(), stream);
    }

    /// Lets the program that asks a volume's owner end like this, and note what it was told.
    void ownerAnswers(int status) const
    {
        const std::string agent = folder / "tools/SecurityAgent";
        WriteText(
            agent, "#!/bin/sh\necho \"$@\" >>" + (folder / "asked") + "\nexit " + std::to_string(status));
        fs::permissions(agent, fs::perms(0755));
    }

    /// @return how the tool was started, or "" when it was not.
    std::string report(const std::string& path, const std::vector<std::string>& arguments = {}) const
    {
        const std::string file = folder / "report";
        std::vector<std::string> all { "report", file };
        all.insert(all.end(), arguments.begin(), arguments.end());
        if (start(path, all) != errAuthorizationSuccess || !Eventually([&] { return fs::exists(file); }))
            return {};
        std::string text = ReadText(file);
        fs::remove(file);
        return text;
    }

    TemporaryFolder folder;
    const std::string bin = folder / "bin";
    const std::string tool = bin + "/tool";
    AuthorizationRef ref = nullptr;
};

class RootAuthorizationTest : public AuthorizationTest {
protected:
    void SetUp() override
    {
        if (geteuid() != 0)
            GTEST_SKIP() << "needs root";
    }
};

bool Has(const std::string& text, const std::string& line)
{
    return ('\n' + text).find('\n' + line + '\n') != std::string::npos;
}

} // namespace

TEST_F(AuthorizationTest, MalformedArgumentsAndReferencesThatAreGoneAreRecognised)
{
    AuthorizationItem nameless {};
    const AuthorizationRights noItems { 1, nullptr };
    const AuthorizationRights noName { 1, &nameless };
    for (const AuthorizationRights* bad :
        { &noItems, &noName, static_cast<const AuthorizationRights*>(nullptr) })
        EXPECT_EQ(AuthorizationCopyRights(ref, bad, nullptr, kAsk, nullptr), errAuthorizationInvalidSet);
    EXPECT_EQ(ask(1U << 20), errAuthorizationInvalidFlags);

    int elsewhere = 0;
    const AuthorizationRef bad[]
        = { ref, static_cast<AuthorizationRef>(nullptr), reinterpret_cast<AuthorizationRef>(&elsewhere) };
    EXPECT_EQ(AuthorizationFree(ref, kAuthorizationFlagDefaults), errAuthorizationSuccess);
    ASSERT_EQ(AuthorizationCreate(nullptr, nullptr, 0, &ref), errAuthorizationSuccess);
    const AuthorizationRef good = ref;
    for (const AuthorizationRef each : bad) {
        AuthorizationExternalForm form {};
        ref = each;
        EXPECT_EQ(ask(), errAuthorizationInvalidRef);
        EXPECT_EQ(start(tool, {}), errAuthorizationInvalidRef);
        EXPECT_EQ(AuthorizationMakeExternalForm(ref, &form), errAuthorizationInvalidRef);
        EXPECT_EQ(AuthorizationFree(ref, 0), errAuthorizationInvalidRef);
    }
    ref = good;
}

TEST_F(AuthorizationTest, ExternalFormSharesRightsUntilTheyAreDestroyed)
{
    AuthorizationExternalForm form {};
    AuthorizationRef second = nullptr;
    AuthorizationRef forged = nullptr;
    ASSERT_EQ(AuthorizationMakeExternalForm(ref, &form), errAuthorizationSuccess);
    ASSERT_EQ(AuthorizationCreateFromExternalForm(&form, &second), errAuthorizationSuccess);
    ++form.bytes[0];
    EXPECT_EQ(AuthorizationCreateFromExternalForm(&form, &forged), errAuthorizationInternalizeNotAllowed);
    --form.bytes[0];

    EXPECT_EQ(ask(kAuthorizationFlagDefaults), errAuthorizationDenied) << "nobody has asked for it yet";
    ASSERT_EQ(ask(), errAuthorizationSuccess) << "this test runs as root or as the volume's owner";
    std::swap(ref, second);
    EXPECT_EQ(ask(kAuthorizationFlagDefaults), errAuthorizationSuccess);
    EXPECT_EQ(AuthorizationFree(second, kAuthorizationFlagDestroyRights), errAuthorizationSuccess);
    EXPECT_EQ(ask(kAuthorizationFlagDefaults), errAuthorizationDenied);
    EXPECT_EQ(AuthorizationFree(ref, kAuthorizationFlagDefaults), errAuthorizationSuccess);
    EXPECT_EQ(AuthorizationCreateFromExternalForm(&form, &forged), errAuthorizationInternalizeNotAllowed);
}

TEST_F(AuthorizationTest, ToolGetsItsArgumentsAndLittleElse)
{
    setenv("LD_LIBRARY_PATH", "/tmp", 1);
    setenv("LC_ALL", "../../tmp/mine", 1);
    setenv("LC_TIME", "C", 1);
    const int leaked = dup(STDERR_FILENO);
    const std::string text = report(tool, { "two words", "", "line\nfeed", "\xff$HOME" });
    close(leaked);
    for (const char* variable : { "LD_LIBRARY_PATH", "LC_ALL", "LC_TIME" })
        unsetenv(variable);
    for (const std::string& part :
        { "name: " + tool, std::string("descriptors: 0 1 2"), std::string("empty input: 1"),
            "variable: ZEK_STARTUP_VOLUME=" + folder.path(), std::string("variable: LC_TIME=C"),
            std::string(
                "argument: <two words>\nargument: <>\nargument: <line\nfeed>\nargument: <\xff$HOME>") })
        EXPECT_TRUE(Has(text, part)) << part << " in " << text;
    EXPECT_FALSE(Has(text, "session: " + std::to_string(getsid(0)))) << text;
    EXPECT_EQ(text.find("LD_LIBRARY_PATH"), std::string::npos);
    EXPECT_EQ(text.find("LC_ALL"), std::string::npos);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
    InChild([&] {
        for (int i = 0; i <= STDERR_FILENO; ++i)
            close(i);
        EXPECT_TRUE(Has(report(tool), "descriptors: 0 1 2")) << "its files must not land there";
    });
}

TEST_F(AuthorizationTest, StreamReachesTheTool)
{
    FILE* stream = nullptr;
    ASSERT_EQ(start(tool, { "echo" }, &stream), errAuthorizationSuccess);
    std::array<char, 100> line {};
    EXPECT_GE(std::fputs("hello\n", stream), 0);
    EXPECT_EQ(std::fflush(stream), 0);
    EXPECT_STREQ(std::fgets(line.data(), line.size(), stream), "hello\n");
    (void)std::fclose(stream);
}

TEST_F(AuthorizationTest, WhatIsNoProgramIsNotStarted)
{
    WriteText(bin + "/text", "no program");
    fs::permissions(bin + "/text", fs::perms(0755));
    ASSERT_EQ(mkfifo((bin + "/fifo").c_str(), 0755), 0);
    FILE* stream = nullptr;
    for (const char* name : { "/text", "/fifo", "/missing", "", "/tool/below" })
        EXPECT_EQ(start(bin + name, {}, &stream), errAuthorizationToolExecuteFailure) << name;
    EXPECT_EQ(start("", {}), errAuthorizationToolExecuteFailure);
    EXPECT_EQ(stream, nullptr);
}

TEST_F(RootAuthorizationTest, RootBecomesTheToolsRealUser)
{
    InChild([&] {
        ASSERT_EQ(setresuid(kStranger, 0, 0), 0);
        const std::string text = report(tool);
        EXPECT_TRUE(Has(text, "user: 0 0")) << text;
        EXPECT_EQ(text.find("ZEK_STARTUP_VOLUME"), std::string::npos) << "the stranger's choice";
    });
}

TEST_F(RootAuthorizationTest, ToolsThatOthersCouldHaveChangedAreNotStarted)
{
    fs::create_symlink("bin/tool", folder / "link");
    EXPECT_NE(report(folder / "link"), "") << "the tool behind it is fine";
    const struct {
        std::string path;
        mode_t mode;
        uid_t owner;
    } faults[] = { { tool, 0775, 0 }, { tool, 0757, 0 }, { tool, 0755, kStranger }, { tool, 0644, 0 },
        { bin, 0775, 0 }, { bin, 0777, 0 }, { bin, 0755, kStranger }, { bin, 01777, kStranger } };
    for (const auto& fault : faults) {
        ASSERT_EQ(chown(fault.path.c_str(), fault.owner, 0), 0);
        ASSERT_EQ(chmod(fault.path.c_str(), fault.mode), 0);
        for (const std::string& path : { tool, folder / "link" })
            EXPECT_EQ(start(path, {}), errAuthorizationToolExecuteFailure)
                << fault.path << std::oct << fault.mode;
        ASSERT_EQ(chown(fault.path.c_str(), 0, 0), 0);
        ASSERT_EQ(chmod(fault.path.c_str(), 0755), 0);
    }
    fs::permissions(bin, fs::perms(01777));
    EXPECT_NE(report(tool), "") << "only its owner can replace it";
}

TEST_F(RootAuthorizationTest, StrangersAreRefusedExceptOnVolumesOfTheirOwn)
{
    AsStranger([&] {
        EXPECT_EQ(ask(), errAuthorizationDenied);
        EXPECT_EQ(start(tool, {}), errAuthorizationDenied);
    });
    ASSERT_EQ(chown(folder.path().c_str(), kStranger, kStranger), 0);
    ASSERT_EQ(chown(tool.c_str(), kStranger, kStranger), 0);
    AsStranger([&] {
        AuthorizationItem items[] { { kAuthorizationRightExecute, 0, nullptr, 0 },
            { "other.right", 0, nullptr, 0 } };
        const AuthorizationRights both { 2, items };
        AuthorizationRights* granted = nullptr;
        EXPECT_EQ(AuthorizationCopyRights(ref, &both, nullptr, kAsk, &granted), errAuthorizationDenied);
        EXPECT_EQ(ask(kAuthorizationFlagDefaults), errAuthorizationDenied) << "all or none";
        EXPECT_EQ(
            AuthorizationCopyRights(ref, &both, nullptr, kAsk | kAuthorizationFlagPartialRights, &granted),
            errAuthorizationSuccess);
        ASSERT_EQ(granted->count, 1U);
        EXPECT_STREQ(granted->items[0].name, kAuthorizationRightExecute);
        AuthorizationFreeItemSet(granted);
        EXPECT_TRUE(Has(report(tool), "user: 65534 65534"));
    });
}

TEST_F(RootAuthorizationTest, OwnersOfAVolumeAreAskedUntilTheyAgree)
{
    for (const std::string& path : { folder.path(), tool })
        ASSERT_EQ(chown(path.c_str(), kStranger, kStranger), 0);
    const struct {
        int exitStatus;
        OSStatus answer;
    } refusals[] = { { 1, errAuthorizationCanceled }, { 2, errAuthorizationInteractionNotAllowed },
        { 127, errAuthorizationInteractionNotAllowed } };
    for (const auto& refusal : refusals) {
        ownerAnswers(refusal.exitStatus);
        AsStranger([&] {
            EXPECT_EQ(ask(), refusal.answer);
            EXPECT_EQ(start(tool, {}), refusal.answer) << "which asks again, and starts nothing";
        });
    }
    fs::remove(folder / "tools/SecurityAgent");
    AsStranger([&] { EXPECT_EQ(ask(), errAuthorizationInteractionNotAllowed); });

    ownerAnswers(0);
    fs::remove(folder / "asked");
    AsStranger([&] {
        EXPECT_EQ(ask(kAuthorizationFlagExtendRights), errAuthorizationInteractionNotAllowed);
        EXPECT_EQ(ask(), errAuthorizationSuccess);
        EXPECT_EQ(ask(), errAuthorizationSuccess);
        EXPECT_NE(report(tool), "");
    });
    EXPECT_EQ(ReadText(folder / "asked"), "services_test\n") << "once, in this program's name";
}
