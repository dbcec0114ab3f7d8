#include "install/RestartMac.h"

#include "tests/support/TestVolume.h"

#include <Host/HostPath.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

TEST(RestartMac, RecordsTheRequestOnAStartupVolumeThatIsAFolder)
{
    const TestVolume volume;
    EXPECT_EQ(RestartMac(), 0);
    EXPECT_NE(TestVolume::read(HostRestartRequestPath()).find("<key>Requested</key>"), std::string::npos);
}

TEST(RestartMac, ARequestThatCannotBeRecordedIsAnError)
{
    const TestVolume volume;
    fs::remove_all(volume.root() / "private");
    TestVolume::write(volume.root() / "private", "a file where the folder should be");
    EXPECT_NE(RestartMac(), 0);
}
