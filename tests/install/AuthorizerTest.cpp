#include "install/Authorizer.h"

#include "tests/support/TestVolume.h"

#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class AuthorizerTest : public ::testing::Test {
protected:
    AuthorizerTest() { volume.makeInstaller("1.0").recordDriverTool(); }

    /// Nothing was started so far: a call that is allowed is the first that the tool sees.
    void expectOnlyCall()
    {
        fs::permissions(volume.resources(), fs::perms(0755));
        ASSERT_EQ(authorizer->setToolName("driverinstall"), noErr);
        ASSERT_EQ(authorizer->runToolWithArguments({ "allowed" }), noErr);
        EXPECT_EQ(volume.callsOnce("allowed\n\n"), "allowed\n\n");
    }

    TestVolume volume;
    std::unique_ptr<Authorizer> authorizer = Authorizer::init();
};

}

TEST_F(AuthorizerTest, StartsTheToolWithExactlyTheseArguments)
{
    ASSERT_NE(authorizer, nullptr);
    ASSERT_EQ(authorizer->setToolName("driverinstall"), noErr);
    EXPECT_EQ(authorizer->toolPathname(), (volume.resources() / "driverinstall").string());
    EXPECT_EQ(authorizer->runToolWithArguments({ "two words", "\xC3\xA9\"'$HOME", "-x" }), noErr);
    const std::string first = "two words\n\xC3\xA9\"'$HOME\n-x\n\n";
    EXPECT_EQ(volume.callsOnce(first), first);
    EXPECT_EQ(authorizer->runToolWithArguments({}), noErr);
    EXPECT_EQ(volume.callsOnce(first + "\n"), first + "\n") << "no arguments at all";
}

TEST_F(AuthorizerTest, ArgumentsThatCannotBePassedAreRefusedBeforeAnybodyIsAsked)
{
    ASSERT_EQ(authorizer->setToolName("driverinstall"), noErr);
    EXPECT_EQ(authorizer->runToolWithArguments({ "a", "", "b" }), paramErr);
    EXPECT_EQ(authorizer->runToolWithArguments({ std::string("a\0b", 3) }), paramErr);
    EXPECT_EQ(authorizer->runToolWithArguments({ "\xFF\xFE" }), paramErr);
    if (geteuid() == 0) {
        EXPECT_EQ(AsStranger([this] {
            return Authorizer::init()->runToolWithArguments({ "" }) == paramErr
                    && authorizer->runToolWithArguments({ "" }) == paramErr
                ? 0
                : 1;
        }),
            0);
    }
    expectOnlyCall();
}

TEST_F(AuthorizerTest, ToolNamesThatLeadNowhereLeaveTheToolBefore)
{
    ASSERT_EQ(authorizer->setToolName("driverinstall"), noErr);
    const std::string before = authorizer->toolPathname();
    EXPECT_EQ(authorizer->setToolName(""), fnfErr);
    EXPECT_EQ(authorizer->setToolName(std::string("driver\0install", 14)), fnfErr);
    authorizer->setToolPathname("");
    EXPECT_EQ(authorizer->toolPathname(), before);
    authorizer->setToolPathname("/elsewhere/tool");
    EXPECT_EQ(authorizer->toolPathname(), "/elsewhere/tool");
    EXPECT_NE(authorizer->runToolWithArguments({ "x" }), noErr) << "there is no such tool";
}

TEST_F(AuthorizerTest, RefusedRightsStartNothing)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become somebody else";
    EXPECT_EQ(AsStranger([] {
        const auto refused = Authorizer::init();
        AuthorizationExternalForm form;
        if (refused->setToolName("driverinstall") != noErr || refused->authorize()
            || refused->getAuthorizationExternalForm(&form))
            return 1;
        return refused->runToolWithArguments({ "x" }) == errAuthorizationCanceled ? 0 : 2;
    }),
        0);
    expectOnlyCall();
}

TEST_F(AuthorizerTest, AToolThatOthersCanWriteIsNeverRun)
{
    ASSERT_EQ(authorizer->setToolName("driverinstall"), noErr);
    fs::permissions(volume.resources() / "driverinstall", fs::perms(0757));
    EXPECT_EQ(authorizer->runToolWithArguments({ "x" }), errAuthorizationToolExecuteFailure);
    fs::permissions(volume.resources() / "driverinstall", fs::perms(0755));
    fs::permissions(volume.resources(), fs::perms(0777));
    EXPECT_EQ(authorizer->runToolWithArguments({ "x" }), errAuthorizationToolExecuteFailure);
    expectOnlyCall();
}

TEST_F(AuthorizerTest, GrantedRightsHaveAnExternalForm)
{
    AuthorizationExternalForm form;
    ASSERT_EQ(authorizer->setToolName("driverinstall"), noErr);
    EXPECT_TRUE(authorizer->getAuthorizationExternalForm(&form));
    AuthorizationRef again = nullptr;
    EXPECT_EQ(AuthorizationCreateFromExternalForm(&form, &again), errAuthorizationSuccess);
    AuthorizationItem right { kAuthorizationRightExecute, 0, nullptr, 0 };
    const AuthorizationRights rights { 1, &right };
    EXPECT_EQ(AuthorizationCopyRights(again, &rights, nullptr, kAuthorizationFlagDefaults, nullptr),
        errAuthorizationSuccess);
    authorizer.reset();
    EXPECT_NE(AuthorizationCopyRights(again, &rights, nullptr, kAuthorizationFlagDefaults, nullptr),
        errAuthorizationSuccess)
        << "the rights end with the object";
    AuthorizationFree(again, kAuthorizationFlagDefaults);
}
