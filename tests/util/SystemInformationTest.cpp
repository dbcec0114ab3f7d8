#include "util/SystemInformation.h"
#include "tests/util/RecordedMac.h"
#include "tests/util/UtilityTest.h"
#include "util/CFText.h"

#include <CoreServices/CoreServices.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <cstring>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

class SystemInformationTest : public UtilityTest, protected MacRecorder {
protected:
    static std::string taken(CFStringRef text)
    {
        const CFRef<CFStringRef> owned(text);
        return text != nullptr ? StdString(text) : "none";
    }
    static std::string serialNumber() { return taken(CreateHWSerialNumberString()); }
    static std::string model() { return taken(CreateMacTypeString()); }

    /// The first bytes of the primary address, in a buffer of eight that held something else.
    static std::string address(size_t size, bool answer = true)
    {
        char bytes[] = "********";
        EXPECT_EQ(GetPrimaryMAC_Address(bytes, size), answer);
        for (char& byte : bytes)
            byte = byte == 0 ? '-' : byte;
        return { bytes, sizeof bytes - 1 };
    }
};

Level Interface(const std::string& properties, unsigned depth = 0)
{
    return { "IOEthernetInterface", { properties }, depth };
}

TEST_F(SystemInformationTest, TheComputerTellsItsSerialNumberAndModel)
{
    record({ { "IOPlatformExpertDevice",
        { R"("IOPlatformSerialNumber" = "C02XYZ")", R"("model" = <4d6163426f6f6b8a>)" } } });
    EXPECT_EQ(serialNumber(), "C02XYZ");
    EXPECT_EQ(model(), "MacBookä");
    record(
        { { "IOPlatformExpertDevice", { R"("IOPlatformSerialNumber" = <433032>)", R"("model" = "Mac")" } } });
    EXPECT_EQ(serialNumber() + model(), "nonenone") << "other types";
    use(iokit::Registry());
    EXPECT_EQ(serialNumber() + model(), "nonenone");
}

TEST_F(SystemInformationTest, TheSystemTellsNamesAndSizes)
{
    EXPECT_EQ(taken(CreateMacNameString()), taken(SCDynamicStoreCopyComputerName(nullptr, nullptr)));
    EXPECT_EQ(taken(CreateLocalHostNameString()), taken(SCDynamicStoreCopyLocalHostName(nullptr)));
    EXPECT_EQ(taken(CreateUsernameString()), taken(CSCopyUserName(false)));
    utsname kernel {};
    ASSERT_EQ(uname(&kernel), 0);
    const bool isIntel = std::strcmp(kernel.machine, "x86_64") == 0;
    EXPECT_EQ(KernelISA(), isIntel ? kIntel64InstructionSet : kUnknownInstructionSet);
    const auto pages = static_cast<uint64_t>(sysconf(_SC_PHYS_PAGES));
    EXPECT_EQ(BytesOfRAM(), pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE)));
    // The C library asks the processor itself, and does not know every one.
    const auto expectSize = [](int32_t size, int name) {
        const long told = sysconf(name);
        EXPECT_TRUE(told <= 0 || size == 0 || size == told) << size << " and " << told;
    };
    expectSize(L1InstructionCacheSize(), _SC_LEVEL1_ICACHE_SIZE);
    expectSize(L1DataCacheSize(), _SC_LEVEL1_DCACHE_SIZE);
    expectSize(L2CacheSize(), _SC_LEVEL2_CACHE_SIZE);
    expectSize(L3CacheSize(), _SC_LEVEL3_CACHE_SIZE);
}

TEST_F(SystemInformationTest, FreeMemoryIsAskedForAndNeverTold)
{
    fVolume.recordTool("/usr/bin/vm_stat");
    EXPECT_EQ(FreeBytesOfRAM(), 0U);
    EXPECT_EQ(fVolume.calls(), "vm_stat\n\n");
    plant("/usr/bin/vm_stat", "yes 'Pages free: 7.' | head -c 200000");
    EXPECT_EQ(FreeBytesOfRAM(), 0U);
    spoil("/usr/bin/vm_stat");
    EXPECT_EQ(answerOfCopy([] { return static_cast<int>(FreeBytesOfRAM()); }), 0);
}

TEST_F(SystemInformationTest, ThePrimaryInterfaceHasItsControllersAddress)
{
    const Level controller { "IOEthernetController", { R"("IOMACAddress" = <414243444546>)" }, 1 };
    const Level other { "IOEthernetController", { R"("IOMACAddress" = <616263646566>)" }, 1 };
    const std::string yes = R"("IOPrimaryInterface" = Yes)";
    const std::string no = R"("IOPrimaryInterface" = No)";
    record({ other, Interface(no), controller, Interface(yes) });
    EXPECT_EQ(address(8), "ABCDEF--");
    EXPECT_EQ(address(4), "ABCD****");
    EXPECT_EQ(address(0), "********");
    EXPECT_TRUE(GetPrimaryMAC_Address(nullptr, 0));
    record({ other, Interface(yes), controller, Interface(yes) });
    EXPECT_EQ(address(8, false), "--------") << "two cannot both be it";
    record({ controller, Interface(no) });
    EXPECT_EQ(address(8, false), "--------");
    record({ { "IOEthernetController", {} }, Interface(yes) });
    EXPECT_EQ(address(8, false), "--------");
    record({ controller, { "IOEthernetController", {} }, Interface(yes) });
    EXPECT_EQ(address(8, false), "--------") << "another one's";
    record({ { "IOEthernetController", { R"("IOMACAddress" = <41>)" } }, Interface(yes) });
    EXPECT_EQ(address(8, false), "--------") << "less than was asked for";
}

}
