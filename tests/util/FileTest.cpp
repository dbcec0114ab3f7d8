#include "UtilityTest.h"

#include "util/Files.h"
#include "util/StandardFolders.h"
#include "util/SystemVersions.h"
#include "util/VolumeSpace.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>

namespace fs = std::filesystem;

namespace {

class FileTest : public UtilityTest {
protected:
    void installSystem(const std::string& volume, const std::string& version, const std::string& file)
    {
        TestVolume::write(fVolume.root() / volume / "System/Library/CoreServices" / file,
            "<plist version=\"1.0\"><dict><key>ProductVersion</key><string>" + version
                + "</string><key>ProductBuildVersion</key><string>8L127</string></dict></plist>");
    }
    void installSystem(const std::string& volume, const std::string& version)
    {
        installSystem(volume, version, "SystemVersion.plist");
    }
};

std::string Extensions(const char* volume, bool isTemporary = false)
{
    char* path = nullptr;
    const OSStatus status = CreateThirdPartyExtensionsPathnameForVolume(volume, &path, isTemporary);
    std::string text = path != nullptr ? path : std::to_string(status);
    free(path);
    return text;
}

/// What the Finder reads of an item.
std::string FinderInfo(const std::string& path)
{
    std::array<char, 64> record {};
    const ssize_t size = getxattr(path.c_str(), "user.com.apple.FinderInfo", record.data(), record.size());
    return size < 0 ? "none" : std::string(record.data(), static_cast<size_t>(size));
}

}

TEST_F(FileTest, WholeTreesAreCopiedMovedAndRemoved)
{
    TestVolume::write(path("tree/a/b"), "text");
    EXPECT_TRUE(CopyFileOrDirectory("/private/tmp/tree", "/private/tmp/copy"));
    EXPECT_TRUE(MoveFileOrDirectory("/private/tmp/copy", "/private/tmp/moved"));
    EXPECT_EQ(TestVolume::read(path("moved/a/b")), "text");
    EXPECT_TRUE(CreateSymbolicLink("/private/tmp/moved", "/private/tmp/link"));
    EXPECT_EQ(TestVolume::read(path("link/a/b")), "text");
    EXPECT_TRUE(TouchFileOrDirectory("/private/tmp/touched"));
    EXPECT_TRUE(FileOrDirectoryExists("/private/tmp/touched", nullptr, nullptr));
    EXPECT_EQ(inChild([] {
        (void)signal(SIGCHLD, SIG_IGN); // nobody hears how a child ended
        return TouchFileOrDirectory("/private/tmp/touched") ? 1 : 0;
    }),
        1);
    EXPECT_TRUE(RemoveFileOrDirectory("/private/tmp/tree"));
    EXPECT_FALSE(fs::exists(path("tree")));
    EXPECT_FALSE(fs::exists(path("copy")));

    EXPECT_FALSE(CopyFileOrDirectory("/private/tmp/none", "/private/tmp/copy"));
    EXPECT_FALSE(MoveFileOrDirectory("", "/private/tmp/copy"));
    EXPECT_FALSE(TouchFileOrDirectory("/private/tmp/none/file"));
    EXPECT_FALSE(CreateSymbolicLink("/private/tmp", "/private/tmp/link/a/b/c"));
    EXPECT_FALSE(CopyFileOrDirectory(nullptr, "x") || MoveFileOrDirectory("x", nullptr)
        || TouchFileOrDirectory(nullptr) || RemoveFileOrDirectory(nullptr)
        || CreateSymbolicLink(nullptr, nullptr));
}

