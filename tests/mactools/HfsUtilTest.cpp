#include "MacTool.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr size_t kSize = size_t { 64 } * 4096;

void Put(std::string& image, size_t place, size_t size, uint64_t number)
{
    for (; size > 0; number >>= 8U)
        image[place + --size] = static_cast<char>(number);
}

/// An image full of bytes that are not 0.
std::string Blank() { return std::string(kSize, '\x55'); }

/// Writes an HFS+ volume's header and its copy.
void PutHFSPlus(std::string& image, size_t start, size_t size, const char* signature = "H+")
{
    for (const size_t header : { start + 1024, start + size - 1024 }) {
        image.replace(header, 2, signature);
        Put(image, header + 40, 4, 4096);
        Put(image, header + 44, 4, size / 4096);
    }
}

void PutHFS(std::string& image)
{
    for (const size_t header : { size_t { 1024 }, kSize - 1024 }) {
        image.replace(header, 2, "BD");
        Put(image, header + 18, 2, 60);
        Put(image, header + 20, 4, 4096);
        Put(image, header + 28, 2, 8); // sectors before the first block
    }
}

class HfsUtilTest : public testing::Test {
protected:
    /// @return the tool's status; `image` is what it made of it.
    int giveUUID(std::string& image) const
    {
        WriteText(folder / "image", image);
        const int status = RunMacTool(
            "/System/Library/Filesystems/hfs.fs/Contents/Resources/hfs.util", { "-s", folder / "image" })
                               .status;
        image = ReadText(folder / "image");
        return status;
    }

    /// Whether a volume gets the same new UUID in two places and is otherwise left alone.
    void expectChange(const std::string& before, size_t first, size_t second) const
    {
        std::string after = before;
        EXPECT_EQ(giveUUID(after), 253);
        const std::string uuid = after.substr(first, 8);
        EXPECT_NE(uuid, before.substr(first, 8));
        EXPECT_EQ(after.substr(second, 8), uuid);
        std::string expected = before;
        expected.replace(first, 8, uuid).replace(second, 8, uuid);
        EXPECT_TRUE(after == expected) << "something else has changed";
    }

    TemporaryFolder folder;
};

TEST_F(HfsUtilTest, GivesBothHeadersTheSameNewUUID)
{
    for (const char* const signature : { "H+", "HX" }) {
        std::string image = Blank();
        PutHFSPlus(image, 0, kSize, signature);
        expectChange(image, 1024 + 104, kSize - 1024 + 104);
    }
    std::string small = Blank();
    PutHFSPlus(small, 0, kSize - 8192);
    expectChange(small, 1024 + 104, kSize - 8192 - 1024 + 104);
    std::string old = Blank();
    PutHFS(old);
    expectChange(old, 1024 + 116, kSize - 1024 + 116);
    Put(old, 1024 + 124, 2, 0x482b);
    Put(old, 1024 + 126, 2, 3); // first block and number of blocks
    Put(old, 1024 + 128, 2, 40);
    const size_t start = 4096 + 3 * 4096;
    PutHFSPlus(old, start, size_t { 40 } * 4096);
    expectChange(old, start + 1024 + 104, start + size_t { 40 } * 4096 - 1024 + 104);
}

TEST_F(HfsUtilTest, LeavesWhatIsNoWholeVolumeAsItIs)
{
    std::string torn = Blank();
    PutHFSPlus(torn, 0, kSize);
    torn.replace(kSize - 1024, 512, 512, '\0');
    std::string endless = torn;
    Put(endless, 1024 + 40, 8, ~uint64_t { 0 });
    std::string outside = Blank();
    PutHFS(outside);
    Put(outside, 1024 + 124, 2, 0x482b);
    const std::vector<std::pair<std::string, int>> images { { torn, 252 }, { endless, 252 }, { outside, 254 },
        { Blank(), 254 }, { torn.substr(0, 1500), 254 }, { "", 254 } };
    for (const auto& [image, status] : images) {
        std::string after = image;
        EXPECT_EQ(giveUUID(after), status);
        EXPECT_TRUE(after == image);
    }
    for (const std::vector<std::string>& wrong : { std::vector<std::string> { "-s" },
             { "-k", folder / "image" }, { "-s", "disk99999" }, { "-s", "../image" }, {} })
        EXPECT_EQ(
            RunMacTool("/System/Library/Filesystems/hfs.fs/Contents/Resources/hfs.util", wrong).status, 250);
}

}
