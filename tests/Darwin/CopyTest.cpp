#include "Support.h"

#include <array>
#include <cerrno>
#include <copyfile.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/xattr.h>

namespace fs = std::filesystem;

namespace {

constexpr copyfile_flags_t kWhole
    = COPYFILE_ALL | COPYFILE_RECURSIVE | COPYFILE_EXCL | COPYFILE_NOFOLLOW | COPYFILE_CLONE;
constexpr timespec kOld[] = { { 1000000000, 111111111 }, { 1200000000, 222222222 } };

struct stat StatOf(const std::string& path)
{
    struct stat info = {};
    EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
    return info;
}

void ExpectSameStat(const std::string& one, const std::string& other)
{
    const struct stat a = StatOf(one);
    const struct stat b = StatOf(other);
    EXPECT_EQ(a.st_mode, b.st_mode) << one;
    EXPECT_EQ(a.st_uid, b.st_uid) << one;
    EXPECT_EQ(a.st_gid, b.st_gid) << one;
    EXPECT_EQ(a.st_mtim.tv_sec, b.st_mtim.tv_sec) << one;
    EXPECT_EQ(a.st_mtim.tv_nsec, b.st_mtim.tv_nsec) << one;
}

std::string AttributeOf(const std::string& path, const char* name)
{
    std::array<char, 100> value {};
    const ssize_t size = getxattr(path.c_str(), name, value.data(), value.size());
    return size < 0 ? "none" : std::string(value.data(), static_cast<size_t>(size));
}

/// A tree with everything that is easily lost: read-only files and folders with attributes, set-id bits,
/// links.
void MakeTree(const std::string& tree)
{
    WriteText(tree + "/locked/inside/file", "text");
    WriteText(tree + "/read-only", "value");
    WriteText(tree + "/empty", "");
    WriteText(tree + "/big", std::string(3000000, 'b'));
    fs::create_symlink("../outside", tree + "/locked/link");
    fs::create_symlink("nowhere", tree + "/dangling");
    fs::create_symlink("/etc", tree + "/absolute");
    WriteText(tree + "/sparse", "x");
    fs::resize_file(tree + "/sparse", 5000000);
    setxattr((tree + "/read-only").c_str(), "user.note", "kept", 4, 0);
    setxattr((tree + "/locked").c_str(), "user.note", "too", 3, 0);
    fs::permissions(tree + "/read-only", fs::perms(0440));
    fs::permissions(tree + "/big", fs::perms(06755));
    for (const char* name :
        { "/locked/inside/file", "/locked/link", "/locked/inside", "/read-only", "/dangling" })
        utimensat(AT_FDCWD, (tree + name).c_str(), kOld, AT_SYMLINK_NOFOLLOW);
    fs::permissions(tree + "/locked", fs::perms(0555));
    utimensat(AT_FDCWD, (tree + "/locked").c_str(), kOld, 0);
}

void ExpectSameTree(const std::string& tree, const std::string& copy)
{
    for (const auto& entry : fs::recursive_directory_iterator(tree)) {
        const std::string twin = copy + entry.path().string().substr(tree.size());
        ExpectSameStat(entry.path(), twin);
        if (entry.is_symlink()) {
            EXPECT_EQ(fs::read_symlink(entry.path()), fs::read_symlink(twin));
        } else if (entry.is_regular_file()) {
            EXPECT_TRUE(ReadText(entry.path()) == ReadText(twin)) << twin;
        }
    }
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(tree), {}),
        std::distance(fs::recursive_directory_iterator(copy), {}));
    EXPECT_EQ(AttributeOf(copy + "/read-only", "user.note"), AttributeOf(tree + "/read-only", "user.note"));
    EXPECT_EQ(AttributeOf(copy + "/locked", "user.note"), AttributeOf(tree + "/locked", "user.note"));
    EXPECT_LT(StatOf(copy + "/sparse").st_blocks * 512, 100000) << "the hole was filled";
}

void CopyWholeTree(const std::string& folder)
{
    MakeTree(folder + "/tree");
    ASSERT_EQ(copyfile((folder + "/tree").c_str(), (folder + "/copy").c_str(), nullptr, kWhole), 0) << errno;
    ExpectSameTree(folder + "/tree", folder + "/copy");
    for (const char* name : { "/tree/locked", "/copy/locked" })
        fs::permissions(folder + name, fs::perms(0755)); // so that it can be removed
}

/// Folders named "d" in each other. @return the innermost.
int Descend(const std::string& folder, int depth, bool make)
{
    int at = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth && at >= 0; ++i) {
        if (make && mkdirat(at, "d", 0755) != 0)
            return -1;
        const int next = openat(at, "d", O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
        close(at);
        at = next;
    }
    return at;
}

/// Takes such folders away, from the innermost up, since a path to them would be too long.
void RemoveUpwards(int innermost, int depth)
{
    for (int i = 0; i < depth && innermost >= 0; ++i) {
        const int parent = openat(innermost, "..", O_RDONLY | O_DIRECTORY);
        close(innermost);
        unlinkat(parent, "d", AT_REMOVEDIR);
        innermost = parent;
    }
    close(innermost);
}

} // namespace

TEST(Copy, TreeArrivesWithEverythingThatBelongsToIt)
{
    const TemporaryFolder folder;
    CopyWholeTree(folder.path());
    if (geteuid() != 0)
        return;
    const std::string strangers = folder / "stranger";
    fs::create_directory(strangers);
    ASSERT_EQ(chown(strangers.c_str(), kStranger, kStranger), 0);
    AsStranger([&] { CopyWholeTree(strangers); }); // whom read-only files and folders do stop
}

