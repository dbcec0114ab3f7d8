#include "UtilityTest.h"

#include "util/DiagnosticsCapture.h"

namespace fs = std::filesystem;

namespace {

class CaptureTest : public UtilityTest { };

}

TEST_F(CaptureTest, EachToolIsAskedInItsWordsAndWritesIntoTheFile)
{
    for (const char* tool : { "/usr/sbin/ioreg", "/usr/sbin/kextstat", "/usr/sbin/diskutil", "/usr/bin/pmset",
             "/usr/sbin/system_profiler" })
        fVolume.recordTool(tool);
    const char* const out = "/private/tmp/out";
    EXPECT_TRUE(CaptureIORegToFile(out) && CaptureKextStatToFile(out) && CaptureDiskUtilToFile(out)
        && CaptureSleepPreferencesToFile(out) && CaptureSystemProfilerToFile(out));
    EXPECT_EQ(fVolume.calls(),
        "ioreg\n-l\n-x\n-w\n256\n\nkextstat\n\ndiskutil\nlist\n\npmset\n-g\n\nsystem_profiler\n-"
        "xml\nSPHardwareDataType\n"
        "SPPowerDataType\nSPMemoryDataType\nSPDisplaysDataType\nSPPCIDataType\nSPThunderboltDataType\nSPNVMeD"
        "ataType\n"
        "SPFireWireDataType\nSPFibreChannelDataType\nSPParallelSCSIDataType\nSPSASDataType\nSPSerialATADataTy"
        "pe\n"
        "SPUSBDataType\nSPStorageDataType\nSPSoftwareDataType\nSPExtensionsDataType\nSPApplicationsDataType\n"
        "SPLogsDataType\nSPDiagnosticsDataType\n\n");

    fs::remove(path("out"));
    TestVolume::write(path("out/in/the/way"), "");
    plant("/usr/bin/pmset", "echo settings");
    EXPECT_TRUE(CaptureSleepPreferencesToFile(out));
    EXPECT_EQ(TestVolume::read(path("out")), "settings\n");
    EXPECT_EQ(fs::status(path("out")).permissions(), fs::perms(0644));

    fs::remove(path("out"));
    EXPECT_EQ(inChild([&] {
        close(STDOUT_FILENO); // the file takes its number
        return CaptureSleepPreferencesToFile(out) && TestVolume::read(path("out")) == "settings\n" ? 1 : 0;
    }),
        1);
}

TEST_F(CaptureTest, AToolThatFailsOrIsKilledFailsButAMissingOneDoesNot)
{
    const char* const out = "/private/tmp/out";
    plant("/usr/bin/pmset", "echo part; exit 1");
    EXPECT_FALSE(CaptureSleepPreferencesToFile(out));
    EXPECT_EQ(TestVolume::read(path("out")), "part\n");
    plant("/usr/bin/pmset", "kill -9 $$");
    EXPECT_FALSE(CaptureSleepPreferencesToFile(out));
    spoil("/usr/bin/pmset");
    EXPECT_TRUE(CaptureSleepPreferencesToFile(out));
    EXPECT_TRUE(fs::exists(path("out")) && fs::file_size(path("out")) == 0);

    EXPECT_FALSE(
        CaptureSleepPreferencesToFile("/private/tmp/none/out") || CaptureSleepPreferencesToFile(nullptr));
    plant("/bin/rm", "exit 1");
    EXPECT_FALSE(CaptureSleepPreferencesToFile(out)) << "what is there cannot be removed";
}
