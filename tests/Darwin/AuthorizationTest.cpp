#include "Support.h"

#include <Security/Authorization.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
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
        std::vector<char*> list;
        list.reserve(arguments.size() + 1);
        for (std::string& argument : arguments)
            list.push_back(argument.data());
        list.push_back(nullptr);
        return AuthorizationExecuteWithPrivileges(ref, path.c_str(), 0, list.data(), stream);
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
    const AuthorizationRights none { 0, nullptr };
    EXPECT_EQ(AuthorizationCopyRights(ref, &noItems, nullptr, kAsk, nullptr), errAuthorizationInvalidSet);
    EXPECT_EQ(AuthorizationCopyRights(ref, &noName, nullptr, kAsk, nullptr), errAuthorizationInvalidSet);
    EXPECT_EQ(AuthorizationCopyRights(ref, &none, &noName, kAsk, nullptr), errAuthorizationInvalidSet);
    EXPECT_EQ(AuthorizationCopyRights(ref, nullptr, nullptr, kAsk, nullptr), errAuthorizationInvalidSet);
    EXPECT_EQ(AuthorizationCopyRights(ref, &none, nullptr, kAsk, nullptr), errAuthorizationSuccess);
    EXPECT_EQ(ask(1U << 20), errAuthorizationInvalidFlags);
    EXPECT_EQ(AuthorizationFree(ref, 1), errAuthorizationInvalidFlags);
    EXPECT_EQ(AuthorizationExecuteWithPrivileges(ref, tool.c_str(), 1, nullptr, nullptr),
        errAuthorizationInvalidFlags);

    const AuthorizationRef stale = ref;
    AuthorizationExternalForm form {};
    EXPECT_EQ(AuthorizationFree(ref, kAuthorizationFlagDefaults), errAuthorizationSuccess);
    ASSERT_EQ(AuthorizationCreate(nullptr, nullptr, 0, &ref), errAuthorizationSuccess);
    int elsewhere = 0;
    for (const AuthorizationRef bad :
        { stale, static_cast<AuthorizationRef>(nullptr), reinterpret_cast<AuthorizationRef>(&elsewhere) }) {
        EXPECT_EQ(AuthorizationCopyRights(bad, &none, nullptr, kAsk, nullptr), errAuthorizationInvalidRef);
        EXPECT_EQ(AuthorizationMakeExternalForm(bad, &form), errAuthorizationInvalidRef);
        EXPECT_EQ(AuthorizationExecuteWithPrivileges(bad, tool.c_str(), 0, nullptr, nullptr),
            errAuthorizationInvalidRef);
        EXPECT_EQ(AuthorizationFree(bad, 0), errAuthorizationInvalidRef);
    }
}

TEST_F(AuthorizationTest, ExternalFormSharesRightsUntilTheyAreDestroyed)
{
    AuthorizationExternalForm form {};
    AuthorizationRef second = nullptr;
    ASSERT_EQ(AuthorizationMakeExternalForm(ref, &form), errAuthorizationSuccess);
    ASSERT_EQ(AuthorizationCreateFromExternalForm(&form, &second), errAuthorizationSuccess);
    EXPECT_NE(second, ref);
    ++form.bytes[0];
    AuthorizationRef forged = nullptr;
    EXPECT_EQ(AuthorizationCreateFromExternalForm(&form, &forged), errAuthorizationInternalizeNotAllowed);
    --form.bytes[0];

    std::swap(ref, second);
    EXPECT_EQ(ask(kAuthorizationFlagDefaults), errAuthorizationDenied) << "nobody has asked for it yet";
    std::swap(ref, second);
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
    unsetenv("LD_LIBRARY_PATH");
    unsetenv("LC_ALL");
    unsetenv("LC_TIME");
    EXPECT_NE(
        text.find("argument: <two words>\nargument: <>\nargument: <line\nfeed>\nargument: <\xff$HOME>\n"),
        std::string::npos);
    EXPECT_TRUE(Has(text, "name: " + tool)) << text;
    EXPECT_TRUE(Has(text, "descriptors: 0 1 2")) << text;
    EXPECT_TRUE(Has(text, "empty input: 1")) << text;
    EXPECT_FALSE(Has(text, "session: " + std::to_string(getsid(0)))) << text;
    EXPECT_TRUE(Has(text, "variable: ZEK_STARTUP_VOLUME=" + folder.path())) << text;
    EXPECT_TRUE(Has(text, "variable: LC_TIME=C")) << text;
    EXPECT_EQ(text.find("LD_LIBRARY_PATH"), std::string::npos);
    EXPECT_EQ(text.find("LC_ALL"), std::string::npos);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(
        AuthorizationExecuteWithPrivileges(ref, tool.c_str(), 0, nullptr, nullptr), errAuthorizationSuccess);
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

TEST_F(AuthorizationTest, StandardDescriptorsThatAreClosedAreNotTakenByOthers)
{
    InChild([&] {
        for (int i = 0; i <= STDERR_FILENO; ++i)
            close(i);
        EXPECT_TRUE(Has(report(tool), "descriptors: 0 1 2"));
    });
}

TEST_F(AuthorizationTest, RootBecomesTheToolsRealUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    InChild([&] {
        ASSERT_EQ(setresuid(kStranger, 0, 0), 0);
        const std::string text = report(tool);
        EXPECT_TRUE(Has(text, "user: 0 0")) << text;
        EXPECT_EQ(text.find("ZEK_STARTUP_VOLUME"), std::string::npos) << "the stranger's choice";
    });
}

TEST_F(AuthorizationTest, ToolsThatOthersCouldHaveChangedAreNotStarted)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    fs::create_symlink("bin/tool", folder / "link");
    EXPECT_NE(report(folder / "link"), "") << "the tool behind it is fine";
    struct Fault {
        std::string path;
        mode_t mode;
        uid_t owner;
    };
    for (const Fault& fault :
        { Fault { tool, 0775, 0 }, { tool, 0757, 0 }, { tool, 0755, kStranger }, { tool, 0644, 0 },
            { bin, 0775, 0 }, { bin, 0777, 0 }, { bin, 0755, kStranger }, { bin, 01777, kStranger } }) {
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

TEST_F(AuthorizationTest, WhatIsNoProgramIsNotStarted)
{
    WriteText(bin + "/text", "no program");
    fs::permissions(bin + "/text", fs::perms(0755));
    ASSERT_EQ(mkfifo((bin + "/fifo").c_str(), 0755), 0);
    for (const char* name : { "/text", "/fifo", "/missing", "", "/tool/below" })
        EXPECT_EQ(start(bin + name, {}), errAuthorizationToolExecuteFailure) << name;
    EXPECT_EQ(start("", {}), errAuthorizationToolExecuteFailure);
    FILE* stream = nullptr;
    EXPECT_EQ(start(bin + "/text", {}, &stream), errAuthorizationToolExecuteFailure);
    EXPECT_EQ(stream, nullptr);
}

TEST_F(AuthorizationTest, StrangersAreRefusedExceptOnVolumesOfTheirOwn)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
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
