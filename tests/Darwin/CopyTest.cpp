#include "Support.h"

#include <array>
#include <cerrno>
#include <copyfile.h>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/xattr.h>

namespace fs = std::filesystem;

namespace {

constexpr copyfile_flags_t kMerge = COPYFILE_ALL | COPYFILE_RECURSIVE | COPYFILE_NOFOLLOW;
constexpr copyfile_flags_t kWhole = kMerge | COPYFILE_EXCL | COPYFILE_CLONE;

void ExpectCopied(const std::string& from, const std::string& to, copyfile_flags_t flags = kWhole)
{
    EXPECT_EQ(copyfile(from.c_str(), to.c_str(), nullptr, flags), 0) << from << ": " << std::strerror(errno);
}

/// What a file has beside its bytes.
std::string Metadata(const std::string& path)
{
    struct stat info = {};
    EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
    std::array<char, 100> note {};
    const bool hasNote = lgetxattr(path.c_str(), "user.note", note.data(), note.size() - 1) >= 0;
    std::ostringstream text;
    text << std::oct << info.st_mode << std::dec << ' ' << info.st_uid << ':' << info.st_gid << ' '
         << info.st_mtim.tv_sec << '.' << info.st_mtim.tv_nsec << ' ' << (hasNote ? note.data() : "none");
    return text.str();
}

/// A tree with everything that is easily lost: read-only files and folders with attributes, set-id bits,
/// links, holes.
void MakeTree(const std::string& tree)
{
    WriteText(tree + "/locked/inside/file", "text");
    WriteText(tree + "/read-only", "value");
    WriteText(tree + "/empty", "");
    WriteText(tree + "/big", std::string(3000000, 'b'));
    WriteText(tree + "/sparse", "x");
    fs::resize_file(tree + "/sparse", 5000000);
    fs::create_symlink("../outside", tree + "/locked/link");
    fs::create_symlink("/etc", tree + "/absolute");
    setxattr((tree + "/read-only").c_str(), "user.note", "kept", 4, 0);
    setxattr((tree + "/locked").c_str(), "user.note", "too", 3, 0);
    fs::permissions(tree + "/read-only", fs::perms(0440));
    fs::permissions(tree + "/big", fs::perms(06755));
    fs::permissions(tree + "/locked", fs::perms(0555));
    constexpr timespec old[] = { { 1000000000, 111111111 }, { 1200000000, 222222222 } };
    for (const char* name : { "/locked/inside/file", "/locked/link", "/locked/inside", "/locked" })
        utimensat(AT_FDCWD, (tree + name).c_str(), old, AT_SYMLINK_NOFOLLOW);
}

long CountEntries(const std::string& tree)
{
    return std::distance(fs::recursive_directory_iterator(tree), fs::recursive_directory_iterator());
}

void ExpectSameTree(const std::string& tree, const std::string& copy)
{
    for (const auto& entry : fs::recursive_directory_iterator(tree)) {
        const std::string twin = copy + entry.path().string().substr(tree.size());
        EXPECT_EQ(Metadata(entry.path()), Metadata(twin)) << twin;
        if (entry.is_symlink()) {
            EXPECT_EQ(fs::read_symlink(entry.path()), fs::read_symlink(twin));
        } else if (entry.is_regular_file()) {
            EXPECT_TRUE(ReadText(entry.path()) == ReadText(twin)) << twin;
        }
    }
    EXPECT_EQ(CountEntries(tree), CountEntries(copy)) << "nothing else is in the copy";
    struct stat sparse = {};
    EXPECT_EQ(stat((copy + "/sparse").c_str(), &sparse), 0);
    EXPECT_LT(sparse.st_blocks * 512, 100000) << "the hole was filled";
}

void CopyWholeTree(const std::string& folder)
{
    MakeTree(folder + "/tree");
    ExpectCopied(folder + "/tree", folder + "/copy");
    ExpectSameTree(folder + "/tree", folder + "/copy");
    for (const char* name : { "/tree/locked", "/copy/locked" })
        fs::permissions(folder + name, fs::perms(0755)); // so that it can be removed
}

/// Enters folders named "d" in each other. @return how many there were.
int Descend(const std::string& folder, int depth, bool make)
{
    const int before = open(".", O_RDONLY | O_DIRECTORY);
    int entered = chdir(folder.c_str());
    while (entered < depth && (!make || mkdir("d", 0755) == 0) && chdir("d") == 0)
        ++entered;
    EXPECT_EQ(fchdir(before), 0);
    close(before);
    return entered;
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
    ExpectCopied(folder / "theirs", folder / "kept");
    EXPECT_EQ(Metadata(folder / "theirs"), Metadata(folder / "kept"));
    fs::permissions(folder.path(), fs::perms(0777));
    AsStranger([&] {
        ExpectCopied(folder / "theirs", folder / "mine");
        EXPECT_EQ(fs::status(folder / "mine").permissions(), fs::perms(0755));
    });
}

TEST(Copy, TreeDeeperThanAnyPathNeedsFewDescriptors)
{
    constexpr int depth = 4000;
    const TemporaryFolder folder;
    fs::create_directory(folder / "tree");
    ASSERT_EQ(Descend(folder / "tree", depth, true), depth);
    InChild([&] {
        const rlimit limit { 90, 90 };
        setrlimit(RLIMIT_NOFILE, &limit);
        ExpectCopied(folder / "tree", folder / "copy");
    });
    EXPECT_EQ(Descend(folder / "copy", depth + 1, false), depth);
}

TEST(Copy, BytesCrossFileSystemsAndComeFromFilesWithoutASize)
{
    const TemporaryFolder folder;
    ExpectCopied("/proc/self/status", folder / "status", COPYFILE_DATA);
    EXPECT_EQ(ReadText(folder / "status").substr(0, 5), "Name:");
    const std::string shared = "/dev/shm/darwin-test-" + std::to_string(getpid());
    const std::string text(1000000, 's');
    WriteText(shared, text);
    ExpectCopied(shared, folder / "copy");
    EXPECT_TRUE(ReadText(folder / "copy") == text);
    fs::remove(shared);
}

TEST(Copy, ExistingFolderReceivesTheCopyInsideOrIsMergedWith)
{
    const TemporaryFolder folder;
    WriteText(folder / "tree/sub/file", "new");
    WriteText(folder / "to/sub/file", "old and longer");
    WriteText(folder / "to/sub/other", "kept");
    ExpectCopied(folder / "tree", folder / "to", kMerge);
    EXPECT_EQ(ReadText(folder / "to/tree/sub/file"), "new");
    EXPECT_EQ(ReadText(folder / "to/sub/file"), "old and longer");
    ExpectCopied(folder / "tree/", folder / "to", kMerge);
    EXPECT_EQ(ReadText(folder / "to/sub/file"), "new");
    EXPECT_EQ(ReadText(folder / "to/sub/other"), "kept");
}

TEST(Copy, FlagsDecideWhatIsCopiedAndWhatGivesWay)
{
    const TemporaryFolder folder;
    const std::string file = folder / "tree/file";
    const std::string other = folder / "other";
    WriteText(file, "new");
    WriteText(other, "old and longer");
    fs::create_hard_link(other, folder / "same");
    fs::create_symlink("tree/file", folder / "link");
    fs::permissions(file, fs::perms(0600));
    ExpectCopied(file, other, COPYFILE_STAT);
    EXPECT_EQ(ReadText(other), "old and longer");
    EXPECT_EQ(Metadata(file), Metadata(other));
    ExpectCopied(file, other, COPYFILE_DATA | COPYFILE_UNLINK);
    EXPECT_EQ(ReadText(other) + ReadText(folder / "same"), "newold and longer");
    ExpectCopied(folder / "link", folder / "followed", COPYFILE_ALL);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder / "followed")));
    ExpectCopied(folder / "tree", folder / "alone", COPYFILE_ALL);
    EXPECT_EQ(EntryCount(folder / "alone"), 0U);

    copyfile_state_t state = copyfile_state_alloc();
    off_t copied = 0;
    EXPECT_EQ(copyfile(file.c_str(), (folder / "moved").c_str(), state, COPYFILE_ALL | COPYFILE_MOVE), 0);
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(copyfile_state_get(state, COPYFILE_STATE_COPIED, &copied), 0);
    EXPECT_EQ(copied, 3);
    copyfile_state_free(state);
}
