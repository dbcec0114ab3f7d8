#include "tests/driverinstall/Trial.h"

#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class InstallTest : public Trial {
protected:
    using Names = std::vector<std::string>;
};

TEST_F(InstallTest, TheWholeBundleReplacesAllOfTheOldOneInAFolderMadeWhereItIsMissing)
{
    fs::remove(extensions);
    EXPECT_EQ(install().errors, "driverinstall: installed Dock.kext 2\n");
    EXPECT_EQ(snapshot(installed), whole("2"));
    EXPECT_EQ(fs::status(extensions).permissions(), fs::perms(0755));
    WriteText(installed / "Contents/only-in-the-old", "x");
    EXPECT_EQ(install().status, 0);
    EXPECT_EQ(snapshot(installed), whole("2"));
    EXPECT_EQ(entries(), Names { name });
}

TEST_F(InstallTest, ModesAndOwnerOfTheSourceAreNotTakenOver)
{
    const std::map<const char*, fs::perms> modes
        = { { "Contents/Info.plist", fs::perms(0600) }, { "Contents/Resources/a.txt", fs::perms(0666) },
              { "Contents/Resources", fs::perms(02777) }, { "Contents/MacOS/Dock", fs::perms(0700) } };
    for (const auto& [path, mode] : modes) {
        fs::permissions(bundle / path, mode);
        ASSERT_TRUE(geteuid() != 0 || lchown((bundle / path).c_str(), 1234, 1234) == 0);
    }
    fs::permissions(bundle, fs::perms(0700));
    ASSERT_TRUE(geteuid() != 0 || lchown(bundle.c_str(), 1234, 1234) == 0);
    umask(0);
    EXPECT_EQ(install().status, 0);
    umask(022);
    EXPECT_EQ(snapshot(installed), whole("2"));
    for (const fs::path& path : { installed, installed / "Contents/Info.plist" }) {
        struct stat info { };
        ASSERT_EQ(stat(path.c_str(), &info), 0);
        EXPECT_EQ(info.st_uid, geteuid());
        EXPECT_EQ(info.st_gid, geteuid() == 0 ? 0 : getegid());
        EXPECT_EQ(info.st_mode & 07777U, path == installed ? 0755U : 0644U);
    }
}

TEST_F(InstallTest, AFlatBundleWithoutAnExecutableIsAnExtensionToo)
{
    fs::rename(bundle / "Contents/MacOS/Dock", bundle / "Dock");
    fs::rename(bundle / "Contents/Info.plist", bundle / "Info.plist");
    EXPECT_EQ(install().status, 67) << "has a folder Contents, which is where to look";
    fs::remove_all(bundle / "Contents");
    EXPECT_EQ(install().status, 0);
    WriteText(bundle / "Info.plist",
        "<plist><dict><key>CFBundleIdentifier</key><string>a</string>"
        "<key>CFBundleVersion</key><string>3</string></dict></plist>");
    fs::remove(bundle / "Dock");
    EXPECT_EQ(install().errors, "driverinstall: installed Dock.kext 3\n");
}

TEST_F(InstallTest, ASourceThatCouldReachElsewhereIsRefusedBeforeTheDestinationIsTouched)
{
    const fs::path text = bundle / "Contents/Resources/a.txt";
    const fs::path program = bundle / "Contents/MacOS/Dock";
    const fs::path added = bundle / "Contents/Resources/added";
    const std::map<std::string, std::function<void()>> spoilers = {
        { "no such bundle", [&] { fs::remove_all(bundle); } },
        { "a file as the bundle", [&] { fs::remove_all(bundle), WriteText(bundle, "x"); } },
        { "a link as the bundle",
            [&] { fs::rename(bundle, source / "real"), fs::create_symlink("real", bundle); } },
        { "a link to a file", [&] { fs::create_symlink("/etc/hostname", added); } },
        { "a fifo", [&] { ASSERT_EQ(mkfifo(added.c_str(), 0644), 0); } },
        { "a set-user-id file", [&] { fs::permissions(program, fs::perms(04755)); } },
        { "a set-group-id file", [&] { fs::permissions(program, fs::perms(02755)); } },
        { "65 folders deep",
            [&] {
                fs::path deep = bundle;
                for (int level = 0; level < 65; ++level)
                    deep /= "d";
                fs::create_directories(deep);
            } },
        { "more than 1 GiB", [&] { fs::resize_file(text, uintmax_t { 1 } << 30); } },
        { "another user's private file",
            [&] {
                // As a hard link would bring in. Only root could read it at all.
                fs::permissions(text, geteuid() == 0 ? fs::perms(0600) : fs::perms(0));
                ASSERT_TRUE(geteuid() != 0 || lchown(text.c_str(), 1234, 1234) == 0);
            } },
    };
    makeBundle(installed, "1");
    WriteText(extensions / ".Other.kext.staging/x", "a leftover");
    for (const auto& [what, spoil] : spoilers) {
        fs::remove_all(bundle);
        makeBundle(bundle, "2");
        spoil();
        EXPECT_EQ(install().status, 66) << what;
    }
    EXPECT_EQ(run({ "install", "drivername", name, "sourcedirectory", "source" }).status, 66);
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), (Names { ".Other.kext.staging", name }));
}

