#include "tests/driverinstall/Trial.h"

#include "tools/driverinstall/DriverInstall.h"
#include <fcntl.h>
#include <functional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class InstallTest : public Trial {
protected:
    using Names = std::vector<std::string>;

    /// Sets the folder's modification time to long ago, so that a change shows.
    void ageFolder() const
    {
        fs::last_write_time(extensions, fs::file_time_type::clock::now() - std::chrono::hours(1000));
    }
    bool folderIsNew() const
    {
        return fs::last_write_time(extensions) > fs::file_time_type::clock::now() - std::chrono::hours(1);
    }
};

TEST_F(InstallTest, AFreshInstallMakesTheFolderAndCopiesTheWholeBundle)
{
    fs::remove(extensions);
    const Ended ended = install();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "driverinstall: installed Dock.kext 2\n");
    EXPECT_EQ(snapshot(installed), whole("2"));
    EXPECT_EQ(entries(), Names { name });
    EXPECT_EQ(fs::status(extensions).permissions(), fs::perms(0755));
}

TEST_F(InstallTest, ReplacingLeavesNothingOfTheOldCopyAndTouchesTheFolder)
{
    makeBundle(installed, "1");
    WriteText(installed / "Contents/only-in-the-old", "x");
    ageFolder();
    EXPECT_EQ(install().status, 0);
    EXPECT_EQ(snapshot(installed), whole("2"));
    EXPECT_EQ(entries(), Names { name });
    EXPECT_TRUE(folderIsNew());
}

TEST_F(InstallTest, ModesAndOwnerOfTheSourceAreNotTakenOver)
{
    fs::permissions(bundle / "Contents/Info.plist", fs::perms(0600));
    fs::permissions(bundle / "Contents/Resources/a.txt", fs::perms(0666));
    fs::permissions(bundle / "Contents/Resources", fs::perms(02777));
    fs::permissions(bundle / "Contents/MacOS/Dock", fs::perms(0700));
    fs::permissions(bundle, fs::perms(0700));
    if (geteuid() == 0) {
        ASSERT_EQ(lchown(bundle.c_str(), 1234, 1234), 0);
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(bundle))
            ASSERT_EQ(lchown(entry.path().c_str(), 1234, 1234), 0);
    }
    umask(0);
    EXPECT_EQ(install().status, 0);
    umask(022);
    EXPECT_EQ(snapshot(installed), whole("2"));
    struct stat info { };
    ASSERT_EQ(stat((installed / "Contents/Info.plist").c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, geteuid());
    ASSERT_EQ(stat(installed.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777U, 0755U);
    EXPECT_EQ(info.st_gid, geteuid() == 0 ? 0 : getegid());
}

TEST_F(InstallTest, AFlatBundleWithoutAnExecutableIsAnExtensionToo)
{
    fs::rename(bundle / "Contents/MacOS/Dock", bundle / "Dock");
    fs::rename(bundle / "Contents/Info.plist", bundle / "Info.plist");
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
    const fs::path resources = bundle / "Contents/Resources";
    const std::map<std::string, std::function<void()>> spoilers = {
        { "no such bundle", [&] { fs::remove_all(bundle); } },
        { "a file as the bundle", [&] { fs::remove_all(bundle), WriteText(bundle, "x"); } },
        { "a link as the bundle",
            [&] { fs::rename(bundle, source / "real"), fs::create_symlink("real", bundle); } },
        { "a link to a file", [&] { fs::create_symlink("/etc/hostname", resources / "l"); } },
        { "a dangling link", [&] { fs::create_symlink("nowhere", resources / "l"); } },
        { "a fifo", [&] { ASSERT_EQ(mkfifo((resources / "f").c_str(), 0644), 0); } },
        { "a set-user-id file", [&] { fs::permissions(bundle / "Contents/MacOS/Dock", fs::perms(04755)); } },
        { "a set-group-id file", [&] { fs::permissions(bundle / "Contents/MacOS/Dock", fs::perms(02755)); } },
        { "65 folders deep",
            [&] {
                fs::path deep = bundle;
                for (int level = 0; level < 65; ++level)
                    deep /= "d";
                fs::create_directories(deep);
            } },
        { "more than 1 GiB", [&] { fs::resize_file(resources / "a.txt", uintmax_t { 1 } << 30); } },
        { "another user's private file",
            [&] {
                // As a hard link would bring in. Only root could read it at all.
                const fs::path file = resources / "a.txt";
                fs::permissions(file, geteuid() == 0 ? fs::perms(0600) : fs::perms(0));
                ASSERT_TRUE(geteuid() != 0 || lchown(file.c_str(), 1234, 1234) == 0);
            } },
    };
    makeBundle(installed, "1");
    WriteText(extensions / ".Other.kext.staging/x", "a leftover");
    ageFolder();
    for (const auto& [what, spoil] : spoilers) {
        fs::remove_all(bundle);
        makeBundle(bundle, "2");
        spoil();
        EXPECT_EQ(install().status, 66) << what;
    }
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), (Names { ".Other.kext.staging", name }));
    EXPECT_FALSE(folderIsNew());
    EXPECT_EQ(run({ "install", "drivername", name, "sourcedirectory", "source" }).status, 66);
}

