#include "tests/driverinstall/Trial.h"

#include <functional>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class InstallTest : public Trial { };

TEST_F(InstallTest, TheWholeBundleReplacesAllOfTheOldOneInAFolderMadeWhereItIsMissing)
{
    fs::remove(extensions);
    EXPECT_EQ(install().errors, "driverinstall: installed Dock.kext 2\n");
    EXPECT_EQ(snapshot(installed), whole("2"));
    EXPECT_EQ(fs::status(extensions).permissions(), fs::perms(0755));
    WriteText(installed / "Contents/only-in-the-old", "x");
    EXPECT_EQ(install().status, 0);
    EXPECT_EQ(snapshot(installed), whole("2"));
    EXPECT_EQ(entries(), Texts { name });
}

TEST_F(InstallTest, ModesAndOwnerOfTheSourceAreNotTakenOver)
{
    (void)whole("2");
    fs::permissions(bundle / "Contents/Info.plist", fs::perms(0600));
    fs::permissions(bundle / "Contents/Resources/a.txt", fs::perms(0666));
    fs::permissions(bundle / "Contents/Resources", fs::perms(02777));
    fs::permissions(bundle / "Contents/MacOS/Dock", fs::perms(0700));
    fs::permissions(bundle, fs::perms(0700));
    ASSERT_TRUE(geteuid() != 0 || lchown(bundle.c_str(), 1234, 1234) == 0);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(bundle))
        ASSERT_TRUE(geteuid() != 0 || lchown(entry.path().c_str(), 1234, 1234) == 0);
    umask(0);
    EXPECT_EQ(install().status, 0);
    EXPECT_EQ(snapshot(installed), whole("2"));
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
    const fs::path added = bundle / "Contents/Resources/added";
    fs::path deep = bundle;
    for (int level = 0; level < 65; ++level)
        deep /= "d";
    const auto moveAndLink = [&] { fs::rename(bundle, source / "real"), fs::create_symlink("real", bundle); };
    // As a hard link would bring in. Only root could read it at all.
    const auto makePrivate = [&] {
        fs::permissions(text, geteuid() == 0 ? fs::perms(0600) : fs::perms(0));
        ASSERT_TRUE(geteuid() != 0 || lchown(text.c_str(), 1234, 1234) == 0);
    };
    const std::map<const char*, std::function<void()>> spoilers = {
        { "no such bundle", [&] { fs::remove_all(bundle); } },
        { "a file as the bundle", [&] { fs::remove_all(bundle), WriteText(bundle, "x"); } },
        { "a link as the bundle", moveAndLink },
        { "a link to a file", [&] { fs::create_symlink("/etc/hostname", added); } },
        { "a fifo", [&] { ASSERT_EQ(mkfifo(added.c_str(), 0644), 0); } },
        { "a set-user-id file", [&] { fs::permissions(text, fs::perms(04755)); } },
        { "a set-group-id file", [&] { fs::permissions(text, fs::perms(02755)); } },
        { "65 folders deep", [&] { fs::create_directories(deep); } },
        { "more than 1 GiB", [&] { fs::resize_file(text, uintmax_t { 1 } << 30); } },
        { "another user's private file", makePrivate },
        { "a relative path", [&] { installArguments.back() = "source"; } },
    };
    makeBundle(installed, "1");
    WriteText(extensions / ".Other.kext.staging/x", "a leftover");
    for (const auto& [what, spoil] : spoilers) {
        fs::remove_all(bundle);
        makeBundle(bundle, "2");
        installArguments.back() = source.string();
        spoil();
        EXPECT_EQ(install().status, 66) << what;
    }
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), (Texts { ".Other.kext.staging", name }));
}

TEST_F(InstallTest, ACopyThatIsNoExtensionIsNotPutInPlace)
{
    const std::string identifier = "<plist><dict><key>CFBundleIdentifier</key><string>a</string>";
    const std::string version = "<key>CFBundleVersion</key><string>1</string>";
    const std::string executable = identifier + version + "<key>CFBundleExecutable</key>";
    const std::string end = "</dict></plist>";
    const Texts damaged = { "", "no property list", "<plist><array/></plist>", identifier + version,
        identifier + end, "<plist><dict>" + version + end,
        identifier + "<key>CFBundleVersion</key><string></string>" + end,
        identifier + "<key>CFBundleVersion</key><integer>1</integer>" + end,
        identifier + version + "<key>CFBundlePackageType</key><string>APPL</string>" + end,
        executable + "<string>Missing</string>" + end, executable + "<string></string>" + end,
        executable + "<string>../Info.plist</string>" + end, executable + "<integer>1</integer>" + end,
        identifier + version + end + std::string(size_t { 1 } << 20, ' ') };
    makeBundle(installed, "1");
    const fs::path info = bundle / "Contents/Info.plist";
    for (const std::string& text : damaged) {
        WriteText(info, text);
        EXPECT_EQ(install().status, 67) << text.substr(0, 300);
    }
    fs::remove(info);
    EXPECT_EQ(install().status, 67);
    fs::create_directory(info);
    EXPECT_EQ(install().status, 67);
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), Texts { name });
}

TEST_F(InstallTest, AFolderThatOthersControlIsRefused)
{
    const auto isRefused = [&](const char* why) {
        EXPECT_EQ(install().status, 72) << why;
        EXPECT_EQ(uninstall().status, 72) << why;
    };
    fs::permissions(extensions, fs::perms(0775));
    EXPECT_EQ(uninstall().status, 0) << "its group is ours";
    ASSERT_TRUE(geteuid() != 0 || lchown(extensions.c_str(), 0, 1234) == 0);
    fs::permissions(extensions, geteuid() == 0 ? fs::perms(0775) : fs::perms(0777));
    isRefused("another group may write");
    fs::permissions(extensions, fs::perms(0757));
    isRefused("everybody may write");
    fs::remove(extensions);
    fs::create_symlink(source, extensions);
    isRefused("a link");
    fs::remove(extensions);
    WriteText(extensions, "x");
    isRefused("a file");
    fs::remove_all(extensions.parent_path());
    EXPECT_EQ(install().status, 72) << "without the folder that it belongs in";
}

TEST_F(InstallTest, AnotherUsersFolderIsNotForUs)
{
    const Texts asNobody = { "/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups" };
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give a folder to another user";
    const Ended ended = run(installArguments, asNobody);
    if (ended.status == 126)
        GTEST_SKIP() << "the build folder is closed to other users";
    EXPECT_EQ(ended.status, 77);
    ASSERT_EQ(lchown(extensions.c_str(), nobody, nobody), 0);
    EXPECT_EQ(install().status, 72);
    EXPECT_TRUE(entries().empty());
    // The owner of a trial volume needs nobody's leave.
    EXPECT_EQ(run(installArguments, asNobody).status, 0);
}

TEST_F(InstallTest, UninstallRemovesWhateverHasTheNameWithoutFollowingIt)
{
    makeBundle(installed, "1");
    fs::create_symlink(source, installed / "link");
    EXPECT_EQ(uninstall().errors, "driverinstall: removed Dock.kext\n");
    fs::create_symlink(source, installed);
    EXPECT_EQ(uninstall().status, 0);
    WriteText(installed, "a file");
    EXPECT_EQ(uninstall().status, 0);
    EXPECT_TRUE(entries().empty());
    EXPECT_EQ(snapshot(bundle), whole("2"));
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
    EXPECT_EQ(uninstall("Absent.kext").status, 0);
    EXPECT_EQ(entries(), (Texts { ".hidden", ".kext.old", name, "Kept.kext" }));
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(snapshot(extensions / "Kept.kext"), whole("2"));
}

}
