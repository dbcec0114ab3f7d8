#include "Support.h"

#include <Host/AtomicFile.h>

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

TEST(AtomicFile, ReplacesTheContentsAndKeepsTheMode)
{
    const TemporaryFolder folder;
    WriteText(folder / "file", "old and longer");
    fs::permissions(folder / "file", fs::perms(0440));
    EXPECT_EQ(Write(folder / "file", "new"), 0);
    EXPECT_EQ(ReadText(folder / "file"), "new");
    EXPECT_EQ(fs::status(folder / "file").permissions(), fs::perms(0440));
    umask(027);
    EXPECT_EQ(WriteFileAtomically(folder / "empty", nullptr, 0), 0);
    umask(022);
    EXPECT_EQ(fs::status(folder / "empty").permissions(), fs::perms(0640));
    EXPECT_EQ(EntryCount(folder.path()), 2U);
}

TEST(AtomicFile, ReplacesALinkInsteadOfWritingThroughIt)
{
    const TemporaryFolder folder;
    WriteText(folder / "target", "old");
    fs::create_symlink("target", folder / "link");
    EXPECT_EQ(Write(folder / "link", "new"), 0);
    EXPECT_EQ(ReadText(folder / "target"), "old");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder / "link")));
}

TEST(AtomicFile, TakesNamesAsLongAsTheFileSystemDoes)
{
    const TemporaryFolder folder;
    EXPECT_EQ(Write(folder / std::string(NAME_MAX, 'n'), "x"), 0);
    EXPECT_EQ(Write(folder / std::string(NAME_MAX + 1, 'n'), "x"), ENAMETOOLONG);
    EXPECT_EQ(EntryCount(folder.path()), 1U);
}

TEST(AtomicFile, FailureAtAnyStepLeavesTheOldFileAndNothingElse)
{
    const TemporaryFolder folder;
    WriteText(folder / "file", "old");
    EXPECT_EQ(Write(folder / "missing/file", "new"), ENOENT);
    EXPECT_EQ(Write(folder / "file/below", "new"), ENOTDIR);
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
    ExpectUntouched(folder);
}

TEST(AtomicFile, FolderThatCannotBeWrittenKeepsItsFile)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    const TemporaryFolder folder;
    WriteText(folder / "file", "old");
    AsStranger([&] { EXPECT_EQ(Write(folder / "file", "new"), EACCES); });
    ExpectUntouched(folder);
}