TEST_F(InstallTest, ACopyThatIsNoExtensionIsNotPutInPlace)
{
    const auto dictionary
        = [](const std::string& pairs) { return "<plist><dict>" + pairs + "</dict></plist>"; };
    const std::string identifier = "<key>CFBundleIdentifier</key><string>a</string>";
    const std::string version = "<key>CFBundleVersion</key><string>1</string>";
    const std::vector<std::string> damaged = {
        "",
        "no property list",
        "<plist><array/></plist>",
        "<plist><dict>" + identifier + version,
        dictionary(identifier),
        dictionary(version),
        dictionary(identifier + "<key>CFBundleVersion</key><string></string>"),
        dictionary(identifier + "<key>CFBundleVersion</key><integer>1</integer>"),
        dictionary(identifier + version + "<key>CFBundlePackageType</key><string>APPL</string>"),
        dictionary(identifier + version + "<key>CFBundleExecutable</key><string>Missing</string>"),
        dictionary(identifier + version + "<key>CFBundleExecutable</key><string></string>"),
        dictionary(identifier + version + "<key>CFBundleExecutable</key><string>../Info.plist</string>"),
        dictionary(identifier + version + "<key>CFBundleExecutable</key><integer>1</integer>"),
        dictionary(identifier + version) + std::string(size_t { 1 } << 20, ' '),
    };
    makeBundle(installed, "1");
    for (const std::string& text : damaged) {
        WriteText(bundle / "Contents/Info.plist", text);
        EXPECT_EQ(install().status, 67) << text.substr(0, 300);
    }
    fs::remove(bundle / "Contents/Info.plist");
    EXPECT_EQ(install().status, 67);
    EXPECT_EQ(snapshot(installed), whole("1"));
    EXPECT_EQ(entries(), Names { name });
}

TEST_F(InstallTest, AFolderThatOthersControlIsRefused)
{
    fs::permissions(extensions, fs::perms(0777));
    EXPECT_EQ(install().status, 72);
    EXPECT_EQ(uninstall().status, 72);
    fs::remove(extensions);
    fs::create_directories(root / "elsewhere");
    fs::create_symlink(root / "elsewhere", extensions);
    EXPECT_EQ(install().status, 72);
    EXPECT_TRUE(fs::is_empty(root / "elsewhere"));
    fs::remove(extensions);
    WriteText(extensions, "a file");
    EXPECT_EQ(install().status, 72);
    EXPECT_EQ(InstallExtension((root / "no/parent").string(), name, source.string()).code,
        ExitCode::destinationRefused);
}

TEST_F(InstallTest, AnotherUsersFolderIsNotForUs)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give a folder to another user";
    constexpr uid_t nobody = 65534;
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
    fs::create_directories(root / "kept");
    WriteText(root / "kept/file", "x");
    fs::create_symlink(root / "kept", installed / "link");
    ageFolder();
    EXPECT_EQ(uninstall().errors, "driverinstall: removed Dock.kext\n");
    EXPECT_TRUE(folderIsNew());
    fs::create_symlink(root / "kept", installed);
    EXPECT_EQ(uninstall().status, 0);
    WriteText(installed, "a file");
    EXPECT_EQ(uninstall().status, 0);
    EXPECT_TRUE(entries().empty());
    EXPECT_TRUE(fs::exists(root / "kept/file"));
}

TEST_F(InstallTest, NothingToRemoveIsASuccess)
{
    const Ended ended = uninstall();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "driverinstall: nothing to remove: Dock.kext is not installed\n");
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

TEST_F(InstallTest, ARunWaitsForTheOneBeforeIt)
{
    const int folder = open(extensions.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    EXPECT_EQ(
        UninstallExtension(extensions.string(), name, std::chrono::milliseconds(0)).code, ExitCode::busy);
    Child waiting = start(installArguments());
    usleep(300'000);
    EXPECT_TRUE(waiting.isRunning());
    EXPECT_TRUE(entries().empty());
    close(folder);
    EXPECT_EQ(waiting.wait().status, 0);
}

TEST_F(InstallTest, RunsAtTheSameTimeEachLeaveAWholeExtension)
{
    makeBundle(root / "other" / name, "3");
    std::vector<Child> children;
    for (int turn = 0; turn < 4; ++turn) {
        children.push_back(start(installArguments()));
        children.push_back(
            start({ "install", "drivername", name, "sourcedirectory", (root / "other").string() }));
    }
    for (Child& child : children)
        EXPECT_EQ(child.wait().status, 0);
    EXPECT_TRUE(snapshot(installed) == whole("2") || snapshot(installed) == whole("3"));
    EXPECT_EQ(entries(), Names { name });
}

}