TEST_F(FileTest, ToolsAreGivenTheirExactArguments)
{
    for (const char* tool : { "/bin/cp", "/bin/mv", "/usr/bin/touch", "/bin/rm", "/bin/ln",
             "/usr/sbin/vsdbutil", "/usr/sbin/kextcache" })
        fVolume.recordTool(tool);
    CopyFileOrDirectory("a b", "-c");
    MoveFileOrDirectory("a", "b");
    TouchFileOrDirectory("a");
    RemoveFileOrDirectory("/private/tmp");
    CreateSymbolicLink("../a", "b");
    EXPECT_GT(SetOwnershipAndPermissions("/Volumes/X", true), 0);
    EXPECT_GT(SetOwnershipAndPermissions("/", false), 0);
    EXPECT_TRUE(UpdateAppleBootPartitionsMKextCacheForVolume("/"));
    EXPECT_EQ(fVolume.calls(),
        "cp\n-rf\na b\n-c\n\nmv\n-f\na\nb\n\ntouch\na\n\nrm\n-rf\n" + folder().string()
            + "\n\nln\n-s\n../a\nb\n\nvsdbutil\n-a\n/Volumes/X\n\nvsdbutil\n-d\n/\n\nkextcache\n-f\n-u\n/"
              "\n\n");
}

TEST_F(FileTest, OnlyWhatAToolSaysItselfIsAFailure)
{
    TestVolume::write(path("file"), "");
    for (const char* tool : { "/bin/cp", "/bin/mv", "/bin/rm", "/bin/ln" })
        plant(tool, "kill -9 $$");
    EXPECT_TRUE(CopyFileOrDirectory("a", "b"));
    EXPECT_TRUE(MoveFileOrDirectory("a", "b"));
    EXPECT_FALSE(RemoveFileOrDirectory("/private/tmp/file"));
    EXPECT_TRUE(RemoveFileOrDirectory("/private/tmp/none"));
    EXPECT_FALSE(CreateSymbolicLink("a", "b"));

    for (const char* tool : { "/bin/cp", "/bin/rm", "/bin/ln", "/usr/sbin/vsdbutil" })
        spoil(tool);
    EXPECT_TRUE(CopyFileOrDirectory("a", "b"));
    EXPECT_TRUE(CreateSymbolicLink("a", "b"));
    EXPECT_GT(SetOwnershipAndPermissions("/", true), 0);
    EXPECT_EQ(answerOfCopy([] { return RemoveFileOrDirectory("/private/tmp/file") ? 1 : 0; }), 0);
}

TEST_F(FileTest, AToolThatWritesWithoutEndDoesNotHoldUpItsCaller)
{
    plant("/bin/ln", "while echo flood; do :; done");
    EXPECT_FALSE(CreateSymbolicLink("a", "b"));
}

TEST_F(FileTest, ExtensionsArePutTogetherOnlyFromTenFourEightOn)
{
    // The running system's version, the volume's, whether the tool is run, and the answer where it fails.
    struct Case {
        const char* running;
        const char* volumes;
        bool isRun;
        bool answer;
    };
    for (const Case& c : { Case { "10.4.8", "10.4.7", false, true }, { "10.4.7", "10.4.8", false, true },
             { "10.4.8", "10.4.8", true, false }, { "10.4.11", "10.5", true, true },
             { "10.5", "10.5", true, false }, { "10.4.11", "", false, true } }) {
        installSystem("", c.running);
        installSystem("Volumes/Other", c.volumes);
        plant("/usr/sbin/kextcache", "echo $3 > \"$ZEK_STARTUP_VOLUME/ran\"; exit 1");
        EXPECT_EQ(UpdateAppleBootPartitionsMKextCacheForVolume("/Volumes/Other"), c.answer)
            << c.running << c.volumes;
        EXPECT_EQ(TestVolume::read(fVolume.root() / "ran"), c.isRun ? "/Volumes/Other\n" : "")
            << c.running << c.volumes;
        fs::remove(fVolume.root() / "ran");
    }
}

