#include "install/CopyItem.h"

#include "tests/support/TestVolume.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class CopyItemTest : public ::testing::Test {
protected:
    CopyItemTest()
    {
        TestVolume::write(from / "folder/file", "content");
        fs::create_directories(to.parent_path());
    }
    size_t entriesBesideCopy() const
    {
        return static_cast<size_t>(
            std::distance(fs::directory_iterator(to.parent_path()), fs::directory_iterator()));
    }

    TestVolume volume;
    const fs::path from = volume.root() / "from";
    const fs::path to = volume.root() / "there/copy";
};

}

TEST_F(CopyItemTest, CopiesAWholeFolder)
{
    ASSERT_EQ(CopyItem(from, to), 0);
    EXPECT_EQ(TestVolume::read(to / "folder/file"), "content");
    EXPECT_EQ(entriesBesideCopy(), 1U);
}

TEST_F(CopyItemTest, NothingAtTheDestinationIsReplacedNotEvenADanglingLink)
{
    fs::create_symlink("nowhere", to);
    EXPECT_EQ(CopyItem(from, to), EEXIST);
    EXPECT_TRUE(fs::is_symlink(to));
}

TEST_F(CopyItemTest, AFailureInTheMiddleLeavesNothing)
{
    ASSERT_EQ(mkfifo((from / "folder/fifo").c_str(), 0600), 0);
    EXPECT_EQ(CopyItem(from, to), ENOTSUP) << "a pipe is no content";
    EXPECT_EQ(entriesBesideCopy(), 0U);
    EXPECT_EQ(CopyItem(volume.root() / "missing", to), ENOENT);
}

TEST_F(CopyItemTest, TheRemainsOfAnInterruptedCopyAreReplaced)
{
    TestVolume::write(to.parent_path() / ".copy.partial/folder/half", "old");
    ASSERT_EQ(CopyItem(from, to), 0);
    EXPECT_FALSE(fs::exists(to / "folder/half"));
    EXPECT_EQ(entriesBesideCopy(), 1U);
}

TEST_F(CopyItemTest, RemainsThatTheirOwnerMayNotChangeAreReplacedToo)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become somebody else";
    const fs::path remains = to.parent_path() / ".copy.partial/folder";
    TestVolume::write(remains / "half", "old");
    for (const fs::path& owned : { to.parent_path(), remains.parent_path(), remains, remains / "half" })
        ASSERT_EQ(chown(owned.c_str(), 65534, 65534), 0);
    fs::permissions(remains, fs::perms(0555));
    EXPECT_EQ(AsStranger([this] { return CopyItem(from, to); }), 0);
}