TEST_F(InstallTest, ACopyThatIsNoExtensionIsNotPutInPlace)
{
    const std::string identifier = "<key>CFBundleIdentifier</key><string>a</string>";
    const std::string version = "<key>CFBundleVersion</key><string>1</string>";
    const std::string both = identifier + version;
    const std::vector<std::string> damaged
        = { identifier, version, identifier + "<key>CFBundleVersion</key><string></string>",
              identifier + "<key>CFBundleVersion</key><integer>1</integer>",
              both + "<key>CFBundlePackageType</key><string>APPL</string>",
              both + "<key>CFBundleExecutable</key><string>Missing</string>",
              both + "<key>CFBundleExecutable</key><string></string>",
              both + "<key>CFBundleExecutable</key><string>../Info.plist</string>",
              both + "<key>CFBundleExecutable</key><integer>1</integer>",
              both + std::string(size_t { 1 } << 20, ' '), "</dict><array/><dict>" };
    makeBundle(installed, "1");
    const auto isRefused
        = [&](const std::string& what) { EXPECT_EQ(install().status, 67) << what.substr(0, 300); };
    const fs::path info = bundle / "Contents/Info.plist";
    for (const std::string& pairs : damaged) {
        WriteText(info, "<plist><dict>" + pairs + "</dict></plist>");
        isRefused(pairs);
    }
    for (const char* text : { "", "no property list", "<plist><array/></plist>" }) {
        WriteText(info, text);
        isRefused(text);
    }
    fs::remove(info);
    isRefused("none");
    fs::create_directory(info);
    isRefused("a folder");
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), Names { name });
}

TEST_F(InstallTest, AFolderThatOthersControlIsRefused)
{
    const auto isRefused = [&](const char* why) {
        EXPECT_EQ(install().status, 72) << why;
        EXPECT_EQ(uninstall().status, 72) << why;
    };
    fs::permissions(extensions, fs::perms(0775));
    EXPECT_EQ(uninstall().status, 0) << "its group is ours";
    if (geteuid() == 0) {
        ASSERT_EQ(lchown(extensions.c_str(), 0, 1234), 0);
        isRefused("another group may write");
    }
    fs::permissions(extensions, fs::perms(0757));
    isRefused("everybody may write");
    fs::remove(extensions);
    fs::create_directories(root / "elsewhere");
    fs::create_symlink(root / "elsewhere", extensions);
    isRefused("a link");
    EXPECT_TRUE(fs::is_empty(root / "elsewhere"));
    fs::remove(extensions);
    WriteText(extensions, "x");
    isRefused("a file");
    fs::remove_all(extensions.parent_path());
    EXPECT_EQ(install().status, 72) << "without the folder that it belongs in";
}

TEST_F(InstallTest, AnotherUsersFolderIsNotForUs)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give a folder to another user";
    const Ended ended = run(installArguments(), {}, nobody);
    if (ended.status == 127)
        GTEST_SKIP() << "the build folder is closed to other users";
    EXPECT_EQ(ended.status, 77);
    ASSERT_EQ(lchown(extensions.c_str(), nobody, nobody), 0);
    EXPECT_EQ(run(installArguments()).status, 72);
    EXPECT_TRUE(entries().empty());
    // The owner of a trial volume needs nobody's leave.
    EXPECT_EQ(run(installArguments(), {}, nobody).status, 0);
    EXPECT_EQ(snapshot(installed), whole("2"));
}

TEST_F(InstallTest, UninstallRemovesWhateverHasTheNameWithoutFollowingIt)
{
    makeBundle(installed, "1");
    WriteText(root / "kept/file", "x");
    fs::create_symlink(root / "kept", installed / "link");
    EXPECT_EQ(uninstall().errors, "driverinstall: removed Dock.kext\n");
    fs::create_symlink(root / "kept", installed);
    EXPECT_EQ(uninstall().status, 0);
    WriteText(installed, "a file");
    EXPECT_EQ(uninstall().status, 0);
    EXPECT_TRUE(entries().empty());
    EXPECT_TRUE(fs::exists(root / "kept/file"));
}

TEST_F(InstallTest, NothingToRemoveIsASuccess)
{
    EXPECT_EQ(uninstall().errors, "driverinstall: nothing to remove: Dock.kext is not installed\n");
    fs::remove(extensions);
    EXPECT_EQ(uninstall().status, 0);
    EXPECT_FALSE(fs::exists(extensions));
}

TEST_F(InstallTest, EveryRunFirstClearsWhatInterruptedRunsLeft)
{
    makeBundle(extensions / ".Dock.kext.old", "1");
    makeBundle(extensions / ".Kept.kext.old", "1");
    makeBundle(extensions / "Kept.kext", "2");
    WriteText(extensions / ".Gone.kext.staging/Contents/Info.plist", "half");
    WriteText(extensions / ".Gone.kext.removed/Contents/Info.plist", "half");
    WriteText(extensions / ".hidden", "somebody else's");
    WriteText(extensions / ".kext.old", "somebody else's");
    EXPECT_EQ(run({ "uninstall", "drivername", "Absent.kext" }).status, 0);
    EXPECT_EQ(entries(), (Names { ".hidden", ".kext.old", name, "Kept.kext" }));
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(snapshot(extensions / "Kept.kext"), whole("2"));
}

}