TEST_F(FileTest, ItemsAreSeenThroughLinks)
{
    TestVolume::write(path("file"), "12345");
    fs::create_symlink("file", path("link"));
    uint64_t size = 9;
    bool isFolder = true;
    EXPECT_TRUE(FileOrDirectoryExists("/private/tmp/link", &size, &isFolder));
    EXPECT_EQ(size, 5U);
    EXPECT_FALSE(isFolder);
    EXPECT_TRUE(FileOrDirectoryExists("/private/tmp", &size, &isFolder));
    EXPECT_EQ(size, 0U);
    EXPECT_TRUE(isFolder);
    EXPECT_FALSE(
        FileOrDirectoryExists(nullptr, &size, &isFolder) || FileOrDirectoryExists("", &size, &isFolder));
    EXPECT_FALSE(isFolder);

    if (getuid() != 0)
        GTEST_SKIP() << "needs root";
    EXPECT_TRUE(FileIsOwnedByRoot("/private/tmp/link"));
    EXPECT_FALSE(FileIsOwnedByRoot("/private/tmp"));
    ASSERT_EQ(chown(path("file").c_str(), 1234, 5678), 0);
    EXPECT_FALSE(FileIsOwnedByRoot("/private/tmp/file"));
    EXPECT_EQ(AsStranger([] { return RestoreFileOrDirectoryOwnership("/private/tmp/file") ? 1 : 0; }), 0);
    EXPECT_TRUE(RestoreFileOrDirectoryOwnership("/private/tmp/file"));
    struct stat info = {};
    ASSERT_EQ(stat(path("file").c_str(), &info), 0);
    EXPECT_TRUE(info.st_uid == 0 && info.st_gid == 5678);
    EXPECT_FALSE(RestoreFileOrDirectoryOwnership("/private/tmp/none"));
}

TEST_F(FileTest, InvisibleItemsAreMarkedInTheProcessorsByteOrder)
{
    TestVolume::write(path("file"), "");
    if (setxattr(path("file").c_str(), "user.test", "", 0, 0) != 0)
        GTEST_SKIP() << "this file system has no attributes";
    EXPECT_EQ(MakeFileOrDirectoryInisible("/private/tmp/file", true), 0);
    EXPECT_EQ(FinderInfo(path("file")), std::string("\0\0\0\0\0\0\0\0\0\x40\0\0\0\0\0\0", 16));
    EXPECT_EQ(MakeFileOrDirectoryInisible("/private/tmp/file", false), 0);
    EXPECT_EQ(FinderInfo(path("file")), std::string(16, '\0'));

    fs::create_symlink("file", path("link"));
    EXPECT_EQ(MakeFileOrDirectoryInisible("/private/tmp/link", true), 0);
    EXPECT_EQ(FinderInfo(path("file")), std::string(16, '\0')) << "the link was followed";
    EXPECT_EQ(MakeFileOrDirectoryInisible(nullptr, true), 0);
}

TEST(PathTest, ComponentsAndExtensionsAreFoundInTheText)
{
    for (const auto& [path, component] : { std::pair { "/a/b.c", "b.c" }, { "/a/b/", "b/" }, { "a", "a" },
             { "/", "/" }, { "", "" }, { "//", "/" }, { "a/", "a/" } })
        EXPECT_STREQ(LastPathComponent(path), component) << path;
    for (const auto& [path, extension] :
        { std::pair { "/a/b.c.d", "d" }, { "/a.b/c", "b/c" }, { "/a", "/a" }, { "a.", "" }, { "", "" } })
        EXPECT_STREQ(FileExtension(path), extension) << path;
    EXPECT_EQ(LastPathComponent(nullptr), nullptr);
    EXPECT_EQ(FileExtension(nullptr), nullptr);
}

