#include "tests/support/HostFolder.h"
#include "tests/support/RegistryTest.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/NvramFile.h>
#include <IOKit/NvramFirmware.h>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using iokit::NvramVariables;

namespace {

constexpr const char* kPath = "/pci@1f,0/disk@0:2,\\\\:tbxi";

NvramVariables Read(const iokit::Nvram& nvram)
{
    NvramVariables variables;
    EXPECT_EQ(nvram.read(variables), 0);
    return variables;
}

class NvramFileTest : public testing::Test {
protected:
    TemporaryFolder folder;
    const std::string path = folder / "private/var/db/nvram.plist";
    iokit::NvramFile nvram { path };
};

TEST_F(NvramFileTest, KeepsTextsAndBytes)
{
    const std::string bytes("\0<&\xff", 4);
    EXPECT_EQ(Read(nvram), NvramVariables {});
    EXPECT_EQ(nvram.remove("none"), ENOENT);
    const std::string before = nvram.version();
    EXPECT_EQ(nvram.set("boot-device", kPath) + nvram.set("bytes", bytes) + nvram.set("empty", ""), 0);
    EXPECT_NE(nvram.version(), before);
    EXPECT_EQ(
        Read(nvram), (NvramVariables { { "boot-device", kPath }, { "bytes", bytes }, { "empty", "" } }));
    EXPECT_THAT(ReadText(path), testing::HasSubstr("<string>/pci@1f,0/disk@0:2,\\\\:tbxi</string>"));
    EXPECT_EQ(nvram.remove("bytes"), 0);
    EXPECT_EQ(Read(nvram).size(), 2U);
    EXPECT_EQ(nvram.clear(), 0);
    EXPECT_EQ(Read(nvram), NvramVariables {});
    for (const std::string& name : { std::string(), std::string("a/b"), std::string("a b"),
             std::string("a=b"), std::string(65, 'a'), std::string("a\0b", 3) })
        EXPECT_EQ(nvram.set(name, "1"), EINVAL) << name;
    EXPECT_EQ(nvram.set("long", std::string(iokit::Nvram::kLongestValue + 1, 'a')), EINVAL);
}

TEST_F(NvramFileTest, LeavesAloneWhatIsDamaged)
{
    for (const char* text :
        { "", "<plist version=\"1.0\"><dict><key>a</key>", "<plist version=\"1.0\"><array/></plist>",
            "<plist version=\"1.0\"><dict><key>a</key><integer>1</integer></dict></plist>",
            "<plist version=\"1.0\"><dict><key>../a</key><string>1</string></dict></plist>" }) {
        WriteText(path, text);
        NvramVariables variables { { "stale", "" } };
        EXPECT_EQ(nvram.read(variables), EBADMSG) << text;
        EXPECT_TRUE(variables.empty());
        EXPECT_EQ(nvram.set("b", "1"), EBADMSG);
        EXPECT_EQ(nvram.clear(), EBADMSG);
        EXPECT_EQ(ReadText(path), text);
    }
}

TEST_F(NvramFileTest, LosesNothingWhenSeveralProgramsWrite)
{
    constexpr int writers = 4;
    constexpr int each = 20;
    for (int writer = 0; writer < writers; ++writer) {
        if (fork() == 0) {
            int error = 0;
            for (int i = 0; i < each; ++i)
                error |= nvram.set("v" + std::to_string(writer) + '-' + std::to_string(i), "1");
            _exit(error == 0 ? 0 : 1);
        }
    }
    for (int writer = 0; writer < writers; ++writer) {
        int status = -1;
        wait(&status);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(Read(nvram).size(), size_t { writers * each });
}

class NvramFirmwareTest : public testing::Test {
protected:
    NvramFirmwareTest() { std::filesystem::create_directories(file("").substr(0, file("").rfind('/'))); }

    std::string file(const std::string& name) const
    {
        return host.root() + "/sys/firmware/efi/efivars/" + name + "-7c436110-ab2a-4bbb-a880-fe41995c9f82";
    }

    HostFolder host;
    iokit::NvramFirmware nvram { host.tree() };
};

TEST_F(NvramFirmwareTest, HasApplesVariablesAsTheKernelShowsThem)
{
    using namespace std::string_literals;
    WriteText(file("boot-args"), "\7\0\0\0-v\0"s);
    WriteText(file("fresh"), ""); // its maker has not written yet
    host.add("sys/firmware/efi/efivars/",
        { { "Lang-8be4df61-93ca-11d2-aa0d-00e098032b8c", "\7\0\0\0en"s }, { "other", "" } });
    EXPECT_EQ(Read(nvram), (NvramVariables { { "boot-args", "-v\0"s } }));

    const std::string before = nvram.version();
    EXPECT_EQ(nvram.set("boot-device", kPath), 0);
    EXPECT_EQ(ReadText(file("boot-device")), "\7\0\0\0"s + kPath);
    EXPECT_NE(nvram.version(), before);
    WriteText(file("boot-args"), "\3\0\0\0-v\0"s);
    EXPECT_EQ(nvram.set("boot-args", "-s -x"), 0);
    EXPECT_EQ(ReadText(file("boot-args")), "\3\0\0\0-s -x"s) << "its attributes cannot be changed";

    EXPECT_EQ(nvram.set("empty", ""), EINVAL);
    EXPECT_EQ(nvram.set("../out", "1"), EINVAL);
    EXPECT_EQ(nvram.remove("none"), ENOENT);
    EXPECT_EQ(nvram.remove("boot-args"), 0);
    EXPECT_EQ(nvram.clear(), 0);
    EXPECT_EQ(Read(nvram), NvramVariables {});
    EXPECT_TRUE(host.tree().has("sys/firmware/efi/efivars/Lang-8be4df61-93ca-11d2-aa0d-00e098032b8c"));
}

TEST_F(NvramFirmwareTest, TakesTheKernelsGuardAwayAndPutsItBack)
{
    WriteText(file("a"), std::string("\7\0\0\0001", 5));
    const int variable = open(file("a").c_str(), O_RDONLY | O_CLOEXEC);
    const int guard = FS_IMMUTABLE_FL;
    const int none = 0;
    if (ioctl(variable, FS_IOC_SETFLAGS, &guard) != 0) {
        close(variable);
        GTEST_SKIP() << "needs a file system with flags, and the right to set them";
    }
    EXPECT_EQ(nvram.set("a", "2"), 0);
    EXPECT_EQ(ReadText(file("a")), std::string("\7\0\0\0002", 5));
    int flags = 0;
    EXPECT_EQ(ioctl(variable, FS_IOC_GETFLAGS, &flags), 0);
    EXPECT_EQ(flags & FS_IMMUTABLE_FL, FS_IMMUTABLE_FL);
    EXPECT_EQ(nvram.remove("a"), 0);
    ioctl(variable, FS_IOC_SETFLAGS, &none);
    close(variable);
}

class NvramRegistryTest : public RegistryTest {
protected:
    NvramRegistryTest()
    {
        setenv("ZEK_STARTUP_VOLUME", host.root().c_str(), 1);
        iokit::UseSource(std::make_unique<iokit::HostSource>(host.tree()));
    }

    static cf::Owned<CFTypeRef> option(CFStringRef name)
    {
        const io_registry_entry_t options
            = IORegistryEntryFromPath(kIOMasterPortDefault, "IODeviceTree:/options");
        cf::Owned<CFTypeRef> value(IORegistryEntryCreateCFProperty(options, name, nullptr, 0));
        EXPECT_EQ(IOObjectRelease(options), KERN_SUCCESS);
        return value;
    }

    HostFolder host;
    iokit::NvramFile nvram { host.root() + "/private/var/db/nvram.plist" };
};

TEST_F(NvramRegistryTest, ShowsTheVariablesAsOptionsOfTheDeviceTree)
{
    EXPECT_EQ(option(CFSTR("boot-device")), nullptr);
    EXPECT_EQ(nvram.set("boot-device", kPath) + nvram.set("bytes", std::string("a\0", 2)), 0);
    EXPECT_EQ(cf::TextOf(option(CFSTR("boot-device")).get()), kPath);
    const cf::Owned<CFTypeRef> bytes = option(CFSTR("bytes"));
    ASSERT_TRUE(bytes && CFGetTypeID(bytes.get()) == CFDataGetTypeID());
    EXPECT_EQ(CFDataGetLength(static_cast<CFDataRef>(bytes.get())), 2);

    EXPECT_EQ(nvram.set("boot-device", "/other"), 0);
    EXPECT_EQ(cf::TextOf(option(CFSTR("boot-device")).get()), "/other");
    WriteText(host.root() + "/private/var/db/nvram.plist", "damaged");
    EXPECT_EQ(option(CFSTR("boot-device")), nullptr);
}

}
