#include "app/AppController.h"

#include "tests/support/RecordingFrontEnd.h"
#include "tests/support/TestVolume.h"
#include "util/CFText.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

/// A controller that has pages of help.
class HelpfulController : public AppControllerBase {
public:
    static void init(FrontEnd& frontEnd)
    {
        registerShared(std::unique_ptr<ZEK_AppController>(new HelpfulController(frontEnd)));
    }
    std::optional<std::string> helpAnchorStringFromHelpHint(int32_t hint) const override
    {
        return hint == 7 ? std::optional<std::string>("seven") : std::nullopt;
    }

private:
    using AppControllerBase::AppControllerBase;
};

class ControllerBaseTest : public ::testing::Test {
protected:
    void setSystem(const std::string& version) const
    {
        TestVolume::write(volume.root() / "System/Library/CoreServices/SystemVersion.plist",
            "<plist version=\"1.0\"><dict><key>ProductVersion</key><string>" + version
                + "</string></dict></plist>");
    }

    TestVolume volume;
    RecordingFrontEnd frontEnd;
};

}

TEST_F(ControllerBaseTest, KnowsItsVersionFromTheBundle)
{
    volume.makeInstaller("2.1b3");
    umask(0);
    const AppController& controller = *AppController::init(frontEnd);
    EXPECT_EQ(controller.versionAsString(), "2.1b3");
    EXPECT_EQ(controller.versionAsNumVersionVariant(), 0x02106003U);
    EXPECT_EQ(controller.productNamePtr(), "ZEK Velmora Installer");
    EXPECT_EQ(AppController::appControllerPtr(), &controller);
    EXPECT_EQ(umask(022), 022U) << "files are made for their owner to write only";
    EXPECT_FALSE(controller.rememberWindowPostions());
}

TEST_F(ControllerBaseTest, ABundleWithoutAReadableVersionHasNone)
{
    TestVolume::writeBundle(volume.installer(), "", "1.0");
    EXPECT_EQ(AppController::init(frontEnd)->versionAsString(), std::nullopt);
    EXPECT_EQ(AppController::appControllerPtr()->versionAsNumVersionVariant(), 0U);
    TestVolume other;
    other.makeInstaller("one point two");
    EXPECT_EQ(AppController::init(frontEnd)->versionAsString(), "one point two");
    EXPECT_EQ(AppController::appControllerPtr()->versionAsNumVersionVariant(), 0U);
}

TEST_F(ControllerBaseTest, HelpOpensTheAnchorOrTheStartPage)
{
    HelpfulController::init(frontEnd);
    ZEK_AppController::appControllerPtr()->openHelpPageWithHelpHint(7);
    ZEK_AppController::appControllerPtr()->openHelpPageWithHelpHint(0);
    EXPECT_EQ(frontEnd.events[0], "help ZEK Velmora Help seven");
    EXPECT_EQ(frontEnd.events[1], "help ZEK Velmora Help (start)");
    EXPECT_EQ(AppController::appControllerPtr(), nullptr) << "the shared controller is of another kind";
}

TEST_F(ControllerBaseTest, DarkModeNeedsASystemThatHasIt)
{
    const ZEK_AppController& controller = *AppController::init(frontEnd);
    frontEnd.isDark = true;
    setSystem("10.14");
    EXPECT_TRUE(controller.isDarkMode());
    setSystem("10.13.6");
    EXPECT_FALSE(controller.isDarkMode());
    setSystem("12.0.1");
    EXPECT_TRUE(controller.isDarkMode());
    frontEnd.isDark = false;
    EXPECT_FALSE(controller.isDarkMode());
}

TEST_F(ControllerBaseTest, TheAgentsFolderIsRelativeToApplicationSupport)
{
    const AppControllerBase& controller = *AppController::init(frontEnd);
    const CFRef<CFURLRef> url = controller.velmoraApplicationSupportDirectoryURL();
    EXPECT_EQ(StdString(CFURLGetString(url.get())), "ZEK%20Velmora/");
    EXPECT_EQ(FileSystemPath(url.get()), volume.support().string());
    EXPECT_FALSE(std::filesystem::exists(volume.support()));
}
