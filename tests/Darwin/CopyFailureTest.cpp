#include "Support.h"

#include <cerrno>
#include <copyfile.h>
#include <sched.h>
#include <sys/mount.h>

namespace fs = std::filesystem;

namespace {

constexpr copyfile_flags_t kMerge = COPYFILE_ALL | COPYFILE_RECURSIVE | COPYFILE_NOFOLLOW;
constexpr copyfile_flags_t kNew = kMerge | COPYFILE_EXCL;

/// @return 0 or the errno.
int Copy(const std::string& from, const std::string& to, copyfile_flags_t flags)
{
    return copyfile(from.c_str(), to.c_str(), nullptr, flags) == 0 ? 0 : errno;
}

} // namespace

TEST(CopyFailure, LinksInTheDestinationLeadNowhere)
{
    const TemporaryFolder folder;
    WriteText(folder / "tree/sub/file", "new");
    WriteText(folder / "outside/file", "old");
    fs::create_directory(folder / "to");
    fs::create_directory_symlink("../outside", folder / "to/sub");
    EXPECT_NE(Copy(folder / "tree/", folder / "to", kMerge), 0);
    fs::remove(folder / "to/sub");
    fs::create_directory(folder / "to/sub");
    fs::create_symlink("../../outside/file", folder / "to/sub/file");
    EXPECT_EQ(Copy(folder / "tree/", folder / "to", kMerge), ELOOP);
    EXPECT_EQ(
        Copy(folder / "tree/sub/file", folder / "to/sub/file", COPYFILE_ALL | COPYFILE_NOFOLLOW), ELOOP);
    EXPECT_EQ(ReadText(folder / "outside/file"), "old");
}

TEST(CopyFailure, SpecialFilesAreRefusedWithoutWaitingForThem)
{
    const TemporaryFolder folder;
    WriteText(folder / "file", "text");
    fs::create_directory(folder / "tree");
    ASSERT_EQ(mkfifo((folder / "tree/fifo").c_str(), 0600), 0);
    EXPECT_EQ(Copy(folder / "tree", folder / "copy", kNew), ENOTSUP);
    EXPECT_EQ(Copy(folder / "tree/fifo", folder / "copy2", kNew), ENOTSUP);
    EXPECT_NE(Copy(folder / "file", folder / "tree/fifo", COPYFILE_ALL), 0);
    EXPECT_EQ(Copy("/dev/null", folder / "copy3", kNew), ENOTSUP);
    EXPECT_FALSE(fs::exists(folder / "copy3"));
}

TEST(CopyFailure, ExclusiveCopiesTouchNothingThatExists)
{
    const TemporaryFolder folder;
    WriteText(folder / "tree/file", "new");
    WriteText(folder / "file", "old");
    fs::create_directory(folder / "empty");
    fs::create_symlink("elsewhere", folder / "dangling");
    for (const char* name : { "file", "empty", "dangling" }) {
        EXPECT_EQ(Copy(folder / "tree", folder / name, kNew), EEXIST) << name;
        EXPECT_EQ(Copy(folder / "tree/file", folder / name, COPYFILE_CLONE), EEXIST) << name;
        EXPECT_EQ(Copy(folder / "dangling", folder / name, kNew), EEXIST) << name;
    }
    EXPECT_EQ(ReadText(folder / "file"), "old");
    EXPECT_EQ(EntryCount(folder / "empty"), 0U);
    EXPECT_FALSE(fs::exists(folder / "elsewhere"));
}

TEST(CopyFailure, NothingIsCopiedOntoOrIntoItself)
{
    const TemporaryFolder folder;
    WriteText(folder / "tree/sub/file", "text");
    fs::create_hard_link(folder / "tree/sub/file", folder / "same");
    fs::create_directory_symlink("tree/sub", folder / "link");
    for (const copyfile_flags_t flags : { kMerge, kMerge | COPYFILE_UNLINK }) {
        EXPECT_EQ(Copy(folder / "tree/sub/file", folder / "tree/sub/file", flags), EINVAL);
        EXPECT_EQ(Copy(folder / "tree/sub/file", folder / "same", flags), EINVAL);
        EXPECT_EQ(Copy(folder / "tree", folder / "tree", flags), EINVAL);
        EXPECT_EQ(Copy(folder / "tree/", folder / "tree", flags), EINVAL);
        EXPECT_EQ(Copy(folder / "tree", folder / "tree/sub/new", flags), EINVAL);
        EXPECT_EQ(Copy(folder / "tree", folder / "link/new", flags), EINVAL);
        EXPECT_EQ(Copy(folder / "tree/", folder / "link", COPYFILE_ALL | COPYFILE_RECURSIVE), EINVAL);
        EXPECT_EQ(Copy("/", folder / "root", flags), EINVAL);
    }
    EXPECT_EQ(ReadText(folder / "same"), "text");
    EXPECT_EQ(EntryCount(folder / "tree"), 1U);
    EXPECT_EQ(EntryCount(folder / "tree/sub"), 1U);
}

TEST(CopyFailure, OtherMountOfTheOriginalDoesNotMakeItEndless)
{
    const TemporaryFolder folder;
    WriteText(folder / "tree/file", "text");
    fs::create_directories(folder / "tree/mounted");
    fs::create_directory(folder / "to");
    InChild([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            return; // not permitted here
        ASSERT_EQ(
            mount((folder / "to").c_str(), (folder / "tree/mounted").c_str(), nullptr, MS_BIND, nullptr), 0);
        EXPECT_EQ(Copy(folder / "tree/", folder / "to", kMerge), EINVAL);
    });
}

TEST(CopyFailure, FullDiskIsReported)
{
    const TemporaryFolder folder;
    WriteText(folder / "tree/file", std::string(1000000, 'x'));
    fs::create_directory(folder / "disk");
    InChild([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            return; // not permitted here
        ASSERT_EQ(mount("none", (folder / "disk").c_str(), "tmpfs", 0, "size=64k"), 0);
        EXPECT_EQ(Copy(folder / "tree", folder / "disk/tree", kNew), ENOSPC);
        EXPECT_EQ(ReadText(folder / "tree/file").size(), 1000000U);
    });
}

TEST(CopyFailure, BadArgumentsAreRefused)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "tree");
    EXPECT_EQ(copyfile(nullptr, "x", nullptr, COPYFILE_ALL), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(copyfile("x", nullptr, nullptr, COPYFILE_ALL), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(Copy(folder / "tree", folder / "copy", 1U << 31), EINVAL);
    EXPECT_EQ(Copy(folder / "tree", folder / "copy", COPYFILE_CLONE_FORCE), ENOTSUP);
    EXPECT_EQ(Copy("", folder / "copy", kNew), ENOENT);
    EXPECT_EQ(Copy(folder / "tree", "", kNew), ENOENT);
    EXPECT_EQ(Copy(folder / "tree", folder / "missing/copy", kNew), ENOENT);
    EXPECT_EQ(EntryCount(folder.path()), 1U);
}
