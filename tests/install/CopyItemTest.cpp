#include "install/CopyItem.h"

#include "tests/support/TestVolume.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>

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
    ASSERT_EQ(mkfifo((from / "zz-fifo").c_str(), 0600), 0);
    TestVolume::write(from / "folder/other", "");
    fs::create_symlink("folder/file", from / "link");
    ASSERT_EQ(mkfifo((from / "folder/fifo").c_str(), 0600), 0);
    const int error = CopyItem(from, to);
    EXPECT_EQ(entriesBesideCopy(), error == 0 ? 1U : 0U);
    EXPECT_EQ(CopyItem(volume.root() / "missing", to.string() + "2"), ENOENT);
}

TEST_F(CopyItemTest, TheRemainsOfAnInterruptedCopyAreReplaced)
{
    TestVolume::write(to.parent_path() / ".copy.partial/folder/half", "old");
    ASSERT_EQ(CopyItem(from, to), 0);
    EXPECT_FALSE(fs::exists(to / "folder/half"));
    EXPECT_EQ(entriesBesideCopy(), 1U);
}