TEST(Copy, OwnerAndSetIdBitsAreKeptTogetherOrNotAtAll)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    const TemporaryFolder folder;
    WriteText(folder / "theirs", "text");
    ASSERT_EQ(chown((folder / "theirs").c_str(), 12, 34), 0);
    fs::permissions(folder / "theirs", fs::perms(06755));
    ASSERT_EQ(copyfile((folder / "theirs").c_str(), (folder / "kept").c_str(), nullptr, kWhole), 0);
    ExpectSameStat(folder / "theirs", folder / "kept");

    fs::permissions(folder.path(), fs::perms(0777));
    AsStranger([&] {
        ASSERT_EQ(copyfile((folder / "theirs").c_str(), (folder / "mine").c_str(), nullptr, kWhole), 0);
        EXPECT_EQ(StatOf(folder / "mine").st_mode & 07777, 0755U);
    });
}

TEST(Copy, TreeDeeperThanAnyPathNeedsFewDescriptors)
{
    constexpr int depth = 4000;
    const TemporaryFolder folder;
    fs::create_directory(folder / "tree");
    const int original = Descend(folder / "tree", depth, true);
    InChild([&] {
        const rlimit limit { 90, 90 };
        setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_EQ(copyfile((folder / "tree").c_str(), (folder / "copy").c_str(), nullptr, kWhole), 0)
            << errno;
    });
    const int copy = Descend(folder / "copy", depth, false);
    EXPECT_GE(copy, 0);
    EXPECT_EQ(faccessat(copy, "d", F_OK, 0), -1);
    RemoveUpwards(original, depth);
    RemoveUpwards(copy, depth);
}

TEST(Copy, BytesCrossFileSystemsAndComeFromFilesWithoutASize)
{
    const TemporaryFolder folder;
    ASSERT_EQ(copyfile("/proc/self/status", (folder / "status").c_str(), nullptr, COPYFILE_DATA), 0);
    EXPECT_EQ(ReadText(folder / "status").substr(0, 5), "Name:");

    const std::string shared = "/dev/shm/darwin-test-" + std::to_string(getpid());
    const std::string text(1000000, 's');
    WriteText(shared, text);
    EXPECT_EQ(copyfile(shared.c_str(), (folder / "copy").c_str(), nullptr, kWhole), 0) << errno;
    EXPECT_TRUE(ReadText(folder / "copy") == text);
    fs::remove(shared);
}

TEST(Copy, ExistingFolderReceivesTheCopyInsideOrIsMergedWith)
{
    const TemporaryFolder folder;
    WriteText(folder / "tree/sub/file", "new");
    WriteText(folder / "to/sub/file", "old and longer");
    WriteText(folder / "to/sub/other", "kept");
    constexpr copyfile_flags_t flags = COPYFILE_ALL | COPYFILE_RECURSIVE | COPYFILE_NOFOLLOW;
    ASSERT_EQ(copyfile((folder / "tree").c_str(), (folder / "to").c_str(), nullptr, flags), 0);
    EXPECT_EQ(ReadText(folder / "to/tree/sub/file"), "new");
    EXPECT_EQ(ReadText(folder / "to/sub/file"), "old and longer");
    ASSERT_EQ(copyfile((folder / "tree/").c_str(), (folder / "to").c_str(), nullptr, flags), 0);
    EXPECT_EQ(ReadText(folder / "to/sub/file"), "new");
    EXPECT_EQ(ReadText(folder / "to/sub/other"), "kept");
}

TEST(Copy, FlagsDecideWhatIsCopiedAndWhatGivesWay)
{
    const TemporaryFolder folder;
    WriteText(folder / "file", "new");
    WriteText(folder / "other", "old and longer");
    fs::create_hard_link(folder / "other", folder / "same");
    fs::permissions(folder / "file", fs::perms(0600));
    const std::string file = folder / "file";
    const std::string other = folder / "other";

    EXPECT_EQ(copyfile(file.c_str(), other.c_str(), nullptr, COPYFILE_STAT), 0);
    EXPECT_EQ(ReadText(other), "old and longer");
    ExpectSameStat(file, other);
    EXPECT_EQ(copyfile(file.c_str(), other.c_str(), nullptr, COPYFILE_DATA | COPYFILE_UNLINK), 0);
    EXPECT_EQ(ReadText(other), "new");
    EXPECT_EQ(ReadText(folder / "same"), "old and longer");

    fs::create_symlink("file", folder / "link");
    EXPECT_EQ(copyfile((folder / "link").c_str(), (folder / "followed").c_str(), nullptr, COPYFILE_ALL), 0);
    EXPECT_TRUE(S_ISREG(StatOf(folder / "followed").st_mode));
    WriteText(folder / "tree/sub/file", "");
    EXPECT_EQ(copyfile((folder / "tree").c_str(), (folder / "alone").c_str(), nullptr, COPYFILE_ALL), 0);
    EXPECT_EQ(EntryCount(folder / "alone"), 0U);

    copyfile_state_t state = copyfile_state_alloc();
    EXPECT_EQ(copyfile(file.c_str(), (folder / "moved").c_str(), state, COPYFILE_ALL | COPYFILE_MOVE), 0);
    EXPECT_FALSE(fs::exists(file));
    off_t copied = 0;
    bool wasCloned = true;
    EXPECT_EQ(copyfile_state_get(state, COPYFILE_STATE_COPIED, &copied), 0);
    EXPECT_EQ(copyfile_state_get(state, COPYFILE_STATE_WAS_CLONED, &wasCloned), 0);
    EXPECT_EQ(copyfile_state_get(state, 0, &copied), -1);
    EXPECT_EQ(copied, 3);
    EXPECT_FALSE(wasCloned);
    copyfile_state_free(state);
}
