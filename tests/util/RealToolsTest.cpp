#include "UtilityTest.h"

#include "util/DiagnosticsCapture.h"
#include "util/Files.h"
#include "util/Launch.h"
#include "util/Processes.h"

// The library with the tools that really stand behind it.

namespace {

class RealToolsTest : public UtilityTest {
protected:
    /// What Python answers to a question about the property list in the file.
    static std::string ask(const std::string& file, const std::string& question)
    {
        return OutputOfProgram("/usr/bin/python3",
            { "-c",
                "import plistlib, sys\nfound = plistlib.load(open(sys.argv[1], 'rb'))\nprint(" + question
                    + ")",
                file })
            .value_or("no property list");
    }
};

bool IsText(const std::string& bytes)
{
    return !bytes.empty() && bytes.find('\0') == std::string::npos && bytes.back() == '\n';
}

}

TEST_F(RealToolsTest, ADiagnosticsFolderCanBeRead)
{
    fVolume.installDriver("1.2.1");
    EXPECT_TRUE(CaptureIORegToFile("/private/tmp/registry")
        && CaptureKextStatToFile("/private/tmp/extensions") && CaptureDiskUtilToFile("/private/tmp/disks")
        && CaptureSleepPreferencesToFile("/private/tmp/sleep")
        && CaptureSystemProfilerToFile("/private/tmp/profile.plist"));
    for (const char* file : { "registry", "extensions", "sleep" })
        EXPECT_TRUE(IsText(TestVolume::read(path(file)))) << file;
    EXPECT_TRUE(TestVolume::read(path("registry")).starts_with("+-o Root  <class IORegistryEntry"));
    EXPECT_NE(
        TestVolume::read(path("extensions")).find("ZEKDockChargingSupport.kext (1.2.1)"), std::string::npos);
    EXPECT_EQ(ask(path("profile.plist"), "len(found), found[0]['_dataType'], found[18]['_dataType']"),
        "19 SPHardwareDataType SPDiagnosticsDataType\n");
}

TEST_F(RealToolsTest, ASignatureHoldsUntilOneByteIsChanged)
{
    TestVolume::write(path("Thing.app/Contents/Info.plist"),
        "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>Thing</string></dict></plist>");
    TestVolume::write(path("Thing.app/Contents/MacOS/Thing"), "program");
    TestVolume::write(path("Thing.app/Contents/Resources/data"), "resource");
    EXPECT_FALSE(CodeSignatureValid("/private/tmp/Thing.app")) << "not signed";
    ASSERT_TRUE(OutputOfProgram(SIGN_BUNDLE, { path("Thing.app") }));
    EXPECT_TRUE(CodeSignatureValid("/private/tmp/Thing.app"));
    TestVolume::write(path("Thing.app/Contents/Resources/data"), "resourcf");
    EXPECT_FALSE(CodeSignatureValid("/private/tmp/Thing.app"));
}

TEST_F(RealToolsTest, VolumesKeepTheirExtensionsAndOwners)
{
    fVolume.installDriver("1.2.1");
    EXPECT_TRUE(UpdateAppleBootPartitionsMKextCacheForVolume("/"));
    const std::string cache
        = "/System/Library/Caches/com.apple.kext.caches/Startup/IdentifiersAndVersions.plist";
    EXPECT_TRUE(TestVolume::isPropertyList(fVolume.root() / cache.substr(1)));
    EXPECT_GT(SetOwnershipAndPermissions("/private/tmp", false), 0);
    EXPECT_TRUE(FileOrDirectoryExists("/private/var/db/volinfo.database", nullptr, nullptr));
}
