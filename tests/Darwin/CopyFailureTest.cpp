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

class CopyFailure : public testing::Test {
protected:
    CopyFailure() { WriteText(tree + "/sub/file", "text"); }

    const TemporaryFolder folder;
    const std::string tree = folder / "tree";
};

} // namespace

TEST_F(CopyFailure, LinksInTheDestinationLeadNowhere)
{
    WriteText(folder / "outside/file", "old");
    fs::create_directory(folder / "to");
    fs::create_directory_symlink("../outside", folder / "to/sub");
    EXPECT_NE(Copy(tree + '/', folder / "to", kMerge), 0);
    fs::remove(folder / "to/sub");
    fs::create_directory(folder / "to/sub");
    fs::create_symlink("../../outside/file", folder / "to/sub/file");
    EXPECT_EQ(Copy(tree + '/', folder / "to", kMerge), ELOOP);
    EXPECT_EQ(Copy(tree + "/sub/file", folder / "to/sub/file", COPYFILE_ALL | COPYFILE_NOFOLLOW), ELOOP);
    EXPECT_EQ(ReadText(folder / "outside/file"), "old");
}

TEST_F(CopyFailure, SpecialFilesAreRefusedWithoutWaitingForThem)
{
    ASSERT_EQ(mkfifo((tree + "/fifo").c_str(), 0600), 0);
    EXPECT_EQ(Copy(tree, folder / "copy", kNew), ENOTSUP);
    EXPECT_NE(Copy(tree + "/sub/file", tree + "/fifo", COPYFILE_ALL), 0);
    EXPECT_EQ(Copy("/dev/null", folder / "copy2", kNew), ENOTSUP);
    EXPECT_FALSE(fs::exists(folder / "copy2"));
}

TEST_F(CopyFailure, ExclusiveCopiesTouchNothingThatExists)
{
    WriteText(folder / "file", "old");
    fs::create_directory(folder / "empty");
    fs::create_symlink("elsewhere", folder / "dangling");
    for (const char* name : { "file", "empty", "dangling" }) {
        EXPECT_EQ(Copy(tree, folder / name, kNew), EEXIST) << name;
        EXPECT_EQ(Copy(tree + "/sub/file", folder / name, COPYFILE_CLONE), EEXIST) << name;
        EXPECT_EQ(Copy(folder / "dangling", folder / name, kNew), EEXIST) << name;
    }
    EXPECT_EQ(ReadText(folder / "file"), "old");
    EXPECT_EQ(EntryCount(folder / "empty"), 0U);
    EXPECT_FALSE(fs::exists(folder / "elsewhere"));
}

TEST_F(CopyFailure, NothingIsCopiedOntoOrIntoItself)
{
    const std::string file = tree + "/sub/file";
    fs::create_hard_link(file, folder / "same");
    fs::create_directory_symlink("tree/sub", folder / "link");
    const std::pair<std::string, std::string> rows[]
        = { { file, file }, { file, folder / "same" }, { tree, tree }, { tree + '/', tree },
              { tree, tree + "/sub/new" }, { tree, folder / "link/new" }, { "/", folder / "root" } };
    for (const copyfile_flags_t flags : { kMerge, kMerge | COPYFILE_UNLINK }) {
        for (const auto& [from, to] : rows)
            EXPECT_EQ(Copy(from, to, flags), EINVAL) << from << " to " << to;
        EXPECT_EQ(Copy(tree + '/', folder / "link", COPYFILE_ALL | COPYFILE_RECURSIVE), EINVAL);
    }
    EXPECT_EQ(ReadText(folder / "same"), "text");
    EXPECT_EQ(EntryCount(tree) + EntryCount(tree + "/sub"), 2U);
}

TEST_F(CopyFailure, FullDisksAndOtherMountsOfTheOriginalAreReported)
{
    WriteText(tree + "/sub/other", std::string(100000, 'x'));
    fs::create_directory(folder / "to");
    fs::create_directory(folder / "disk");
    InChild([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            return; // not permitted here
        ASSERT_EQ(mount("none", (folder / "disk").c_str(), "tmpfs", 0, "size=64k"), 0);
        EXPECT_EQ(Copy(tree, folder / "disk/tree", kNew), ENOSPC);
        ASSERT_EQ(mount((folder / "to").c_str(), (tree + "/sub").c_str(), nullptr, MS_BIND, nullptr), 0);
        EXPECT_EQ(Copy(tree + '/', folder / "to", kMerge), EINVAL) << "it would never end";
    });
    EXPECT_EQ(EntryCount(tree + "/sub"), 2U);
}

TEST_F(CopyFailure, BadArgumentsAreRefused)
{
    EXPECT_EQ(copyfile(nullptr, "x", nullptr, COPYFILE_ALL), -1);
    EXPECT_EQ(Copy(tree, folder / "copy", 1U << 31), EINVAL);
    EXPECT_EQ(Copy(tree, folder / "copy", COPYFILE_CLONE_FORCE), ENOTSUP);
    EXPECT_EQ(Copy("", folder / "copy", kNew), ENOENT);
    EXPECT_EQ(Copy(tree, "", kNew), ENOENT);
    EXPECT_EQ(Copy(tree, folder / "missing/copy", kNew), ENOENT);
    EXPECT_EQ(EntryCount(folder.path()), 1U);
}