TEST_F(FileTest, StandardFoldersFitTheirBufferOrAreRefused)
{
    const std::string library = fVolume.home().string() + "/Library";
    std::string buffer(library.size() + 1, 'x'); // exactly enough, for the address sanitizer to see
    EXPECT_EQ(CreateUserLibraryPathname(buffer.data(), buffer.size()), noErr);
    EXPECT_STREQ(buffer.data(), library.c_str());
    EXPECT_EQ(CreateUserLibraryPathname(buffer.data(), buffer.size() - 1), paramErr);

    std::array<char, 2048> wide {};
    EXPECT_EQ(CreateUserApplicationSupportFolderPathname("ZEK", wide.data(), wide.size()), noErr);
    EXPECT_EQ(wide.data(), library + "/Application Support/ZEK");
    EXPECT_EQ(CreateApplicationSupportFolderPathname(nullptr, wide.data(), wide.size()), noErr);
    EXPECT_STREQ(wide.data(), "/Library/Application Support");
    EXPECT_EQ(CreateApplicationSupportFolderPathnameForVolume("/Volumes/X/", "a/b", wide.data(), wide.size()),
        noErr);
    EXPECT_STREQ(wide.data(), "/Volumes/X/Library/Application Support/a/b");

    const std::string fitting(1023 - std::string("/Library/Application Support/").size(), 'n');
    EXPECT_EQ(CreateApplicationSupportFolderPathname(fitting.c_str(), wide.data(), wide.size()), noErr);
    EXPECT_EQ(std::string(wide.data()).size(), 1023U);
    EXPECT_EQ(
        CreateApplicationSupportFolderPathname((fitting + "n").c_str(), wide.data(), wide.size()), paramErr);
    EXPECT_EQ(
        CreateApplicationSupportFolderPathnameForVolume("/V", fitting.c_str(), wide.data(), wide.size()),
        paramErr);
    EXPECT_EQ(std::string(wide.data(), wide.size()), std::string(wide.size(), '\0')) << "cleared";
    for (const char* none : { static_cast<const char*>(nullptr), "", "/" }) {
        EXPECT_EQ(
            CreateApplicationSupportFolderPathnameForVolume(none, nullptr, wide.data(), wide.size()), noErr);
        EXPECT_STREQ(wide.data(), "/Library/Application Support");
    }
}

TEST_F(FileTest, TheSystemsVersionDecidesWhereExtensionsLie)
{
    EXPECT_EQ(Extensions("/"), "/Library/Extensions");
    installSystem("", "10.8.5");
    EXPECT_EQ(Extensions("/"), "/System/Library/Extensions");
    installSystem("Volumes/Server", "10.9", "ServerVersion.plist");
    EXPECT_EQ(Extensions("/Volumes/Server"), "/Volumes/Server/Library/Extensions");
    EXPECT_EQ(Extensions("/Volumes/None"), std::to_string(fnfErr));
    EXPECT_EQ(Extensions("/Volumes/None", true), "/tmp/Extensions");
    EXPECT_EQ(Extensions(""), std::to_string(fnfErr));

    std::array<char, 7> version {};
    std::array<char, 16> build {};
    SystemVersionAndBuildNumber("/", version.data(), version.size(), build.data(), build.size());
    EXPECT_STREQ(version.data(), "10.8.5");
    EXPECT_STREQ(build.data(), "8L127");
    EXPECT_EQ(ReturnSystemVersionOnVolume("/Volumes/Server/"), 0x10908000U);
    installSystem("", "10.8.5b1-234567"); // just fits into sixteen bytes
    EXPECT_EQ(ReturnSystemVersionOnVolume("/"), 0x10856001U);
    installSystem("", "10.8.5b1-2345678");
    EXPECT_EQ(ReturnSystemVersionOnVolume("/"), 0U);
}

TEST_F(FileTest, VolumesTellTheirSpace)
{
    uint64_t total = 0;
    uint64_t free = 0;
    uint64_t available = 0;
    struct statvfs host = {};
    ASSERT_EQ(statvfs("/proc", &host), 0);
    EXPECT_TRUE(GetVolumeTotalAndFreeBytes("/proc", &total, &free, &available));
    EXPECT_EQ(total, 0U) << "nothing is kept there";
    ASSERT_EQ(statvfs(folder().c_str(), &host), 0);
    EXPECT_TRUE(GetVolumeTotalAndFreeBytes("/private/tmp", nullptr, nullptr, nullptr));
    EXPECT_TRUE(GetVolumeTotalAndFreeBytes("/private/tmp", &total, &free, &available));
    EXPECT_EQ(total, host.f_frsize * host.f_blocks);
    const double others = 2e9; // who write meanwhile
    EXPECT_NEAR(static_cast<double>(free), static_cast<double>(host.f_frsize * host.f_bfree), others);
    EXPECT_NEAR(static_cast<double>(available), static_cast<double>(host.f_frsize * host.f_bavail), others);
    EXPECT_FALSE(GetVolumeTotalAndFreeBytes("/private/none", &total, &free, &available));
    EXPECT_TRUE(total == 0 && free == 0 && available == 0);
}
