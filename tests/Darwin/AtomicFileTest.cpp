#include "Support.h"

#include <Host/AtomicFile.h>
#include <Host/Folders.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <sys/resource.h>

namespace fs = std::filesystem;

namespace {

int Write(const std::string& path, const std::string& text)
{
    return WriteFileAtomically(path, text.data(), text.size());
}

/// The file and its folder are as a failed call must leave them.
void ExpectUntouched(const TemporaryFolder& folder)
{
    EXPECT_EQ(ReadText(folder / "file"), "old");
    EXPECT_EQ(EntryCount(folder.path()), 1U) << "a temporary file was left";
}

} // namespace

TEST(AtomicFile, ReplacesContentsOrALinkAndKeepsTheMode)
{
    const TemporaryFolder folder;
    const std::string longName = folder / std::string(NAME_MAX, 'n');
    WriteText(longName, "old and longer");
    fs::create_symlink(longName, folder / "link");
    fs::permissions(longName, fs::perms(0440));
    EXPECT_EQ(Write(folder / "link", "other"), 0);
    EXPECT_EQ(ReadText(longName), "old and longer");
    EXPECT_EQ(Write(longName, "new"), 0);
    EXPECT_EQ(ReadText(longName), "new");
    EXPECT_EQ(fs::status(longName).permissions(), fs::perms(0440));
    const mode_t mask = umask(027);
    EXPECT_EQ(WriteFileAtomically(folder / "empty", nullptr, 0), 0);
    umask(mask);
    EXPECT_EQ(fs::status(folder / "empty").permissions(), fs::perms(0640));
    EXPECT_EQ(EntryCount(folder.path()), 3U);
}

TEST(AtomicFile, FailureAtAnyStepLeavesTheOldFileAndNothingElse)
{
    const TemporaryFolder folder;
    WriteText(folder / "file", "old");
    EXPECT_EQ(Write(folder / "missing/file", "new"), ENOENT);
    EXPECT_EQ(Write(folder / std::string(NAME_MAX + 1, 'n'), "x"), ENAMETOOLONG);
    EXPECT_EQ(Write("", "new"), ENOENT);
    EXPECT_EQ(Write(folder.path() + "/", "new"), EISDIR);
    EXPECT_EQ(WriteFileAtomically(folder / "file", nullptr, 1), EINVAL);
    ExpectUntouched(folder);
    InChild([&] {
        (void)std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit { 1000, 1000 };
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_EQ(Write(folder / "file", std::string(1001, 'x')), EFBIG);
        ExpectUntouched(folder);
    });
    fs::create_directory(folder / "folder");
    EXPECT_EQ(Write(folder / "folder", "new"), EISDIR) << "the renaming fails";
    fs::remove(folder / "folder");
    if (geteuid() == 0)
        AsStranger([&] { EXPECT_EQ(Write(folder / "file", "new"), EACCES); });
    ExpectUntouched(folder);
}

TEST(Folders, AreMadeWithTheirModesButNeverTheVolumeItself)
{
    const TemporaryFolder folder;
    setenv("ZEK_STARTUP_VOLUME", (folder / "volume").c_str(), 1);
    EXPECT_EQ(MakeFolders(folder / "volume/a/b", 0700, 0755), ENOENT);
    EXPECT_EQ(EntryCount(folder.path()), 0U);
    EXPECT_EQ(MakeFolders(folder / "a/b/c", 0700, 0755), 0);
    EXPECT_EQ(fs::status(folder / "a/b").permissions(), fs::perms(0755));
    EXPECT_EQ(fs::status(folder / "a/b/c").permissions(), fs::perms(0700));
    EXPECT_EQ(MakeFolders(folder / "a/b", 0700, 0755), EEXIST);
    WriteText(folder / "file", "");
    EXPECT_EQ(MakeFolders(folder / "file/below/that", 0700, 0755), ENOTDIR);
    fs::create_symlink("nowhere", folder / "link");
    EXPECT_EQ(MakeFolders(folder / "link/below", 0700, 0755), ENOENT);
}
